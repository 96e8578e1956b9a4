#include "kpx/settings/document/ConfigDocument.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <thread>

#include "kpx/settings/document/ConfigDifference.h"
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

/// Another value than the default for some keys of the class: half of them longer, half shorter.
std::vector<KeyAndValue> otherValues(const SettingsClass& settingsClass) {
  std::vector<KeyAndValue> values;
  std::size_t number = 0;
  const std::unique_ptr<CFGConfig> object = settingsClass.create();
  for (const auto& [key, column] : object->Class.Cols) {
    const SettingAccess* const access = settingsClass.findKey(key);
    const std::size_t step = 1 + object->Class.Cols.size() / 10;
    if (!access || number++ % step != 0) continue;
    const bool isText = access->setting->kind == ValueKind::text;
    values.push_back({key, isText ? u"ä>\r\n\"<&'" : u"1"});
  }
  return values;
}

CString writtenText(ConfigDocument& document) {
  std::string bytes;
  EXPECT_TRUE(document.write(bytes).ok());
  return CString::fromUtf8(bytes);
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
    const std::vector<KeyAndValue> values = otherValues(*each);
    for (const bool hasUsualLineEnds : {true, false}) {
      if (!hasUsualLineEnds) text.Remove(u'\r');
      ConfigDocument together;
      ConfigDocument oneByOne;
      ASSERT_TRUE(together.read(text.utf8()).ok() && oneByOne.read(text.utf8()).ok());
      for (const int configuration : {2, 0, 1}) {
        for (const auto& [key, value] : values) {
          EXPECT_TRUE(together.setText(configuration, key, value).ok());
          EXPECT_TRUE(oneByOne.setText(configuration, key, value).ok());
          writtenText(oneByOne);
        }
      }
      EXPECT_EQ(writtenText(together), writtenText(oneByOne)) << CString(each->name).utf8();
    }
  }
}

TEST(ConfigDocument, AddsEveryKeyOfEveryClassAsANewObjectHasIt) {
  for (const SettingsClass* const each : settingsClasses()) {
    if (!each->isConfiguration()) continue;
    const CString complete = partOf(*each, [](int) { return true; });
    ConfigDocument document;
    ASSERT_TRUE(document.read(partOf(*each, [](int) { return false; }).utf8()).ok());
    const std::unique_ptr<CFGConfig> object = each->create();
    for (const auto& [key, column] : object->Class.Cols) {
      DocumentChange done;
      EXPECT_TRUE(document.change({}, key, column.Value.Value, MissingKey::add, done).ok());
      EXPECT_TRUE(done.isAdded) << CString(each->name).utf8() << key.utf8();
    }
    EXPECT_EQ(writtenText(document), complete);
  }
}

// Objects that have loaded the document, and those that read it by key, answer the same; the same
// setter calls give the same document.
TEST(ConfigDocument, AgreesWithTheObjectsOfEveryClass) {
  for (const SettingsClass* const each : settingsClasses()) {
    if (!each->isConfiguration()) continue;
    // Every key stands in the document, also those that a new object lacks.
    const std::unique_ptr<CFGConfig> stored = each->create();
    for (const SettingAccess& access : each->settings) {
      if (!access.set) continue;
      const ValueKind kind = access.setting->kind;
      const CString text = kind == ValueKind::text   ? u"a\"b"
                           : kind == ValueKind::real ? u"1.5"
                                                     : u"1";
      EXPECT_TRUE(access.setText(*stored, text).valid());
    }
    ConfigDocument document;
    ASSERT_TRUE(document.read(xmlOf(*stored).utf8()).ok());
    const auto compare = [&](const CFGConfig& object) {
      for (const SettingAccess& access : each->settings) {
        if (!access.get) continue;
        const SettingDef& setting = *document.findSetting(0, access.key());
        if (&setting != access.setting) continue;  // another accessor of the key is its first
        const std::string name = CString(each->name).utf8() + "." + CString(access.key()).utf8();
        const SettingValue value = access.get(object);
        CString text;
        EXPECT_TRUE(document.getText(0, access.key(), text).ok()) << name;
        if (const auto* const own = std::get_if<CString>(&value)) {
          EXPECT_EQ(text, *own) << name;
        } else if (const auto* const real = std::get_if<double>(&value)) {
          double read = 0;
          EXPECT_TRUE(document.getReal(0, access.key(), read).ok()) << name;
          EXPECT_EQ(read, *real) << name;
        } else {
          std::int32_t read = 0;
          EXPECT_TRUE(document.getInteger(0, access.key(), read).ok()) << name;
          EXPECT_EQ(read, std::get<std::int32_t>(value)) << name;
        }
      }
    };
    const std::unique_ptr<CFGConfig> object = document.object(0);
    ASSERT_NE(object, nullptr);
    compare(*object);
    const std::unique_ptr<CFGConfig> changed = each->create();
    ASSERT_TRUE(document.read(xmlOf(*changed).utf8()).ok());
    for (const SettingAccess& access : each->settings) {
      if (!access.set || document.findSetting(0, access.key()) != access.setting) continue;
      const CString text = access.setting->kind == ValueKind::text ? u"c" : u"0";
      EXPECT_TRUE(access.setText(*changed, text).valid());
      EXPECT_TRUE(document.setText(0, access.key(), text).ok());
    }
    compare(*changed);
    EXPECT_EQ(writtenText(document), xmlOf(*changed));
  }
}

/// Two configurations of one class, of which only the second has the key "Class".
const std::string twoHeaders =
    "<r><CFGConfigCFGClassHeader><CFGClass/></CFGConfigCFGClassHeader>"
    "<CFGConfigX><CFGClass><CFGCol Name='K'/></CFGClass></CFGConfigX>"
    "<CFGConfigCFGClassHeader><CFGClass><CFGCol Name='Class'/><CFGCol Name='Class'>"
    "<CFGValue Value='a'/></CFGCol><CFGCol Name='Description'/></CFGClass>"
    "</CFGConfigCFGClassHeader></r>";

TEST(ConfigDocument, ChangesTheConfigurationThatIsMeant) {
  using enum DocumentOutcome;
  const struct {
    ConfigurationChoice choice;
    const char16_t* key;
    const char16_t* value;
    MissingKey missingKey;
    DocumentOutcome outcome;
    int configuration;
  } cases[] = {
      {{}, u"Class", u"b", MissingKey::refuse, ok, 2},
      {{u"CFGHeader", 3}, u"Class", u"b", MissingKey::refuse, ok, 2},
      {{u"", 1}, u"Class", u"b", MissingKey::refuse, notStored, 0},
      {{u"CFGConfigCFGClassHeader", 1}, u"Class", u"b", MissingKey::add, ok, 0},
      {{u"", 2}, u"K", u"b", MissingKey::add, unknownClass, -1},
      {{u"", 4}, u"Class", u"b", MissingKey::add, noConfiguration, -1},
      {{u"CFGConfigX", 1}, u"Class", u"b", MissingKey::add, noConfiguration, -1},
      {{u"", 1}, u"Klasse", u"b", MissingKey::add, unknownKey, -1},
      {{u"", 1}, u"class", u"b", MissingKey::add, unknownKey, -1},
      // Its column gets the value: a second column would make the key stand twice.
      {{u"", 3}, u"Description", u"b", MissingKey::refuse, notStored, 2},
      {{u"", 3}, u"Description", u"b", MissingKey::add, ok, 2},
      {{u"", 1}, u"Class", u"\x01", MissingKey::add, badValue, 0},
  };
  for (const auto& each : cases) {
    ConfigDocument document;
    ASSERT_TRUE(document.read(twoHeaders).ok());
    DocumentChange done;
    const DocumentResult result =
        document.change(each.choice, each.key, each.value, each.missingKey, done);
    EXPECT_EQ(result.outcome, each.outcome) << describe(result).utf8();
    EXPECT_EQ(done.configuration, each.configuration);
    const CString text = writtenText(document);
    EXPECT_EQ(text.utf8() == twoHeaders, each.outcome != ok);
    if (each.outcome != ok) continue;
    EXPECT_EQ(done.isAdded, done.oldValue.IsEmpty());
    const ViewedConfiguration& changed = document.view().at(each.configuration);
    EXPECT_EQ(
        std::ranges::count(changed.columns, CString(each.value),
                           [&](const auto& column) { return document.view().valueOf(column); }),
        1);
    EXPECT_EQ(changed.columns.size(), each.configuration == 0 ? 1u : 3u);
  }
  ConfigDocument document;
  DocumentChange done;
  ASSERT_TRUE(document.read("<r><CFGConfigCFGClassHeader/><CFGConfigCFGClassHeader/></r>").ok());
  EXPECT_EQ(document.change({}, u"Class", u"b", MissingKey::add, done).outcome, severalColumns);
  // There is no "CFGClass" to put it into.
  EXPECT_EQ(document.change({u"", 1}, u"Class", u"b", MissingKey::add, done).outcome, refused);
}

// Whatever spelling the document has, nothing but the value changes.
TEST(ConfigDocument, ChangesTouchNothingElse) {
  const struct {
    const char* value;
    const char* changed;
  } cases[] = {
      {"<CFGValue Data='1' Value='a' />", "<CFGValue Data='1' Value='b&quot;' />"},
      {"<CFGValue Data='1'/>", "<CFGValue Data='1' Value=\"b&quot;\"/>"},
      {"<CFGValue></CFGValue>", "<CFGValue Value=\"b&quot;\"></CFGValue>"},
  };
  for (const auto& each : cases) {
    const auto around = [](const std::string& value) {
      return "<?xml version='1.0'?>\n<!-- <CFGValue Value='1'/> --><r>text<CFGConfigCFGClassHeader>"
             "<CFGClass> <CFGCol Name='Class'>" +
             value + "<x/></CFGCol></CFGClass></CFGConfigCFGClassHeader></r>";
    };
    ConfigDocument document;
    ASSERT_TRUE(document.read(around(each.value)).ok());
    ASSERT_TRUE(document.setText(0, u"Class", u"b\"").ok());
    EXPECT_EQ(writtenText(document).utf8(), around(each.changed));
  }
}

TEST(ConfigDocument, AddedMarkupHasTheLineEndsOfTheFile) {
  for (const std::string column :
       {"", "<CFGCol Name='Class'/>\n", "<CFGCol Name='Class'>\n</CFGCol>"}) {
    ConfigDocument document;
    ASSERT_TRUE(document
                    .read("<CFGConfigCFGClassHeader>\n<CFGClass>\n" + column +
                          "</CFGClass>\n</CFGConfigCFGClassHeader>\n")
                    .ok());
    // A line break in the value is content.
    ASSERT_TRUE(document.setText(0, u"Class", u"a>\r\nb").ok());
    CString text = writtenText(document);
    EXPECT_EQ(document.view().valueOf(document.view().at(0).columns[0]), u"a>\r\nb");
    EXPECT_EQ(text.Remove(u'\r'), 1) << text.utf8();
  }
}

TEST(ConfigDocument, ColumnsWithoutAValueGetOne) {
  ConfigDocument document;
  ASSERT_TRUE(document
                  .read("<CFGConfigCFGClassHeader>\n<CFGClass><CFGCol Name='Class'/>"
                        "<CFGCol Name='Description'><CFGValue Data='1'/></CFGCol></CFGClass>"
                        "</CFGConfigCFGClassHeader>")
                  .ok());
  EXPECT_FALSE(document.isStored(0, u"Class"));
  EXPECT_TRUE(document.setText(0, u"Class", u"a").ok());
  EXPECT_TRUE(document.setText(0, u"Description", u"b").ok());
  EXPECT_EQ(writtenText(document).Remove(u'\r'), 0);
  const ViewedConfiguration& written = document.view().at(0);
  ASSERT_EQ(written.columns.size(), 2u);
  EXPECT_EQ(document.view().valueOf(written.columns[0]), u"a");
  EXPECT_EQ(document.view().valueOf(written.columns[1]), u"b");
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
