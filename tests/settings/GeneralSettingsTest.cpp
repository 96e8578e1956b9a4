#include <gtest/gtest.h>

#include "kpx/settings/CFGGeneralSettings.h"
#include "kpx/support/texts/TextStore.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

CFGGeneralSettings withoutColumns() {
  CFGGeneralSettings settings;
  settings.Class.RemoveCols();
  settings.Class.SetKeyCount(0);
  return settings;
}

TEST(GeneralSettings, ToleranceIsStoredWithThreeDecimalsWhateverTheLocale) {
  CFGGeneralSettings settings;
  settings.setCA2TTolXY(1.0 / 3.0);
  EXPECT_EQ(settings.Class.find(u"CA2T_Tol_XY")->Value.Value, u"0.333");
  EXPECT_EQ(settings.getCA2TTolXY(), 0.333);
  settings.setCA2TTolXY(-1234567.0005);
  EXPECT_EQ(settings.Class.find(u"CA2T_Tol_XY")->Value.Value, u"-1234567.001");
}

TEST(GeneralSettings, ColumnThatASetterCreates) {
  addBuiltInTexts();
  CFGGeneralSettings settings = withoutColumns();
  settings.setTachyTolXY(0.05);
  const CFGCol* column = settings.Class.find(u"TACHY_Tol_XY");
  ASSERT_NE(column, nullptr);
  EXPECT_EQ(column->Value.Value, u"0.050");
  EXPECT_EQ(column->Category, u"169");
  EXPECT_EQ(column->Type, ColumnType::real);
  EXPECT_EQ(column->Caption, u"Toleranz eranz XY");

  settings.setPolyTolXY(0.05);
  EXPECT_EQ(settings.Class.find(u"POLY_Tol_XY")->Caption, u"Toleranz_XY");

  settings.setCA2THG(5);
  column = settings.Class.find(u"CA2T_HG");
  ASSERT_NE(column, nullptr);
  EXPECT_EQ(column->Value.Value, u"5");
  EXPECT_EQ(column->Category, u"Kreis an 2 Tangenten");
  EXPECT_EQ(column->Type, ColumnType::integer);
  EXPECT_EQ(column->Caption, u"233");
  EXPECT_EQ(settings.Class.Cols.size(), 3u);
}

TEST(GeneralSettings, NewObjectHasItsDefaultsAndOrder) {
  CFGGeneralSettings settings;
  EXPECT_EQ(settings.Class.Cols.size(), 220u);
  EXPECT_EQ(settings.getKTHG(), 8);
  EXPECT_EQ(settings.getTachyRgL(), 4);
  EXPECT_EQ(settings.getNivTolZ(), 0.02);
  EXPECT_EQ(settings.Class.KeyOrder.front(), u"TACHY_RgL");
  EXPECT_EQ(settings.Class.KeyOrder.back(), u"KT_Amtl_FG");
  const std::vector<CString> order = settings.Class.KeyOrder;
  settings.Class.SetKeyCount(3);
  settings.ResetPos();
  EXPECT_EQ(settings.Class.KeyOrder, order);
}

TEST(GeneralSettings, OddStoredTextsReadAsTheConversionsDo) {
  CFGGeneralSettings settings;
  const struct {
    const char16_t* stored;
    double real;
    std::int32_t integer;
  } cases[] = {
      {u"", 0.0, 0},         {u"1,5", 1.5, 1},    {u"---", 8888.88888, 0},
      {u"12abc", 12.0, 12},  {u"abc", 0.0, 0},    {u"99999999999", 99999999999.0, 2147483647},
      {u"2.e-002", 0.02, 2}, {u"  -7", -7.0, -7},
  };
  for (const auto& each : cases) {
    settings.Class.ColAt(u"KT_Tol_XY").Value.Value = each.stored;
    settings.Class.ColAt(u"KT_HG").Value.Value = each.stored;
    EXPECT_EQ(settings.getKTTolXY(), each.real) << CString(each.stored).utf8();
    EXPECT_EQ(settings.getKTHG(), each.integer) << CString(each.stored).utf8();
  }
}

}  // namespace
}  // namespace kpx
