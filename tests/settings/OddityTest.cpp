// What single classes do on purpose, because stored files or their readers rely on it.

#include <gtest/gtest.h>

#include <algorithm>

#include "kpx/settings/CFGConfigAreaCalc.h"
#include "kpx/settings/CFGConfigCA2T.h"
#include "kpx/settings/CFGConfigCalculation.h"
#include "kpx/settings/CFGConfigCATP.h"
#include "kpx/settings/CFGConfigDXFConvertTable.h"
#include "kpx/settings/CFGConfigDXFExport.h"
#include "kpx/settings/CFGConfigDXFExportGraphic.h"
#include "kpx/settings/CFGGeneralSettings.h"
#include "kpx/settings/CFGGNSSEvalMask.h"
#include "kpx/settings/CFGNASExport.h"
#include "kpx/settings/CFGProjectSettings.h"
#include "kpx/settings/CFGProjectSettingsIntern.h"
#include "kpx/settings/CFGTachyEvalMask.h"
#include "tests/common/ObjectXml.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

template <class Settings>
Settings withoutColumns() {
  Settings settings;
  settings.Class.RemoveCols();
  settings.Class.SetKeyCount(0);
  return settings;
}

const CFGCol& column(const CFGConfig& settings, const CString& key) {
  static const CFGCol none;
  const CFGCol* const found = settings.Class.find(key);
  EXPECT_NE(found, nullptr) << key.utf8();
  return found ? *found : none;
}

bool has(const CFGConfig& settings, const CString& key) { return settings.Class.find(key); }

template <class Settings>
Settings savedAndLoaded(const Settings& settings) {
  Settings loaded;
  EXPECT_EQ(loadFromXml(loaded, xmlOf(settings)), 1);
  return loaded;
}

TEST(GeneralSettings, CaptionsOfSettersAreAsStoredFilesHaveThem) {
  auto settings = withoutColumns<CFGGeneralSettings>();
  settings.setTachyTolXY(0.05);
  EXPECT_EQ(column(settings, u"TACHY_Tol_XY").Caption, u"Toleranz eranz XY");
  settings.setPolyTolXY(0.05);
  EXPECT_EQ(column(settings, u"POLY_Tol_XY").Caption, u"Toleranz_XY");
}

TEST(ProjectSettings, TwoSettersAreCrossed) {
  CFGProjectSettings settings;
  settings.setDefaultLG(7);
  EXPECT_EQ(column(settings, u"DefaultLZ").Value.Value, u"7");
  EXPECT_EQ(settings.getDefaultLZ(), 7);
  EXPECT_EQ(settings.getDefaultLG(), 0);
}

TEST(ProjectSettings, TypeOfTheTotalStationIsReadFromTheNameOfItsSchema) {
  CFGProjectSettings settings;
  settings.setTachyType(3);
  EXPECT_EQ(column(settings, u"Tachymeter").Value.Value, u"3");
  EXPECT_EQ(settings.getTachyType(), 0);
  settings.setTachyEvalMaskName(u"12 Standard");
  EXPECT_EQ(settings.getTachyType(), 12);
  EXPECT_EQ(settings.getTachyEvalMaskName(), u"12 Standard");
}

TEST(ProjectSettings, KeyWithASharpSIsExact) {
  CFGProjectSettings settings;
  settings.setPointUpperLowercase(2);
  EXPECT_EQ(column(settings, u"Gro\u00DFKleinschreibung").Value.Value, u"2");
  EXPECT_FALSE(has(settings, u"GrossKleinschreibung"));
  EXPECT_EQ(column(savedAndLoaded(settings), u"Gro\u00DFKleinschreibung").Value.Value, u"2");
}

TEST(ProjectSettings, SettingsThatOnlyTheirSetterCreatesAreLostByASave) {
  CFGProjectSettings settings;
  EXPECT_FALSE(has(settings, u"LastNV"));
  settings.setLastNV(u"12");
  EXPECT_EQ(settings.Class.KeyOrder.back(), u"LastNV");
  EXPECT_EQ(savedAndLoaded(settings).getLastNV(), u"");

  CFGProjectSettingsIntern intern;
  EXPECT_FALSE(has(intern, u"AdjustmentStackCleaned"));
  EXPECT_TRUE(has(intern, u"MinimumOneStation"));
  intern.setMultiEditCheckVMA(1);
  EXPECT_EQ(savedAndLoaded(intern).getMultiEditCheckVMA(), 1);
}

TEST(ProjectSettings, MissingSettingsOfOlderProjects) {
  const auto settings = withoutColumns<CFGProjectSettings>();
  EXPECT_EQ(settings.getFindAaaEditorPktOld(), 1);
  EXPECT_EQ(settings.getFindGisFeatureOld(), 0);
  EXPECT_EQ(settings.getAreaTypeSplitting(), -1);
}

TEST(NASExport, HasColumnsWithoutAccessors) {
  CFGNASExport settings;
  EXPECT_EQ(column(settings, u"VermStelle").Caption, u"Vermessungstelle");
  EXPECT_EQ(column(settings, u"Anlass").Value.Value, u"10901");
  EXPECT_EQ(column(settings, u"Anlass").Type, ColumnType::integer);
  settings.Class.ColAt(u"Anlass").Value.Value = u"20";
  EXPECT_EQ(column(savedAndLoaded(settings), u"Anlass").Value.Value, u"20");
}

TEST(TachyEvalMask, MissingSettingDiffersFromANewOne) {
  EXPECT_EQ(CFGTachyEvalMask().getMinCountPPOri(), 2);
  EXPECT_EQ(withoutColumns<CFGTachyEvalMask>().getMinCountPPOri(), 1);
}

TEST(GNSSEvalMask, ResetPosListsAKeyThatANewObjectLacks) {
  CFGGNSSEvalMask mask;
  mask.ResetPos();
  EXPECT_EQ(std::ranges::count(mask.Class.KeyOrder, CString(u"GNSS_CPdZ")), 1);
  EXPECT_FALSE(has(mask, u"GNSS_CPdZ"));
  mask.setControlPointdZ(1.5);
  EXPECT_EQ(column(mask, u"GNSS_CPdZ").Caption, u"Kontrolpunkt: dZ [mm]");
}

TEST(Calculation, TwoModulesShareOneActiveName) {
  CFGConfigCalculation settings;
  EXPECT_EQ(column(settings, u"CFGConfigCA2T").Caption, u"1582");
  EXPECT_FALSE(has(settings, u"CFGConfigCATP"));
  settings.setCFGNameCATP(u"mine");
  EXPECT_EQ(settings.getCFGNameCA2T(), u"mine");

  auto first = withoutColumns<CFGConfigCalculation>();
  first.setCFGNameCA2T(u"a");
  first.setCFGNameCATP(u"b");
  EXPECT_EQ(column(first, u"CFGConfigCA2T").Category, u"1581");
}

TEST(AreaCalc, TwoColumnsLeaveTheOrderNotTheObject) {
  CFGConfigAreaCalc settings;
  settings.ResetPos();
  EXPECT_EQ(settings.Class.KeyOrder.size(), 5u);
  EXPECT_TRUE(has(settings, u"AC_HPMaxDiffArc"));
}

TEST(Dxf, TwoExportsShareKeysEachInItsOwnObject) {
  CFGConfigDXFExport project;
  CFGConfigDXFExportGraphic drawing;
  project.setScale(500.0);
  EXPECT_EQ(drawing.getScale(), CFGConfigDXFExportGraphic().getScale());
  EXPECT_EQ(withoutColumns<CFGConfigDXFExportGraphic>().getExportVersion(), -1);
  EXPECT_EQ(CFGConfigDXFConvertTable().GetElementName(), u"CFGConfigDXFTable");
}

}  // namespace
}  // namespace kpx
