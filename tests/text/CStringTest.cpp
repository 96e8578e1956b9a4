#include "kpx/text/CString.h"

#include <gtest/gtest.h>

#include <sstream>
#include <vector>

#include "kpx/text/CaseFold.h"
#include "kpx/text/CKpxString.h"
#include "kpx/text/TextOrder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(CString, OffsetsOutsideATextMeanItsNearestEnd) {
  const CString text(u"abcabc");
  EXPECT_EQ(text.Find(u'a', -5), 0);
  EXPECT_EQ(text.Find(u"bc", 2), 4);
  EXPECT_EQ(text.Find(u'a', 100), -1);
  EXPECT_EQ(text.Find(u"", 100), 6);
  EXPECT_EQ(text.Left(-1), u"");
  EXPECT_EQ(text.Left(100), u"abcabc");
  EXPECT_EQ(text.Right(2), u"bc");
  EXPECT_EQ(text.Right(100), u"abcabc");
  EXPECT_EQ(text.Mid(4, 100), u"bc");
  EXPECT_EQ(text.Mid(100), u"");
  CString changed(u"abc");
  EXPECT_EQ(changed.Insert(100, u"d"), 4);
  EXPECT_EQ(changed.Delete(2, 100), 2);
  EXPECT_EQ(changed.Delete(-3, 1), 1);
  EXPECT_EQ(changed, u"b");
}

TEST(CString, ChangesByPartsOfTheTextItself) {
  CString text(u"0123456789");
  text += text;
  text.Insert(1, text.view().substr(8, 4));
  EXPECT_EQ(text, u"089011234567890123456789");
  text = u"a-b-c";
  EXPECT_EQ(text.Replace(text.view().substr(1, 1), text.view()), 2);
  EXPECT_EQ(text, u"aa-b-cba-b-cc");
  EXPECT_EQ(text.Replace(text.view().substr(1, 1), text.view().substr(5, 1)), 3);
  EXPECT_EQ(text, u"cc-b-cbc-b-cc");
  EXPECT_EQ(text.Trim(text.view().substr(11, 1)), u"-b-cbc-b-");
  text = text.view().substr(1, 7);
  EXPECT_EQ(text, u"b-cbc-b");
  text = u"x%";
  EXPECT_TRUE(text.Format(u"<%s|%s>", text, text.view().substr(0, 1)));
  EXPECT_EQ(text, u"<x%|x>");
  EXPECT_TRUE(text.AppendFormat(u"%s", text));
  EXPECT_EQ(text, u"<x%|x><x%|x>");
}

TEST(CString, CharactersAreWholeCharactersOfAnyKind) {
  CString text(L'\u20AC', 2);
  text += 'a';
  text += '\xE4';  // in no encoding that is known
  text += U'\U0001F600';
  EXPECT_EQ(text, u"€€a\uFFFD\U0001F600");
  EXPECT_EQ(text.Find(U'\U0001F600'), 4);
  EXPECT_EQ(text.ReverseFind(L'€'), 1);
  EXPECT_EQ(text.Replace(U'\U0001F600', 'b'), 1);
  EXPECT_EQ(text.Remove(u'€'), 2);
  EXPECT_EQ(L'x' + text + u'y', L"xa\uFFFDby");
  if (!wideIsUtf16) {
    text = static_cast<wchar_t>(0x1F600);
    EXPECT_EQ(text, u"\U0001F600");
  }
}

TEST(CString, NullPointersAreEmptyTexts) {
  const char16_t* const units = nullptr;
  const wchar_t* const wide = nullptr;
  CString text(u"ab");
  text += units;
  text += wide;
  EXPECT_EQ(text.Find(wide), 0);
  EXPECT_EQ(text.Insert(1, wide), 2);
  EXPECT_EQ(text.Replace(units, L"x"), 0);
  EXPECT_EQ(text.Trim(units) + wide, u"ab");
  EXPECT_NE(text, units);
  text = wide;
  EXPECT_EQ(text, units);
  EXPECT_TRUE(text.Format(units));
  EXPECT_EQ(CString(units, 1) + CString(wide, 1), L"");
}

TEST(CString, GoesToAStreamAsUtf8) {
  std::ostringstream stream;
  stream.width(7);
  stream << CString(u"5 €") << CString(L"!");
  EXPECT_EQ(stream.str(), "  5 \xE2\x82\xAC!");
}

TEST(CString, RefusedFormatLeavesTheTextAsItWas) {
  CString text(u"kept");
  EXPECT_FALSE(text.Format(u"%d %d", 1));
  EXPECT_FALSE(text.AppendFormat(u"lost %n", 1));
  EXPECT_EQ(text, u"kept");
}

TEST(CString, TokenizePassesOverEmptyParts) {
  const CString text(u";;a;b c;;");
  std::vector<CString> parts;
  int position = 0;
  for (CString part = text.Tokenize(u"; ", position); position >= 0;
       part = text.Tokenize(u"; ", position)) {
    parts.push_back(part);
  }
  EXPECT_EQ(parts, (std::vector<CString>{u"a", u"b", u"c"}));
  EXPECT_EQ(text.Tokenize(u";", position), u"") << "asked again at the end";
}

TEST(CString, TrimsToNothingAndSpans) {
  EXPECT_EQ(CString(u" \t\r\n\v\f ").Trim(), u"");
  EXPECT_EQ(CString(u"\u00A0 a ").Trim(), u"\u00A0 a") << "a no-break space is content";
  EXPECT_EQ(CString(u"xxaxx").TrimLeft(u"x"), u"axx");
  EXPECT_EQ(CString(u"xxaxx").TrimRight(u"x"), u"xxa");
  EXPECT_EQ(CString(u"123").SpanIncluding(u"0123456789"), u"123");
  EXPECT_EQ(CString(u"12,3").SpanExcluding(u",;"), u"12");
}

TEST(CString, BufferEndsWhereTheCallerSays) {
  CString text;
  char16_t* buffer = text.GetBuffer(10);
  buffer[0] = u'a';
  buffer[1] = u'b';
  buffer[2] = 0;
  text.ReleaseBuffer();
  EXPECT_EQ(text, u"ab");
  text.GetBuffer(5);
  text.ReleaseBuffer(1);
  EXPECT_EQ(text, u"a");
}

TEST(CString, KeepsEveryUnit) {
  const CString lone(
      std::u16string_view(u"a\0\xD800"
                          u"b",
                          4));
  EXPECT_EQ(lone.GetLength(), 4);
  EXPECT_EQ(lone.utf8(), std::string("a\0\xED\xA0\x80"
                                     "b",
                                     6));
  EXPECT_EQ(CString::fromUtf8("h\xC3\xB6he \xF0\x9F\x98\x80"), u"höhe \U0001F600");
  EXPECT_EQ(CString(CString(u"höhe \U0001F600").wide()), u"höhe \U0001F600");
  EXPECT_EQ(CString(static_cast<const char16_t*>(nullptr)), u"");
}

TEST(CaseFold, EveryUnitHasOneFormForComparing) {
  for (unsigned code = 0; code < 0x10000; ++code) {
    const auto unit = static_cast<char16_t>(code);
    ASSERT_EQ(foldCase(foldCase(unit)), foldCase(unit)) << code;
    ASSERT_EQ(foldCase(raiseCase(unit)), foldCase(unit)) << code;
  }
}

TEST(CaseFold, UmlautsCompareEqualOnEverySystem) {
  EXPECT_EQ(CString(u"STRASSENHÖHE").CompareNoCase(u"strassenhöhe"), 0);
  EXPECT_EQ(utlCompStrNoCase(u"Ärger", u"äRGER"), 0);
  EXPECT_LT(utlCompStr(u"Ärger", u"ärger"), 0);
  EXPECT_LT(utlCompStrNoCase(u"ab", u"ABC"), 0);
  EXPECT_LT(utlCompStrNoCase(u"_", u"A"), 0) << "lower case counts: '_' stands before 'a'";
  EXPECT_EQ(CString(u"Šč Жя Ώή ț").MakeUpper(), u"ŠČ ЖЯ ΏΉ Ț");
}

TEST(TextOrder, InsertSortKeepsEveryValue) {
  std::vector<unsigned> values{5, 4294967295u, 0, 5, 3, 1};
  utlInsertSort(values);
  EXPECT_EQ(values, (std::vector<unsigned>{0, 1, 3, 5, 5, 4294967295u}));
  utlInsertSort(nullptr, 0);
}

template <class Unit>
bool formatList(CKpxString& text, const Unit* format, ...) {
  std::va_list list;
  va_start(list, format);
  const bool done = text.FormatV_l(format, nullptr, list);
  va_end(list);
  return done;
}

TEST(CKpxString, ReadsArgumentListsByTheFormatsTypes) {
  CKpxString text;
  ASSERT_TRUE(formatList(text, u"%d %ld %lld %zu %hhd %.2f %Lg %c %s %S %hs %*d %.*f %%", -1, -2L,
                         -3LL, std::size_t{4}, 260, 1.255, 0.5L, u'ä', u"wide", "narrow", "n2", 4,
                         7, 1, 2.25));
  EXPECT_EQ(text, u"-1 -2 -3 4 4 1.25 0.5 ä wide narrow n2    7 2.2 %");
  ASSERT_TRUE(
      formatList(text, L"%s %ls %-3s| %S %hs %c", L"wide", L"\u20AC", L"w", "n", "n2", L'ä'));
  EXPECT_EQ(text, u"wide € w  | n n2 ä");
  text = L'%';
  EXPECT_FALSE(formatList(text, u"%d %n", 1, nullptr));
  EXPECT_TRUE(text.EndsWith(u"%")) << "a refused format changed the text";
}

}  // namespace
}  // namespace kpx
