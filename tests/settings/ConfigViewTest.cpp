#include "kpx/settings/document/ConfigView.h"

#include <gtest/gtest.h>

#include "kpx/settings/CFGGeneralSettings.h"
#include "kpx/settings/document/ConfigDifference.h"
#include "kpx/settings/document/ConfigDocument.h"
#include "tests/common/ObjectXml.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

/// A column as it stands in a file.
CString columnText(const CString& key, const CString& value) {
  return u"<CFGCol Name=\"" + key + u"\"><CFGValue Value=\"" + value + u"\"/></CFGCol>";
}

CString minimalText(const CString& columns) {
  return u"<CFGConfigCFGGeneralSettings><CFGClass>" + columns +
         u"</CFGClass></CFGConfigCFGGeneralSettings>";
}

ConfigDocument documentOf(const CString& text) {
  ConfigDocument document;
  EXPECT_TRUE(document.read(text.utf8()).ok());
  return document;
}

TEST(ConfigView, FindsConfigurationsAtAnyDepth) {
  const CString one = minimalText(columnText(u"FB_HG", u"9"));
  const CString header = u"<CFGConfigCFGClassHeader Name='h'/>";
  const CString unknown = u"<CFGConfigUnheardOf><CFGClass/></CFGConfigUnheardOf>";
  const CString noConfiguration = u"<CFGConfigs><x/></CFGConfigs>";
  const ConfigDocument document = documentOf(u"<a>" + one + u"<b><c/>" + noConfiguration + header +
                                             u"</b><b><c>" + unknown + u"</c></b>" + one + u"</a>");
  const ConfigView& view = document.view();
  ASSERT_EQ(document.count(), 4);
  EXPECT_EQ(document.classOf(0)->name, u"CFGGeneralSettings");
  EXPECT_EQ(document.nameOf(1), u"h");
  EXPECT_EQ(view.at(2).elementName, u"CFGConfigUnheardOf");
  EXPECT_EQ(document.classOf(2), nullptr);
  EXPECT_EQ(document.object(2), nullptr);
  const auto object = document.object(3);
  ASSERT_NE(object, nullptr);
  const auto& settings = static_cast<const CFGGeneralSettings&>(*object);
  EXPECT_EQ(settings.getFBHG(), 9);
  EXPECT_EQ(settings.getFBLZ(), 2);
  ASSERT_EQ(view.at(3).columns.size(), 1u);
  const int offset = view.attributeOffset(view.at(3).columns[0].value, u"Value");
  EXPECT_EQ(view.text().substr(static_cast<std::size_t>(offset), 2), u"9\"");

  const ConfigDocument root = documentOf(u"<?xml version='1.0'?>" + one);
  ASSERT_EQ(root.count(), 1);
  EXPECT_EQ(static_cast<CFGGeneralSettings&>(*root.object(0)).getFBHG(), 9);
}

TEST(ConfigView, ShowsEveryAttributeInItsPlace) {
  const ConfigDocument document = documentOf(
      u"<r><CFGConfigX a='1'>\n<CFGClass b='2'><CFGCol c='&lt;'><CFGValue d='' e='5'/></CFGCol> "
      u"<CFGCol/></CFGClass><CFGClass><CFGCol/></CFGClass></CFGConfigX></r>");
  const ConfigView& view = document.view();
  ASSERT_EQ(document.count(), 1);
  const ViewedConfiguration& parts = view.at(0);
  EXPECT_TRUE(view.markupOf(parts.element).starts_with(u"<CFGConfigX a='1'>"));
  EXPECT_TRUE(view.markupOf(parts.element).ends_with(u"</CFGConfigX>"));
  // Reading takes those of a second class, too.
  ASSERT_EQ(parts.columns.size(), 3u);
  EXPECT_EQ(parts.ownColumns, 2u);
  EXPECT_FALSE(parts.columns[1].value.exists());
  EXPECT_EQ(view.attributeOf(parts.columns[0].column, u"c"), u"<");
  EXPECT_EQ(view.attributeOf(parts.columns[0].value, u"e"), u"5");
}

TEST(ConfigView, TellsWhatDoesNotBelongThere) {
  const struct {
    const char16_t* inside;
    const char16_t* what;
  } cases[] = {
      {u"<CFGClass/><!-- x -->", u"a comment"},
      {u"<CFGClass/><CFGClass/>", u"the element 'CFGClass'"},
      {u"<CFGClass><CFGCol/>x</CFGClass>", u"text"},
      {u"<CFGClass><CFGCol><CFGValue/><CFGValue/></CFGCol></CFGClass>", u"the element 'CFGValue'"},
      {u"<CFGClass><CFGCol><CFGValue><x/></CFGValue></CFGCol></CFGClass>", u"the element 'x'"},
      {u"<CFGClass/><?x y?>", u"a processing instruction"},
      {u"<CFGClass/><![CDATA[ ]]>", u"text"},
  };
  for (const auto& each : cases) {
    const ConfigDocument document =
        documentOf(u"<CFGConfigX>" + CString(each.inside) + u"</CFGConfigX>");
    ASSERT_EQ(document.count(), 1);
    const auto& foreign = document.view().at(0).foreign;
    ASSERT_EQ(foreign.size(), 1u) << CString(each.inside).utf8();
    EXPECT_EQ(document.view().describe(foreign[0]), each.what);
  }
}

TEST(ConfigDifference, ComparesValuesAndNotTheirSpelling) {
  const ConfigDocument a = documentOf(minimalText(
      columnText(u"FB_Tol_Z", u"0.020") + columnText(u"FB_HG", u"8") + columnText(u"only A", u"1") +
      columnText(u"twice", u"1") + columnText(u"twice", u"2")));
  const ConfigDocument b =
      documentOf(minimalText(columnText(u"twice", u"2") + columnText(u"only B", u"x") +
                             columnText(u"FB_HG", u"9") + columnText(u"FB_Tol_Z", u"2.e-002")));
  const auto compare = [](const ConfigDocument& one, const ConfigDocument& other) {
    return compareConfigurations(one.view(), one.view().at(0), other.view(), other.view().at(0));
  };
  const ConfigDifference difference = compare(a, b);
  ASSERT_EQ(difference.onlyInA.size(), 1u);
  EXPECT_EQ(difference.onlyInA[0].key, u"only A");
  ASSERT_EQ(difference.onlyInB.size(), 1u);
  EXPECT_EQ(difference.onlyInB[0].value, u"x");
  ASSERT_EQ(difference.changed.size(), 1u);
  EXPECT_EQ(difference.changed[0].key, u"FB_HG");
  EXPECT_EQ(difference.changed[0].valueA, u"8");
  EXPECT_EQ(difference.changed[0].valueB, u"9");
  EXPECT_TRUE(compare(a, a).none());

  CFGGeneralSettings changed;
  changed.setKTLZ(77);
  EXPECT_EQ(compareConfigurations(CFGGeneralSettings(), changed).changed.size(), 1u);
  const ConfigDocument defaults = documentOf(xmlOf(CFGGeneralSettings()));
  EXPECT_TRUE(changedFromDefaults(defaults.view(), defaults.view().at(0)).none());
  const ConfigDocument others = documentOf(xmlOf(changed));
  EXPECT_EQ(changedFromDefaults(others.view(), others.view().at(0)).changed.size(), 1u);
}

}  // namespace
}  // namespace kpx
