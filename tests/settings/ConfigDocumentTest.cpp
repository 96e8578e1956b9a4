#include "kpx/settings/ConfigDocument.h"

#include <gtest/gtest.h>

#include <thread>

#include "kpx/text/NumberText.h"
#include "tests/common/FaultyFileSystem.h"
#include "tests/common/ObjectXml.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

/// The defaults of a class without the columns that `isLeft` does not keep.
CString partOf(const SettingsClass& settingsClass, auto isLeft) {
  const std::unique_ptr<CFGConfig> object = settingsClass.create();
  const CFGClass all = object->Class;
  object->Class.RemoveCols();
  int number = 0;
  for (const auto& [key, column] : all.Cols) {
    if (isLeft(number++)) object->Class.SetCol(key, column);
  }
  return xmlOf(*object);
}

/// Other values than the defaults for all keys of the class: half of them longer, half shorter.
ConfigurationValues otherValues(const SettingsClass& settingsClass, int number) {
  ConfigurationValues values{number, {}};
  const std::unique_ptr<CFGConfig> object = settingsClass.create();
  for (const auto& [key, column] : object->Class.Cols) {
    const SettingAccess* const access = settingsClass.findKey(key);
    if (!access) continue;
    const ValueKind kind = access->setting->kind;
    const CString given = kind == ValueKind::text ? u"ä>\r\n\"<&'" : u"1";
    values.values.push_back({key, checkValueText(kind, given, access->setting->decimals).normal});
  }
  return values;
}

TEST(ConfigDocument, ManyValuesGiveTheTextThatOneByOneGives) {
  for (const SettingsClass* const each : settingsClasses()) {
    if (!each->isConfiguration()) continue;
    const CString parts[] = {
        partOf(*each, [](int) { return true; }),
        partOf(*each, [](int) { return false; }),
        partOf(*each, [](int number) { return number % 3 == 0; }),
    };
    CString text = u"<root>\r\n";
    for (const CString& part : parts) text += part.Mid(part.Find(u"<CFGConfig"));
    text += u"<!-- behind --></root>";
    for (const bool hasUsualLineEnds : {true, false}) {
      if (!hasUsualLineEnds) text.Remove(u'\r');
      CMarkup together;
      CMarkup oneByOne;
      ASSERT_TRUE(together.SetDoc(text) && oneByOne.SetDoc(text));
      const std::vector<ConfigurationValues> all = {otherValues(*each, 3), otherValues(*each, 1),
                                                    otherValues(*each, 2)};
      EXPECT_TRUE(setValuesInDocument(together, all));
      for (const ConfigurationValues& values : all) {
        for (const KeyAndValue& value : values.values) {
          setValueInDocument(oneByOne, {{}, values.number}, value.key, value.value,
                             MissingKey::add);
        }
      }
      EXPECT_EQ(together.GetDoc(), oneByOne.GetDoc()) << CString(each->name).utf8();
    }
  }
}

TEST(ConfigDocument, ColumnsWithoutAValueGetOne) {
  ConfigDocument document;
  ASSERT_TRUE(document
                  .read("<CFGConfigCFGClassHeader><CFGClass><CFGCol Name='Class'/>"
                        "<CFGCol Name='Description'><CFGValue/></CFGCol></CFGClass>"
                        "</CFGConfigCFGClassHeader>")
                  .ok());
  EXPECT_FALSE(document.isStored(0, u"Class"));
  EXPECT_TRUE(document.setText(0, u"Class", u"a").ok());
  EXPECT_TRUE(document.setText(0, u"Description", u"b").ok());
  std::string bytes;
  ASSERT_TRUE(document.write(bytes).ok());
  CMarkup written;
  ASSERT_TRUE(written.SetDoc(CString::fromUtf8(bytes)));
  const auto settings = findConfigurations(written)[0].settings;
  ASSERT_EQ(settings.size(), 2u);
  EXPECT_EQ(settings[0].value, u"a");
  EXPECT_EQ(settings[1].value, u"b");
}

TEST(ConfigDocument, FailuresKeepTheFileAndTheChanges) {
  const TemporaryFolder folder;
  const CString path = folder / "a.xml";
  const std::string old =
      "<CFGConfigCFGClassHeader><CFGClass><CFGCol Name='Class'><CFGValue Value='a'/></CFGCol>"
      "</CFGClass></CFGConfigCFGClassHeader>";
  folder.write("a.xml", old);
  ConfigDocument document;
  ASSERT_TRUE(document.load(path).ok());
  ASSERT_TRUE(document.setText(0, u"Class", u"b").ok());
  for (const auto step : {FaultyFileSystem::Step::open, FaultyFileSystem::Step::write,
                          FaultyFileSystem::Step::flush, FaultyFileSystem::Step::putInPlace}) {
    FaultyFileSystem faulty;
    faulty.failOnce(step);
    EXPECT_EQ(document.save(path).outcome, DocumentOutcome::notWritten);
    EXPECT_TRUE(faulty.hasFailed());
    EXPECT_EQ(folder.read("a.xml"), old);
  }
  // A document that cannot be read leaves the one that is there.
  EXPECT_EQ(document.read("<a>").outcome, DocumentOutcome::illFormed);
  ASSERT_TRUE(document.save(path).ok());
  EXPECT_EQ(folder.read("a.xml"), std::string(old).replace(old.find("'a'"), 3, "'b'"));
}

TEST(ConfigDocument, WhatOthersChangedIsNotOverwritten) {
  const TemporaryFolder folder;
  const CString path = folder / "a.xml";
  const auto textWith = [](const std::string& value) {
    return "<CFGConfigCFGClassHeader><CFGClass><CFGCol Name='Class'><CFGValue Value='" + value +
           "'/></CFGCol><CFGCol Name='Description'><CFGValue Value=''/></CFGCol></CFGClass>"
           "</CFGConfigCFGClassHeader>";
  };
  folder.write("a.xml", textWith("a"));
  ConfigDocument document;
  ASSERT_TRUE(document.load(path).ok());
  folder.write("a.xml", textWith("b"));
  EXPECT_EQ(document.save(path).outcome, DocumentOutcome::changed);
  EXPECT_EQ(folder.read("a.xml"), textWith("b"));
  EXPECT_TRUE(document.save(folder / "b.xml").ok()) << "another file";
  EXPECT_TRUE(document.save(path, SaveMode::overwrite).ok());
  EXPECT_TRUE(document.save(path).ok());

  // Two that change different settings, again and again.
  constexpr int rounds = 50;
  const auto count = [&](const char16_t* key) {
    for (int round = 1; round <= rounds; ++round) {
      const DocumentResult result = ConfigDocument::changeFile(
          path, [&](ConfigDocument& held) { return held.setText(0, key, utlLongAsText(round)); });
      EXPECT_TRUE(result.ok()) << describe(result).utf8();
    }
  };
  std::thread other([&] { count(u"Description"); });
  count(u"Class");
  other.join();
  ASSERT_TRUE(document.load(path).ok());
  for (const char16_t* key : {u"Class", u"Description"}) {
    CString value;
    EXPECT_TRUE(document.getText(0, key, value).ok());
    EXPECT_EQ(value, utlLongAsText(rounds));
  }
  EXPECT_EQ(folder.names().size(), 2u);
}

TEST(ConfigDocument, SmallConfigurationsTakeLittleMemory) {
  // With an object of its own each of them would take 100,000 bytes.
  constexpr int count = 100'000;
  std::string bytes = "<r>";
  for (int i = 0; i < count; ++i) bytes += "<CFGConfigCFGGeneralSettings/>";
  ConfigDocument document;
  ASSERT_TRUE(document.read(bytes + "</r>").ok());
  ASSERT_EQ(document.count(), count);
  double value = 0;
  EXPECT_TRUE(document.getReal(count - 1, u"CA2T_Tol_XY", value).ok());
  EXPECT_EQ(value, 0.02);
}

TEST(ConfigDocument, ATextThatFitsIntoNoTagIsRefusedAtOnce) {
  ConfigDocument document;
  ASSERT_TRUE(document.add(*findSettingsClass(u"CFGHeader")).ok());
  EXPECT_EQ(document.setText(0, u"Class", std::u16string(400'000, u'"')).outcome,
            DocumentOutcome::refused);
  ASSERT_TRUE(document.setText(0, u"Class", std::u16string(2'000'000, u'x')).ok());
  std::string bytes;
  EXPECT_TRUE(document.write(bytes).ok());
}

}  // namespace
}  // namespace kpx
