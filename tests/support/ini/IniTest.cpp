#include <gtest/gtest.h>

#include <thread>

#include "kpx/support/ini/CIniEx.h"
#include "kpx/support/ini/IniCheck.h"
#include "kpx/text/NumberText.h"
#include "tests/common/FaultyFileSystem.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using namespace std::literals;

CIniEx iniOf(std::string_view bytes) {
  CIniEx ini;
  EXPECT_EQ(ini.readBytes(bytes), 1);
  return ini;
}

CString valueOf(const CIniEx& ini, const CString& section, const CString& key) {
  CString value = u"(none)";
  const int found = ini.GetKeyData(section, key, value);
  EXPECT_EQ(found, value != u"(none)" ? 1 : 0);
  return value;
}

std::string utf16(std::u16string_view text, std::string_view mark = "\xFF\xFE") {
  std::string bytes(mark);
  for (const char16_t unit : text) {
    bytes += static_cast<char>(unit & 0xFF);
    bytes += static_cast<char>(unit >> 8);
  }
  return bytes;
}

constexpr std::string_view sample =
    "; about this file\n"
    "\n"
    "[KPX]\n"
    "SYSTEM_PATH=D:\\data\n"
    "; the formula = quoted\n"
    "\"a=b\" = c = d;e \n"
    "no meaning\n"
    "  [ Second ] trailing\n"
    "key=1\n"
    "key=2\n"
    "\n"
    "; the end";

/// What classes of modules that derive from it see.
struct Derived : CIniEx {
  using CIniEx::GetIndexForKey;
  using CIniEx::GetIndexForSection;
};

TEST(Ini, IndexesOfWhatIsNotThereAreMinusOne) {
  Derived ini;
  ASSERT_EQ(ini.readBytes(sample), 1);
  const int second = ini.GetIndexForSection(u" Second ");
  EXPECT_EQ(ini.GetIndexForKey(second, u"key"), 0);
  EXPECT_EQ(ini.GetIndexForKey(second, u"Key"), -1);
  for (const int section : {ini.GetIndexForSection(u"second"), second + 1, 2147483647}) {
    EXPECT_EQ(ini.GetIndexForKey(section, u"key"), -1) << section;
  }
}

TEST(Ini, UntouchedFileIsSavedAsTheSameBytes) {
  const std::string files[] = {
      "",
      "\n",
      "\r",
      std::string(sample),
      "a=1\r\nb=2\n\r\n[x]\r\r\nc",
      "[open\nkey=1\n=nameless\n;\n[]\n ;a=b\n\t[t]\n",
      "[A]\nx=\xC3\xA4\n",
      "[A]\nx=\xE4\x80\x81\x8D\x8F\x90\x9D\n",
      "\xEF\xBB\xBF[A]\nx=\xE4 \xC3\xA4 \xED\xB2\x80\n",  // damaged
      "\xEF\xBB\xBF\xEF\xBB\xBF",
      "[A]\nx=\0y\n"s,
      utf16(u"[A]\r\nx=ä\xD800=\xDC80\r\n"),
      utf16(u"[A]\nx=1", ""),
      utf16(u"[A]\n") + "x",
      "\xFE\xFF\0[\0A\0]"s,
      "\xFF\xFE\0\0[\0\0\0"s,
      "\x1A\0"s,
      std::string(12'001, 'x') + "=1\n",
      "k=" + std::string(3'997, 'x') + "\xF0\x9F\x98\x80=2\n",
  };
  const TemporaryFolder folder;
  for (const std::string& bytes : files) {
    folder.write("in.ini", bytes);
    CIniEx ini;
    EXPECT_EQ(ini.ReadFile(folder / "in.ini"), 1);
    const CIniEx copy(ini);
    EXPECT_EQ(ini.SaveFile(folder / "out.ini"), 1);
    EXPECT_EQ(folder.read("out.ini"), bytes);
    EXPECT_EQ(copy.fileBytes(), bytes);
  }
}

TEST(Ini, ReadsLinesAsTheyAreMeant) {
  const struct {
    const char* file;
    CString section, key, value;
  } cases[] = {
      {"[A]\nx=1=2 ; 3\n", u"A", u"x", u"1=2 ; 3"},
      {"[A]\n \tx y\t =  1 \r\n", u"A", u"x y", u"  1 "},
      {"[A]\n\"p=q\"r=s\n", u"A", u"\"p=q\"r", u"s"},
      {"[A]\np\"q=r\n", u"A", u"p\"q", u"r"},
      {"[A]\np\"q=r\"=s\n", u"A", u"p\"q=r\"", u"s"},
      {"[A]\nx=\n", u"A", u"x", u""},
      {"  [ A ]]=b\nx=1", u" A ", u"x", u"1"},
      {"[A\nx=1\n", u"", u"x", u"1"},
      {"[A\nx=1\n", u"A", u"x", u"(none)"},
      {"[A=1\n", u"", u"[A", u"1"},
      {"x=1\n[A]\n", u"", u"x", u"1"},
      {"[SECTION]\nx=1\n", u"Section", u"x", u"(none)"},
      {"[A]\nx=1\n", u"A", u"X", u"(none)"},
      {"[A]\nx=1\nx=2\n[A]\nx=3\ny=4\n", u"A", u"x", u"1"},
      {"[A]\nx=1\n[A]\ny=4\n", u"A", u"y", u"(none)"},
      {"[A]\n;x=1\n ;x=2\n", u"A", u"x", u"(none)"},
      {"[A]\n ;x=2\n", u"A", u";x", u"2"},
      {"[A]\n =1\n", u"A", u"", u"1"},
      {"[A]\nx=a\\nb\\n\\\\n", u"A", u"x", u"a \nb \n\\ \n"},
      {"[A]\nx=\\na\\n", u"A", u"x", u"\\na \n"},
      {"[A]\nx=\xE4\n", u"A", u"x", u"ä"},
      {"[A]\nx=\xC3\xA4\n", u"A", u"x", u"ä"},
      {"\xEF\xBB\xBFx=1", u"", u"x", u"1"},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(valueOf(iniOf(each.file), each.section, each.key), each.value) << each.file;
  }
}

TEST(Ini, LineOf4000CharactersIsOneAndALongerOneSeveral) {
  const std::string longest = "k=" + std::string(3'998, 'x');
  EXPECT_EQ(valueOf(iniOf(longest + "\r\nb=1"), u"", u"k").GetLength(), 3'998);
  EXPECT_EQ(valueOf(iniOf(longest + "b=1\n"), u"", u"b"), u"1");
  // Changing the first piece keeps the others what they were, and the other way round.
  CIniEx ini = iniOf(longest + "b=1\nc=2");
  EXPECT_EQ(ini.UpdateKey(u"", u"k", u"short"), 1);
  EXPECT_EQ(ini.fileBytes(), "k=short\nb=1\nc=2");
  ini = iniOf(longest + "b=1\n");
  EXPECT_EQ(ini.UpdateKey(u"", u"b", u"2"), 1);
  EXPECT_EQ(ini.fileBytes(), longest + "\nb=2\n");
  // The carriage return at its end stays the value's.
  ini = iniOf("a=1\nb=2\r");
  EXPECT_EQ(ini.AddNewKey(u"", u"c", u"3"), 1);
  EXPECT_EQ(valueOf(iniOf(ini.fileBytes()), u"", u"b"), u"2\r");
  EXPECT_EQ(ini.UpdateKey(u"", u"a", CString(u'x', 3'998)), 1);
  EXPECT_EQ(ini.UpdateKey(u"", u"a", CString(u'y', 3'999)), 0);
  EXPECT_EQ(valueOf(ini, u"", u"a"), CString(u'x', 3'998));
}

TEST(Ini, ChangesTouchNothingElse) {
  const struct {
    const char* name;
    int (*change)(CIniEx& ini);
    std::string_view from, to;  // of the sample
  } cases[] = {
      {"value", [](CIniEx& ini) { return ini.UpdateKey(u"KPX", u"\"a=b\"", u"x"); },
       "\"a=b\" = c = d;e ", "\"a=b\"=x"},
      {"equal value", [](CIniEx& ini) { return ini.UpdateKey(u"KPX", u"\"a=b\"", u" c = d;e "); },
       "", ""},
      {"comment",
       [](CIniEx& ini) { return ini.UpdateKey(u" Second ", u"key", u"1", u"one\r\n;two", u""); },
       "key=1", ";one\n;two\nkey=1"},
      {"comment above what has no meaning",
       [](CIniEx& ini) { return ini.UpdateSection(u" Second ", u" Second ", u"x"); },
       "no meaning\n", "no meaning\n;x\n"},
      {"no comment",
       [](CIniEx& ini) { return ini.UpdateKey(u"KPX", u"\"a=b\"", u" c = d;e ", u"", u""); },
       "; the formula = quoted\n", ""},
      {"section", [](CIniEx& ini) { return ini.UpdateSection(u" Second ", u"2", u""); },
       "  [ Second ] trailing", "[2]"},
      {"key removed", [](CIniEx& ini) { return ini.DeleteKey(u"KPX", u"\"a=b\""); },
       "; the formula = quoted\n\"a=b\" = c = d;e \n", ""},
      {"first of two keys removed",
       [](CIniEx& ini) { return ini.DeleteKeyfromSection(u" Second ", u"key"); }, "key=1\n", ""},
      {"section removed, not the end of the file",
       [](CIniEx& ini) { return ini.DeleteSectionfromSections(u" Second "); },
       "no meaning\n  [ Second ] trailing\nkey=1\nkey=2\n", ""},
      {"new key", [](CIniEx& ini) { return ini.AddNewKey(u"KPX", u"new", u"1\n2"); },
       "no meaning\n", "new=1\\n2\nno meaning\n"},
      {"new key above all",
       [](CIniEx& ini) { return ini.AddNewSection(u"") && ini.AddNewKey(u"", u"n", u"") ? 1 : 0; },
       "; about", "n=\n; about"},
      {"new section at the end",
       [](CIniEx& ini) {
         int index = 0;
         return ini.AddNewSection(u"New", u"why", index) && index == 2 &&
                        ini.AddNewKey(u"New", u"k", u"v", u"c", u"", index) && index == 0
                    ? 1
                    : 0;
       },
       "; the end", "; the end\n;why\n[New]\n;c\nk=v\n"},
  };
  for (const bool windows : {false, true}) {
    const auto bytesOf = [&](std::string_view text) {
      CString lines = CString::fromUtf8(text);
      if (windows) lines.Replace(u"\n", u"\r\n");
      return lines.utf8();
    };
    for (const auto& each : cases) {
      CIniEx ini = iniOf(bytesOf(sample));
      EXPECT_EQ(each.change(ini), 1) << each.name;
      std::string expected(sample);
      expected.replace(expected.find(each.from), each.from.size(), each.to);
      EXPECT_EQ(ini.fileBytes(), bytesOf(expected)) << each.name;
    }
  }
}

TEST(Ini, WhatTheFileCouldNotGiveBackIsRefused) {
  CIniEx ini = iniOf(sample);
  const CString badKeys[] = {u"",
                             u" a",
                             u"a ",
                             u"a\nb",
                             u"a\r",
                             u";a",
                             u"a=b",
                             u"[a]b",
                             u"a\xD800",
                             u"\uFEFFa",
                             CString(u"\0", 1),
                             CString(u'k', 4'000)};
  for (const CString& key : badKeys) EXPECT_EQ(ini.AddNewKey(u"KPX", key, u"1"), 0) << key.utf8();
  const CString badSections[] = {u"a]b", u"a\nb", u"a\rb", u"\xDC00", CString(u's', 3'999)};
  for (const CString& name : badSections) {
    EXPECT_EQ(ini.AddNewSection(name), 0) << name.utf8();
    EXPECT_EQ(ini.UpdateSection(u"KPX", name, u""), 0) << name.utf8();
  }
  // The quote in the value would make the "=" of the line a quoted one.
  EXPECT_EQ(ini.AddNewKey(u"KPX", u"a\"b", u"c\"d"), 0);
  EXPECT_EQ(ini.AddNewKey(u"KPX", u"SYSTEM_PATH", u"1"), 0);
  EXPECT_EQ(ini.AddNewKey(u"nowhere", u"a", u"1"), 0);
  EXPECT_EQ(ini.AddNewSection(u"KPX"), 0);
  EXPECT_EQ(ini.UpdateSection(u"KPX", u" Second ", u""), 0);
  EXPECT_EQ(ini.UpdateKey(u"KPX", u"SYSTEM_PATH", u"\xD800"), 0);
  EXPECT_EQ(ini.UpdateKey(u"KPX", u"SYSTEM_PATH", u"1", CString(u'c', 4'000), u""), 0);
  EXPECT_EQ(ini.UpdateKey(u"KPX", u"missing", u"1"), 0);
  EXPECT_EQ(ini.DeleteKey(u"KPX", u"missing"), 0);
  EXPECT_EQ(ini.DeleteSection(u"missing"), 0);
  EXPECT_EQ(ini.readBytes(ini.fileBytes()), 1);
  EXPECT_EQ(ini.fileBytes(), sample);
}

TEST(Ini, LineBreaksInValuesSettleAfterOneRound) {
  for (const CString value :
       {u"a\nb", u"a \nb", u"a\r\nb\rc", u"\nb", u" \n", u"a  \n\n", u"\\n"}) {
    CIniEx ini = iniOf("[A]\n");
    EXPECT_EQ(ini.AddNewKey(u"A", u"x", value), 1);
    const std::string first = ini.fileBytes();
    const CString read = valueOf(iniOf(first), u"A", u"x");
    EXPECT_EQ(read.Find(u'\n') >= 0, value != u"\\n") << value.utf8();
    EXPECT_EQ(ini.UpdateKey(u"A", u"x", read), 1);
    EXPECT_EQ(ini.fileBytes(), first);
    EXPECT_EQ(valueOf(ini, u"A", u"x"), read);
  }
}

TEST(Ini, RemovedEntriesAreHeldUntilTheFileIsSaved) {
  const TemporaryFolder folder;
  CIniEx ini = iniOf("[A]\nx=1\n[B]\ny=2\nz=3\n[A]\nx=4\n");
  EXPECT_EQ(ini.DeleteSection(u"A"), 1);
  EXPECT_EQ(ini.DeleteKey(u"B", u"y"), 1);
  EXPECT_EQ(valueOf(ini, u"B", u"y"), u"(none)");
  // The second of the same name counts now.
  EXPECT_EQ(valueOf(ini, u"A", u"x"), u"4");
  CSection* section = nullptr;
  ASSERT_EQ(ini.GetSection(u"B", section), 1);
  ASSERT_EQ(section->keys().size(), 2u);
  EXPECT_EQ(section->keys()[0].state(), 2);
  CObArray all;
  EXPECT_EQ(ini.GetSectionAll(all), 1);
  EXPECT_EQ(all.size(), 2u);
  // A removed key can be added anew.
  EXPECT_EQ(ini.AddNewKey(u"B", u"y", u"5"), 1);
  const CIniEx copy(ini);
  EXPECT_EQ(ini.SaveFile(folder / "a.ini"), 1);
  EXPECT_EQ(folder.read("a.ini"), "[B]\nz=3\ny=5\n[A]\nx=4\n");
  ASSERT_EQ(ini.GetSection(u"B", section), 1);
  EXPECT_EQ(section->keys().size(), 2u);
  EXPECT_EQ(section->keys()[1].state(), 0);
  EXPECT_EQ(valueOf(ini, u"B", u"y"), u"5");
  EXPECT_EQ(valueOf(ini, u"A", u"x"), u"4");
  EXPECT_EQ(copy.fileBytes(), folder.read("a.ini"));
}

TEST(Ini, RemovedSectionStaysRemovedWhenTheOthersChangePlaceOrName) {
  const struct {
    const char* what;
    int (*change)(CIniEx&);
  } cases[] = {
      {"in front", [](CIniEx& ini) { return ini.AddNewSection(u""); }},
      {"renamed", [](CIniEx& ini) { return ini.UpdateSection(u"B", u"C", u""); }},
  };
  for (const auto& each : cases) {
    CIniEx ini = iniOf("[A]\nx=1\n[B]\n[A]\nx=2\n");
    EXPECT_EQ(ini.DeleteSection(u"A"), 1);
    EXPECT_EQ(each.change(ini), 1);
    EXPECT_EQ(valueOf(ini, u"A", u"x"), u"2") << each.what;
    EXPECT_EQ(ini.DeleteSection(u"A"), 1);
    EXPECT_EQ(valueOf(ini, u"A", u"x"), u"(none)") << each.what;
    EXPECT_EQ(ini.AddNewSection(u"A"), 1) << each.what;
  }
}

TEST(Ini, ManyKeysOfOneNameAreRemovedOneByOne) {
  std::string bytes = "[A]\n";
  for (int i = 0; i < 20'000; ++i) bytes += "x=" + std::to_string(i) + "\n";
  CIniEx ini = iniOf(bytes);
  for (int i = 0; i < 20'000; ++i) {
    CString value;
    ASSERT_EQ(ini.GetKeyData(u"A", u"x", value), 1);
    ASSERT_EQ(value.utf8(), std::to_string(i));
    ASSERT_EQ(ini.DeleteKey(u"A", u"x"), 1);
  }
  EXPECT_EQ(ini.fileBytes(), "[A]\n");
}

TEST(Ini, EncodingStaysUnlessATextDoesNotFit) {
  const struct {
    std::string file;
    CString value;
    std::string saved;
  } cases[] = {
      {"[A]\nx=\xE4\n", u"€ö", "[A]\nx=\x80\xF6\n"},
      {"[A]\nk=\xE4\nx=1\n", u"Ж", "\xEF\xBB\xBF[A]\nk=\xC3\xA4\nx=\xD0\x96\n"},
      // These bytes would be read as UTF-8.
      {"[A]\nx=\xE4\n", u"Ã¤", "[A]\nx=\xC3\x83\xC2\xA4\n"},
      {"[A]\nx=1\n", u"ä", "[A]\nx=\xC3\xA4\n"},
      {"\xEF\xBB\xBF[A]\nk=\xE4\nx=1\n", u"ä", "\xEF\xBB\xBF[A]\nk=\xE4\nx=\xC3\xA4\n"},
      {utf16(u"[A]\nx=1\n") + "!", u"Ж", utf16(u"[A]\nx=Ж\n") + "!"},
  };
  for (const auto& each : cases) {
    CIniEx ini = iniOf(each.file);
    EXPECT_EQ(ini.UpdateKey(u"A", u"x", each.value), 1);
    EXPECT_EQ(ini.fileBytes(), each.saved);
    EXPECT_EQ(valueOf(iniOf(ini.fileBytes()), u"A", u"x"), each.value);
  }
  // Without its first line the file would not be known for what it is.
  CIniEx ini = iniOf(utf16(u"[A]\nЖ=1\n", ""));
  EXPECT_EQ(ini.AddNewSection(u""), 1);
  EXPECT_EQ(ini.AddNewKey(u"", u"Ы", u"2"), 1);
  EXPECT_EQ(ini.fileBytes(), utf16(u"Ы=2\n[A]\nЖ=1\n"));
}

TEST(Ini, FailingStepLeavesFileAndMemoryAlone) {
  using Step = FaultyFileSystem::Step;
  const TemporaryFolder folder;
  folder.write("a.ini", sample);
  for (const Step step : {Step::open, Step::write, Step::flush, Step::close, Step::takeAttributes,
                          Step::putInPlace}) {
    CIniEx ini;
    ASSERT_EQ(ini.ReadFile(folder / "a.ini"), 1);
    ini.DeleteSection(u"KPX");
    CSection* second = nullptr;
    ASSERT_EQ(ini.GetSection(u" Second ", second), 1);
    FaultyFileSystem files;
    files.failOnce(step);
    EXPECT_EQ(ini.SaveFile(folder / "a.ini"), 0);
    EXPECT_TRUE(files.hasFailed());
    EXPECT_EQ(folder.read("a.ini"), sample);
    EXPECT_EQ(folder.names().size(), 1u);
    CObArray all;
    ini.GetSectionAll(all);
    EXPECT_EQ(all, CObArray{second});
    files.failOnce(Step::read);
    EXPECT_EQ(ini.ReadFile(folder / "a.ini"), 0);
    EXPECT_EQ(valueOf(ini, u" Second ", u"key"), u"1");
  }
  EXPECT_EQ(CIniEx().ReadFile(folder / "missing.ini"), 0);
}

TEST(Ini, ChangesOfSeveralAtOnceAreAllKept) {
  const TemporaryFolder folder;
  const CString path = folder / "a.ini";
  constexpr int keys = 50;
  const auto addKeys = [&](char16_t initial) {
    for (int i = 0; i < keys; ++i) {
      EXPECT_TRUE(CIniEx::ChangeFile(path, [&](CIniEx& ini) {
        ini.AddNewSection(u"S");
        return ini.AddNewKey(u"S", CString(initial) + utlLongAsText(i), u"1") == 1;
      }));
    }
  };
  std::thread other([&] { addKeys(u'b'); });
  addKeys(u'a');
  other.join();
  CIniEx ini;
  ASSERT_EQ(ini.ReadFile(path), 1);
  CSection* section = nullptr;
  ASSERT_EQ(ini.GetSection(u"S", section), 1);
  EXPECT_EQ(section->keys().size(), 2u * keys);

  // Who reads, thinks and saves can be told that the file is another one by now.
  ASSERT_TRUE(CIniEx::ChangeFile(path, [](CIniEx& now) { return now.DeleteSection(u"S") == 1; }));
  EXPECT_EQ(ini.SaveFile(path, SaveMode::unlessChanged), 0);
  EXPECT_EQ(folder.read("a.ini"), "");
  EXPECT_EQ(ini.SaveFile(path), 1);
  EXPECT_EQ(ini.SaveFile(path, SaveMode::unlessChanged), 1);

  std::unique_ptr<FileLock> held;
  ASSERT_TRUE(fileSystem().lock(path, held));
  const auto never = [](CIniEx&) -> bool { throw 1; };
  const auto soon = std::chrono::milliseconds(5);
  EXPECT_EQ(CIniEx::ChangeFile(path, never, soon).status, FileStatus::locked);
  held.reset();
  EXPECT_THROW(CIniEx::ChangeFile(path, never), int);
  EXPECT_EQ(folder.names(), std::vector<std::string>{"a.ini"});
}

TEST(Ini, CommentsTypesAndTheCatalogue) {
  CIniEx ini;
  int index = 7;
  EXPECT_EQ(ini.AddNewSection(u"A", u"one\n;two", index), 1);
  EXPECT_EQ(ini.AddNewKey(u"A", u"x", u"1", u"three", u"number", index), 1);
  EXPECT_EQ(ini.fileBytes(), ";one\r\n;two\r\n[A]\r\n;three\r\nx=1\r\n");
  CString value, comment, type;
  EXPECT_EQ(ini.GetKeyData(u"A", u"x", value, comment, type), 1);
  EXPECT_EQ(comment, u";three");
  EXPECT_EQ(type, u"number");
  CSection* section = nullptr;
  ASSERT_EQ(ini.GetSection(u"A", section), 1);
  EXPECT_EQ(section->comment(), u";one\n;two");
  ini.ClearMemory();
  EXPECT_EQ(ini.fileBytes(), "");
  EXPECT_EQ(ini.GetKeyData(u"A", u"x"), 0);

  EXPECT_EQ(ini.AddKeyTypeSection(u"types"), 1);
  EXPECT_EQ(ini.AddKeyToKeyTypeSection(u"x", u"real", u"", index), 1);
  EXPECT_EQ(ini.AddKeyToKeyTypeSection(u"y", u"text", u"", index), 1);
  EXPECT_EQ(ini.AddKeyToKeyTypeSection(u"x", u"number", u"", index), 1);
  EXPECT_EQ(index, 0);
  KEYTYPE_STRUCT entry;
  EXPECT_EQ(ini.GetDataFromKeyTypeSection(u"x", entry), 1);
  EXPECT_EQ(entry.Type, u"number");
  EXPECT_EQ(ini.DeleteIndexFromKeyTypeSection(2), 0);
  EXPECT_EQ(ini.DeleteIndexFromKeyTypeSection(0), 1);
  EXPECT_EQ(ini.GetDataFromKeyTypeSection(u"x", entry), 0);
}

TEST(IniCheck, FindsWhatReadersTripOver) {
  using Kind = IniProblemKind;
  struct Finding {
    Kind kind;
    int line, column, otherLine;
    bool operator==(const Finding&) const = default;
  };
  const struct {
    std::string file;
    std::vector<Finding> findings;
  } cases[] = {
      {"; c\n\n[A]\nx=1\n[B]\nx=1\n", {}},
      {"[A]\nx=\xE4\n", {}},
      {"k=1\n[A]\nx=1\n Y=2\n\ty=3\nx=4\n[a]\n[A]\n",
       {{Kind::keyBeforeSection, 1, 1, 0},
        {Kind::keyDiffersInCase, 5, 2, 4},
        {Kind::repeatedKey, 6, 1, 3},
        {Kind::sectionDiffersInCase, 7, 2, 2},
        {Kind::repeatedSection, 8, 2, 2}}},
      {"[A\n  word\n=1",
       {{Kind::withoutMeaning, 1, 1, 0},
        {Kind::withoutMeaning, 2, 3, 0},
        {Kind::withoutMeaning, 3, 1, 0}}},
      {"[A]\nx=a\rb\rc\ny=\0\n"s,
       {{Kind::carriageReturn, 2, 4, 0}, {Kind::nullCharacter, 3, 3, 0}}},
      {"[A]\na=D:\\neu\nb=D:\\daten\nc=eins\\nzwei\n", {{Kind::lineBreakInPath, 2, 5, 0}}},
      {"[A]\nx=" + std::string(9'000, 'x') + "\n", {{Kind::tooLong, 2, 4'001, 0}}},
      {"\xEF\xBB\xBF[A]\nx=\xC3\xA4\xE4\n", {{Kind::notInEncoding, 2, 4, 0}}},
      {"[A]\nx=\xE4\ny=a\xC3\xA4\n", {{Kind::mixedEncodings, 3, 4, 0}}},
      {utf16(u"[A]", "") + "x", {{Kind::noMark, 1, 1, 0}, {Kind::notInEncoding, 1, 4, 0}}},
  };
  for (const auto& each : cases) {
    std::vector<Finding> found;
    for (const IniProblem& problem : checkIni(each.file)) {
      found.push_back({problem.kind, problem.line, problem.column, problem.otherLine});
      EXPECT_FALSE(describe(problem).IsEmpty());
    }
    EXPECT_EQ(found, each.findings) << each.file;
  }
}

TEST(IniCheck, ProblemsThatAreNotKeptAreCounted) {
  std::string file = "[A]\n";
  for (int i = 0; i < 5'000; ++i) file += "nothing\n";
  const Problems<IniProblem> problems = checkIni(file, 3);
  EXPECT_EQ(problems.count, 5'000u);
  ASSERT_EQ(problems.first.size(), 3u);
  EXPECT_EQ(problems.first[2].line, 4);
  EXPECT_EQ(checkIni(file).leftOut(), 4'000u);
  EXPECT_EQ(checkIni(file, noProblemLimit).leftOut(), 0u);
}

TEST(IniCheck, TheFirstProblemsAreKeptInWhateverOrderTheyAreFound) {
  for (const std::size_t limit : {0, 1, 4, 100}) {
    ProblemCollector<std::size_t> collector(limit);
    std::vector<std::size_t> all;
    for (std::size_t i = 0; i < 60; ++i) {
      const std::size_t place = i * 37 % 30;  // each twice
      collector.add(place, 0, [&] { return place * 100 + i; });
      all.push_back(place * 100 + i);
    }
    std::ranges::sort(all);
    all.resize(std::min(limit, all.size()));
    const Problems<std::size_t> problems = std::move(collector).finish();
    EXPECT_EQ(problems.first, all);
    EXPECT_EQ(problems.count, 60u);
  }
}

}  // namespace
}  // namespace kpx
