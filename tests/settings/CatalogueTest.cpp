// What holds for every settings class, whatever its schema says.

#include "kpx/settings/Catalogue.h"

#include <gtest/gtest.h>

#include <set>

#include "kpx/support/texts/TextStore.h"
#include "kpx/xml/CMarkup.h"
#include "tests/common/ObjectXml.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

std::vector<const SettingsClass*> configurations() {
  std::vector<const SettingsClass*> classes;
  for (const SettingsClass* const each : settingsClasses()) {
    if (each->isConfiguration()) classes.push_back(each);
  }
  return classes;
}

/// A text that the setting takes and that differs from its defaults and from 0.
CString otherText(const SettingDef& setting, int number) {
  CString text;
  switch (setting.kind) {
    case ValueKind::flag:
      return number % 2 != 0 ? u"1" : u"0";
    case ValueKind::text:
      text.Format(u"<%d> & \"ä\"", number);
      return text;
    default:
      text.Format(u"%d", 100 + number);
      return checkValueText(setting.kind, text, setting.decimals).normal;
  }
}

class EveryClass : public testing::TestWithParam<const SettingsClass*> {
 protected:
  static void SetUpTestSuite() { addBuiltInTexts(); }
};
INSTANTIATE_TEST_SUITE_P(Catalogue, EveryClass, testing::ValuesIn(configurations()),
                         [](const auto& each) { return CString(each.param->name).utf8(); });

TEST_P(EveryClass, IsFoundByNameAndElement) {
  const SettingsClass& settingsClass = *GetParam();
  EXPECT_EQ(findSettingsClass(settingsClass.name), &settingsClass);
  EXPECT_EQ(findSettingsClassByElement(settingsClass.elementName), &settingsClass);
  EXPECT_EQ(settingsClass.create()->GetElementName(), settingsClass.elementName);
}

TEST_P(EveryClass, SavesAndLoadsEveryValue) {
  const std::unique_ptr<CFGConfig> object = GetParam()->create();
  int number = 0;
  for (const SettingAccess& access : GetParam()->settings) {
    if (!access.set) continue;
    const ValueCheck check = access.setText(*object, otherText(*access.setting, ++number));
    EXPECT_TRUE(check.valid()) << CString(access.key()).utf8();
    if (access.get) {
      EXPECT_EQ(access.text(*object), check.normal);
    }
  }
  const CString xml = xmlOf(*object);
  ASSERT_TRUE(CMarkup(xml).IsWellFormed());
  const std::unique_ptr<CFGConfig> fresh = GetParam()->create();
  ASSERT_EQ(loadFromXml(*fresh, xml), 1);
  // Reading adds no setting, so that those which a new object lacks stay away.
  for (const auto& entry : fresh->Class.Cols) {
    EXPECT_EQ(entry.value.Value.Value, object->Class.find(entry.key)->Value.Value)
        << entry.key.utf8();
  }
  if (fresh->Class.Cols.size() == object->Class.Cols.size()) {
    EXPECT_EQ(xmlOf(*fresh), xml);
  }
}

TEST_P(EveryClass, NewObjectIsInTheOrderOfItsConstruction) {
  const std::unique_ptr<CFGConfig> object = GetParam()->create();
  ASSERT_EQ(object->Class.KeyOrder.size(), object->Class.Cols.size());
  std::size_t at = 0;
  for (const auto& entry : object->Class.Cols) {
    EXPECT_EQ(object->Class.KeyOrder[at++], entry.key);
    EXPECT_EQ(entry.value.Name, entry.key);
  }
}

TEST_P(EveryClass, GetterOfAMissingSettingCreatesNothing) {
  const std::unique_ptr<CFGConfig> object = GetParam()->create();
  object->Class.RemoveCols();
  const std::vector<CString> order = object->Class.KeyOrder;
  for (const SettingAccess& access : GetParam()->settings) {
    if (access.get) access.text(*object);
  }
  EXPECT_TRUE(object->Class.Cols.empty());
  EXPECT_EQ(object->Class.KeyOrder, order);
}

TEST_P(EveryClass, FirstSetCreatesAndSecondChangesTheValueOnly) {
  for (const SettingAccess& access : GetParam()->settings) {
    if (!access.set) continue;
    const std::unique_ptr<CFGConfig> object = GetParam()->create();
    object->Class.RemoveCols();
    object->Class.SetKeyCount(0);
    access.setText(*object, otherText(*access.setting, 2));
    ASSERT_EQ(object->Class.KeyOrder, (std::vector<CString>{access.key()}));
    CFGCol column = *object->Class.find(access.key());
    EXPECT_EQ(column.Type, access.setting->type);
    EXPECT_EQ(column.Caption, access.setting->caption.get());
    EXPECT_EQ(column.Category, access.setting->group.get());
    EXPECT_EQ(column.Param1, 1);
    EXPECT_EQ(column.Prec, 0);
    EXPECT_EQ(column.Param5, 0);

    CFGCol& stored = object->Class.ColAt(access.key());
    stored.Caption = column.Caption = u"own";
    stored.Category = column.Category = u"own";
    stored.Type = column.Type = 99;
    const ValueCheck check = access.setText(*object, otherText(*access.setting, 3));
    column.Value.Value = check.normal;
    EXPECT_EQ(object->Class.KeyOrder.size(), 1u);
    EXPECT_EQ(xmlOf(*object->Class.find(access.key())), xmlOf(column));
  }
}

TEST_P(EveryClass, ResetPosLeavesTheColumns) {
  const std::unique_ptr<CFGConfig> object = GetParam()->create();
  const CString before = xmlOf(*object);
  object->ResetPos();
  const std::vector<CString> order = object->Class.KeyOrder;
  EXPECT_EQ(xmlOf(*object), before);
  EXPECT_EQ(std::set<CString>(order.begin(), order.end()).size(), order.size());

  object->Class.KeyOrder.insert(object->Class.KeyOrder.begin(), u"another");
  object->ResetPos();
  object->Class.RemoveCols();
  if (object->Class.KeyOrder == order) {
    object->ResetPos();
    EXPECT_TRUE(object->Class.Cols.empty()) << "ResetPos created a column";
  }
}

TEST_P(EveryClass, AnswersWithoutColumnsWhatTheCatalogueSays) {
  for (const SettingAccess& access : GetParam()->settings) {
    EXPECT_EQ(GetParam()->findKey(access.key())->key(), access.key());
    if (access.get) {
      EXPECT_EQ(GetParam()->findAccessor(access.getter), &access);
    }
    if (access.set) {
      const auto column = columnCreatedBy(*GetParam(), access);
      ASSERT_TRUE(column);
      EXPECT_EQ(column->Name, access.key());
      EXPECT_EQ(GetParam()->findAccessor(access.setter), &access);
    }
  }
}

TEST(Catalogue, DoesNotFindWhatThereIsNot) {
  EXPECT_EQ(findSettingsClass(u""), nullptr);
  EXPECT_EQ(findSettingsClass(u"CFGGeneralSetting"), nullptr);
  EXPECT_EQ(findSettingsClassByElement(u""), nullptr);
  EXPECT_EQ(findSettingsClassByElement(u"CFGGeneralSettings"), nullptr);
  const SettingsClass* const header = findSettingsClass(u"CFGHeader");
  ASSERT_NE(header, nullptr);
  EXPECT_EQ(header->findKey(u"class"), nullptr);
  EXPECT_EQ(header->findAccessor(u""), nullptr);
}

}  // namespace
}  // namespace kpx
