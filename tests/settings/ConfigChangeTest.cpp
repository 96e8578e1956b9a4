#include <gtest/gtest.h>

#include <algorithm>

#include "kpx/settings/ConfigFile.h"
#include "kpx/settings/ConfigParts.h"
#include "tests/common/ObjectXml.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

/// Two configurations of one class, of which only the second has the key "Class".
const CString twoHeaders =
    u"<r><CFGConfigCFGClassHeader><CFGClass/></CFGConfigCFGClassHeader>"
    u"<CFGConfigX><CFGClass/></CFGConfigX>"
    u"<CFGConfigCFGClassHeader><CFGClass><CFGCol Name='Class'><CFGValue Value='a'/></CFGCol>"
    u"<CFGCol Name='Description'/></CFGClass></CFGConfigCFGClassHeader></r>";

TEST(ConfigChange, TakesTheConfigurationThatIsMeant) {
  using enum EditOutcome;
  const struct {
    ConfigurationChoice choice;
    const char16_t* key;
    MissingKey missingKey;
    EditOutcome outcome;
    int number;
  } cases[] = {
      {{}, u"Class", MissingKey::refuse, changed, 3},
      {{u"CFGHeader", 3}, u"Class", MissingKey::refuse, changed, 3},
      {{u"", 1}, u"Class", MissingKey::refuse, notInFile, 1},
      {{u"", 1}, u"Class", MissingKey::add, added, 1},
      {{u"", 2}, u"Class", MissingKey::add, unknownClass, 0},
      {{u"", 4}, u"Class", MissingKey::add, noConfiguration, 0},
      {{u"CFGConfigX", 1}, u"Class", MissingKey::add, noConfiguration, 0},
      {{u"", 1}, u"Klasse", MissingKey::add, unknownKey, 0},
      // Its column gets the value: a second column would make the key stand twice.
      {{u"", 3}, u"Description", MissingKey::refuse, notInFile, 3},
      {{u"", 3}, u"Description", MissingKey::add, added, 3},
  };
  for (const auto& each : cases) {
    CMarkup document;
    ASSERT_TRUE(document.SetDoc(twoHeaders));
    const EditResult result =
        setValueInDocument(document, each.choice, each.key, u"b", each.missingKey);
    EXPECT_EQ(result.outcome, each.outcome) << describe(result.outcome);
    EXPECT_EQ(result.number, each.number);
    const bool edited = each.outcome == changed || each.outcome == added;
    EXPECT_EQ(document.GetDoc() == twoHeaders, !edited);
    if (!edited) continue;
    const auto settings =
        findConfigurations(document)[static_cast<std::size_t>(each.number) - 1].settings;
    const auto meant = std::ranges::find(settings, CString(each.key), &DocumentSetting::key);
    ASSERT_NE(meant, settings.end());
    EXPECT_EQ(meant->value, u"b");
    EXPECT_EQ(std::ranges::count(settings, CString(each.key), &DocumentSetting::key), 1);
  }
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(u"<r><CFGConfigCFGClassHeader/><CFGConfigCFGClassHeader/></r>"));
  EXPECT_EQ(setValueInDocument(document, {}, u"Class", u"b", MissingKey::add).outcome,
            severalCandidates);
  // There is no "CFGClass" to put it into.
  EXPECT_EQ(setValueInDocument(document, {u"", 1}, u"Class", u"b", MissingKey::add).outcome,
            refused);
}

TEST(ConfigChange, AddsEveryKeyOfEveryClassAsANewObjectHasIt) {
  for (const SettingsClass* const each : settingsClasses()) {
    const std::unique_ptr<CFGConfig> object = each->create();
    if (!object) continue;
    const CString complete = xmlOf(*object);
    CMarkup document;
    const CFGClass columns = object->Class;
    object->Class.RemoveCols();
    ASSERT_TRUE(document.SetDoc(xmlOf(*object)));
    for (const auto& [key, column] : columns.Cols) {
      const EditResult result =
          setValueInDocument(document, {}, key, column.Value.Value, MissingKey::add);
      ASSERT_EQ(result.outcome, EditOutcome::added) << CString(each->name).utf8() << key.utf8();
    }
    EXPECT_EQ(document.GetDoc(), complete);
  }
}

TEST(ConfigChange, AddedMarkupHasTheLineEndsOfTheFile) {
  for (const CString column :
       {u"", u"<CFGCol Name='Class'/>\n", u"<CFGCol Name='Class'>\n</CFGCol>"}) {
    CMarkup document;
    ASSERT_TRUE(document.SetDoc(u"<CFGConfigCFGClassHeader>\n<CFGClass>\n" + column +
                                u"</CFGClass>\n</CFGConfigCFGClassHeader>\n"));
    // A line break in the value is content.
    const EditResult result =
        setValueInDocument(document, {}, u"Class", u"a>\r\nb", MissingKey::add);
    ASSERT_EQ(result.outcome, EditOutcome::added);
    EXPECT_EQ(findConfigurations(document)[0].settings[0].value, u"a>\r\nb");
    CString text = document.GetDoc();
    EXPECT_EQ(text.Remove(u'\r'), 1) << text.utf8();
  }
}

TEST(ConfigParts, ShowsEveryAttributeInItsPlace) {
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(
      u"<r><CFGConfigX a='1'>\n<CFGClass b='2'><CFGCol c='&lt;'><CFGValue d='' e='5'/></CFGCol> "
      u"<CFGCol/></CFGClass></CFGConfigX></r>"));
  const auto all = configPartsOf(document);
  ASSERT_EQ(all.size(), 1u);
  const ConfigParts& parts = all[0];
  EXPECT_TRUE(parts.foreign.empty());
  EXPECT_EQ(document.GetDoc().Mid(parts.element.offset, parts.length).Right(13), u"</CFGConfigX>");
  ASSERT_EQ(parts.columns.size(), 2u);
  EXPECT_FALSE(parts.columns[1].value);
  AttributeReader column = parts.columns[0].column.attributes;
  ASSERT_TRUE(column.next());
  EXPECT_EQ(column.value(), u"<");
  AttributeReader value = parts.columns[0].value->attributes;
  ASSERT_TRUE(value.next() && value.next());
  EXPECT_EQ(value.name(), u"e");
}

TEST(ConfigParts, TellsWhatDoesNotBelongThere) {
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
    CMarkup document;
    ASSERT_TRUE(document.SetDoc(u"<CFGConfigX>" + CString(each.inside) + u"</CFGConfigX>"));
    const auto all = configPartsOf(document);
    ASSERT_TRUE(all.size() == 1 && all[0].foreign.size() == 1) << CString(each.inside).utf8();
    EXPECT_EQ(all[0].foreign[0].what, each.what);
  }
}

}  // namespace
}  // namespace kpx
