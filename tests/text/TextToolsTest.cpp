#include "kpx/text/TextTools.h"

#include <gtest/gtest.h>

#include <cmath>
#include <random>
#include <string>

#include "kpx/text/VariableTable.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using namespace literals;

/// The meaning of a pattern, said as plainly as possible: for each beginning of the text, whether
/// the pattern up to here matches it.
bool matchesSlowly(const CString& text, const CString& pattern) {
  std::vector<bool> reached(text.view().size() + 1, false);
  reached[0] = true;
  for (const char16_t unit : pattern) {
    if (unit == u'*') {
      for (std::size_t i = 1; i < reached.size(); ++i) reached[i] = reached[i] || reached[i - 1];
    } else {
      for (std::size_t i = reached.size() - 1; i > 0; --i) {
        reached[i] = reached[i - 1] && (unit == u'?' || unit == text.view()[i - 1]);
      }
      reached[0] = false;
    }
  }
  return reached.back();
}

CString randomText(std::mt19937& random, std::u16string_view units, unsigned longest) {
  CString text;
  for (unsigned left = random() % (longest + 1); left > 0; --left) {
    text += units[random() % units.size()];
  }
  return text;
}

TEST(Wildcards, AgreeWithTheMeaningOfPatterns) {
  std::mt19937 random(4);
  int matched = 0;
  for (int i = 0; i < 50000; ++i) {
    const CString text = randomText(random, u"aab", 12);
    const CString pattern = randomText(random, u"aaab*?", 9);
    const bool expected = matchesSlowly(text, pattern);
    matched += expected;
    ASSERT_EQ(kpxMatchWildcardString(text, pattern), expected ? 1 : 0)
        << testing::PrintToString(text) << " " << testing::PrintToString(pattern);
  }
  EXPECT_GT(matched, 5000);
  // Pieces long enough for the search that prepares them.
  for (int i = 0; i < 2000; ++i) {
    const CString piece = randomText(random, u"ab", 3) + CString(u'a', 70);
    const CString text = randomText(random, u"aaaaaaaaab", 300) + piece;
    const CString pattern = u"*" + piece + u"*" + (random() % 2 ? u"b" : u"");
    ASSERT_EQ(kpxMatchWildcardString(text, pattern), matchesSlowly(text, pattern) ? 1 : 0);
  }
  // Pieces with "?" of one part of 64 units and of several, with their ends at and beside borders.
  for (int i = 0; i < 2000; ++i) {
    CString piece = randomText(random, u"aaaaab?", 200);
    piece.Insert(static_cast<int>(random() % (piece.view().size() + 1)), u"?");
    CString text = randomText(random, u"aaaaaaaab", 300);
    for (const char16_t unit : piece) text += unit == u'?' || random() % 300 == 0 ? u'b' : unit;
    text += randomText(random, u"ab", 70);
    const CString pattern = u"*" + piece + u"*?*" + randomText(random, u"ab?*", 3);
    const bool expected = matchesSlowly(text, pattern);
    matched += expected;
    ASSERT_EQ(kpxMatchWildcardString(text, pattern), expected ? 1 : 0)
        << testing::PrintToString(text) << " " << testing::PrintToString(pattern);
  }
  EXPECT_GT(matched, 6000);
  // Units of every page of the character set, in one pattern.
  CString all;
  for (char32_t unit = 0x40; unit < 0xFFFF; unit += 0x3F) all += static_cast<char16_t>(unit);
  CString wild = all;
  for (int i = 0; i < wild.GetLength(); i += 7) wild.SetAt(i, u'?');
  const CString doubled = all + all;
  EXPECT_EQ(kpxMatchWildcardString(doubled, u"*x" + wild + u"*"), 0);
  EXPECT_EQ(kpxMatchWildcardString(doubled, u"*" + wild + u"*" + wild), 1);
  EXPECT_EQ(kpxMatchWildcardString(u"P1", u"p1"), 0);
}

TEST(Wildcards, AreNoticed) {
  EXPECT_EQ(kpxHasWildcard(u"1?"), 1);
  EXPECT_EQ(kpxHasWildcard(u"*"), 1);
  EXPECT_EQ(kpxHasWildcard(u"[1.5]"), 0);
}

TEST(TextEncodings, RtfEscapes) {
  CString text = u"a\\{b}\nä\u20AC\uFFE5\U0001F600";
  kpxRtfEncode(text);
  EXPECT_EQ(text, u"a\\\\\\{b\\}\n\\u228?\\u8364?\\u-27?\\u-10179?\\u-8704?");
}

TEST(TextEncodings, Utf8BytesAsUnitsAndBack) {
  CString text = u"Höhe \u20AC \U0001F600";
  const CString original = text;
  kpxUTF8Encode(text);
  EXPECT_EQ(text, u"H\u00C3\u00B6he \u00E2\u0082\u00AC \u00F0\u009F\u0098\u0080");
  const std::string bytes(text.begin(), text.end());
  EXPECT_EQ(UTF8to16(bytes.c_str()), original);
  EXPECT_EQ(UTF8to16(bytes.data(), 3), u"Hö");
  EXPECT_EQ(UTF8to16(bytes.data(), 2), u"H\uFFFD");
  EXPECT_EQ(UTF8to16("a\0b", 3).GetLength(), 3);
  EXPECT_EQ(UTF8to16(nullptr), u"");
  EXPECT_EQ(UTF8to16("a", -1), u"");
}

TEST(TextEncodings, ChangedFormatIsNotSearchedAgain) {
  EXPECT_EQ(kpxChangeFormat(u"aXbX", u"X", u"XX"), u"aXXbXX");
  EXPECT_EQ(kpxChangeFormat(u"a", u"", u"b"), u"a");
}

TEST(Paths, JoinedWithExactlyOneSeparator) {
  const struct {
    const char16_t *folder, *file, *path;
  } cases[] = {
      {u"C:\\Daten", u"a.xml", u"C:\\Daten\\a.xml"},
      {u"C:\\Daten\\", u"a", u"C:\\Daten\\a"},
      {u"/data", u"a.xml", u"/data/a.xml"},
      {u"/data//", u"\\a", u"/data/a"},
      {u"C:/Daten\\x", u"y/z", u"C:/Daten\\x\\y/z"},
      {u"/", u"a", u"/a"},
      {u"", u"a.xml", u"a.xml"},
      {u"/data/", u"", u"/data/"},
  };
  for (const auto& item : cases) EXPECT_EQ(detail::joinPath(item.folder, item.file), item.path);
  const CString plain = detail::joinPath(u"data", u"a");
  EXPECT_TRUE(plain == u"data/a" || plain == u"data\\a") << testing::PrintToString(plain);
}

TEST(Paths, CutOnlyAtWholeNames) {
  const struct {
    const char16_t *path, *folder, *rest;
  } cases[] = {
      {u"C:\\Daten\\Größe\\a.xml", u"c:/daten/GRÖSSE", u"C:\\Daten\\Größe\\a.xml"},
      {u"C:\\Daten\\Höhe\\a.xml", u"c:/daten/HÖHE/", u"a.xml"},
      {u"C:\\Daten2\\a.xml", u"C:\\Daten", u"C:\\Daten2\\a.xml"},
      {u"C:\\Daten", u"C:\\Daten\\", u""},
      {u"/a/b", u"", u"/a/b"},
      {u"/a/b", u"/", u"a/b"},
      {u"a/b", u"/", u"a/b"},
      {u"", u"/", u""},
  };
  for (const auto& item : cases) {
    EXPECT_EQ(detail::pathBelow(item.path, item.folder), item.rest)
        << testing::PrintToString(item.folder);
  }
}

TEST(Blanks, OnlyBlanksAreCut) {
  EXPECT_EQ(CString(detail::withoutBlanks(u"  \ta b\u00A0 ")), u"\ta b\u00A0");
  EXPECT_EQ(CString(detail::withoutLeadingBlanks(u" a ")), u"a ");
  EXPECT_EQ(CString(detail::withoutTrailingBlanks(u" a ")), u" a");
  EXPECT_EQ(CString(detail::withoutBlanks(u"   ")), u"");
}

TEST(VariableTable, ReadsAndWritesByName) {
  std::int32_t count = 1;
  double scale = 1.0;
  double height = 2.0;
  CString name = u"old";
  VariableTable table;
  table.add(u"Count", count);
  table.add(u"Scale", scale, 3);
  table.add(u"Height", height);
  table.add(u"Name", name);
  const struct {
    const char16_t *variable, *text;
    int result;
    const char16_t* after;
  } cases[] = {
      {u"Count", u" 42 ", 1, u"42"},
      {u"Count", u"x", 0, u"42"},
      {u"Count", u"99999999999", 1, u"2147483647"},
      {u"Count", u"---", 0, u"2147483647"},
      {u"Scale", u"0,99964", 1, u"1.000"},
      {u"Scale", u"-,5", 1, u"-0.500"},
      {u"Scale", u"about 1", 0, u"-0.500"},
      {u"Scale", u"", 1, u"0.000"},
      {u"Height", u"---", 1, u"8888.88888"},
      {u"Height", u"1.5e3", 1, u"1500."},
      {u"Name", u"", 1, u""},
      {u"Name", u" a ", 1, u" a "},
  };
  for (const auto& item : cases) {
    EXPECT_EQ(utlStringToVar(item.variable, item.text, table), item.result);
    CString after;
    EXPECT_EQ(utlVarToString(item.variable, after, table), 1);
    EXPECT_EQ(after, item.after) << testing::PrintToString(CString(item.text));
  }
  CString buffer = u"kept";
  EXPECT_EQ(utlStringToVar(u"count", u"1", table), 0);
  EXPECT_EQ(utlVarToString(u"count", buffer, table), 0);
  EXPECT_EQ(buffer, u"kept");

  std::int32_t other = 7;
  table.add(u"Scale", other);
  EXPECT_EQ(utlVarToString(u"Scale", buffer, table), 1);
  EXPECT_EQ(buffer, u"7");
  EXPECT_EQ(table.size(), 4u);
}

}  // namespace
}  // namespace kpx
