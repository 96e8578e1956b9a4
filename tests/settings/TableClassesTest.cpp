// Rows, tables and headers of tables: what holds for all of them, and the road of one table.

#include <gtest/gtest.h>

#include <type_traits>

#include "kpx/settings/Catalogue.h"
#include "kpx/settings/CFGAdjustEvalGroupRow.h"
#include "kpx/settings/CFGConfigAdjustGroupTable.h"
#include "kpx/settings/CFGConfigDXFConvertLineHeader.h"
#include "kpx/settings/CFGConfigDXFConvertTextHeader.h"
#include "kpx/settings/CFGConfigDXFConvertTextTable.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/text/NumberText.h"
#include "tests/common/ObjectXml.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

std::vector<const SettingsClass*> classesOf(ClassShape shape) {
  std::vector<const SettingsClass*> classes;
  for (const SettingsClass* const each : settingsClasses()) {
    if (each->shape == shape) classes.push_back(each);
  }
  return classes;
}

static_assert(std::is_nothrow_move_constructible_v<CFGConfigDXFConvertTextTable>);
static_assert(std::is_nothrow_move_constructible_v<CFGConfigDXFConvertTextHeader>);

TEST(RowClasses, SettersCreateCellsAndGettersDoNot) {
  addBuiltInTexts();
  ASSERT_EQ(classesOf(ClassShape::row).size(), 5u);
  for (const SettingsClass* const each : classesOf(ClassShape::row)) {
    EXPECT_EQ(each->create(), nullptr);
    const std::unique_ptr<CDBObject> object = each->make();
    auto& row = static_cast<CFGRow&>(*object);
    for (const SettingAccess& access : each->settings) access.text(row);
    EXPECT_TRUE(row.Cells.empty());
    int number = 0;
    for (const SettingAccess& access : each->settings) {
      const CString text = CString::fromUtf8(std::to_string(++number));
      ASSERT_TRUE(access.setText(row, text).valid());
      const CFGCol* const cell = row.find(access.key());
      ASSERT_NE(cell, nullptr);
      EXPECT_EQ(cell->Type, access.setting->type);
      EXPECT_EQ(cell->Caption, access.setting->caption.get());
      EXPECT_EQ(cell->Category, u"64");
      EXPECT_NE(access.setting->setterError, 0);
      row.ColAt(access.key()).Caption = u"own";
      access.setText(row, text + u"0");
      EXPECT_EQ(row.find(access.key())->Caption, u"own");
      EXPECT_EQ(detail::textAsDouble(access.text(row)), number * 10.0);
    }
    EXPECT_EQ(row.GetElementName(), u"CFGRow");
  }
}

TEST(TableClasses, DefineTheColumnsOfTheirHeader) {
  ASSERT_EQ(classesOf(ClassShape::table).size(), 5u);
  for (const SettingsClass* const each : classesOf(ClassShape::table)) {
    const std::unique_ptr<CDBObject> object = each->make();
    const auto& table = static_cast<CFGTable&>(*object);
    EXPECT_EQ(table.Class.Name, each->name);
    EXPECT_FALSE(table.Class.Cols.empty());
    CString headerName(each->name);
    headerName.Replace(u"Table", u"Header");
    const SettingsClass* const header = findSettingsClass(headerName);
    if (!header) continue;  // the groups of an adjustment have none
    const std::unique_ptr<CFGConfig> columns = header->create();
    ASSERT_EQ(columns->Class.Cols.size(), table.Class.Cols.size() + 2);
    for (const auto& column : table.Class.Cols) {
      const CFGCol* const other = columns->Class.find(column.key);
      ASSERT_NE(other, nullptr);
      EXPECT_EQ(other->Caption, column.value.Caption);
      EXPECT_EQ(other->Type, column.value.Type);
    }
    columns->ResetPos();
    EXPECT_EQ(columns->Class.KeyOrder, (std::vector<CString>{u"Class", u"Description"}));
  }
}

TEST(TableClasses, HeaderTravelsWithItsColumns) {
  CFGConfigDXFConvertLineHeader header;
  EXPECT_EQ(header.GetElementName(), u"CFGConfigDXFLineTable");
  header.setDescription(u"B\u00F6schung");
  header.Class.ColAt(u"DXFLINETABLE_COLOR").Unit = 3;
  CFGConfigDXFConvertLineHeader loaded;
  ASSERT_EQ(loadFromXml(loaded, xmlOf(header)), 1);
  EXPECT_EQ(loaded.getDescription(), u"B\u00F6schung");
  EXPECT_EQ(loaded.Class.find(u"DXFLINETABLE_COLOR")->Unit, 3);
  EXPECT_EQ(loaded.Class.find(u"DXFLINETABLE_SAVE"), nullptr) << "a cell without a column";
}

TEST(AdjustmentGroups, CaptionsAreLookedUpWhenACellIsMade) {
  AddMLT(2968, u"Messung");
  CFGAdjustEvalGroupRow row;
  row.setMeasure(4);
  AddMLT(2968, u"Measurement");
  row.setMeasure(5);
  EXPECT_EQ(row.find(u"Measure")->Caption, u"Messung");
  EXPECT_EQ(row.getMeasure(), 5);
  EXPECT_EQ(CFGConfigAdjustGroupTable().Class.find(u"Measure")->Caption, u"Measurement");
}

}  // namespace
}  // namespace kpx
