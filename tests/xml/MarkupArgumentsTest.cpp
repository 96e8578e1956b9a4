#include <gtest/gtest.h>

#include <cstdint>
#include <limits>

#include "kpx/xml/CMarkup.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

// --- what compiles, and what must not ------------------------------------------------------------

#define TAKES(operation) \
  requires(CMarkup & d, Value v) { d.operation; }

// How many of the operations that take a value take one of this type.
template <class Value>
constexpr int takingValue = TAKES(SetData(v)) + TAKES(SetChildData(v)) + TAKES(SetAttrib(u"n", v)) +
                            TAKES(SetChildAttrib(u"n", v)) + TAKES(AddElem(u"n", v)) +
                            TAKES(InsertElem(u"n", v)) + TAKES(AddChildElem(u"n", v)) +
                            TAKES(InsertChildElem(u"n", v));
// The same with decimals or flags behind it.
template <class Value>
constexpr int takingMore = TAKES(SetData(v, 2)) + TAKES(SetChildData(v, 2)) +
                           TAKES(SetAttrib(u"n", v, 2)) + TAKES(SetChildAttrib(u"n", v, 2)) +
                           TAKES(AddElem(u"n", v, 2)) + TAKES(InsertElem(u"n", v, 2)) +
                           TAKES(AddChildElem(u"n", v, 2)) + TAKES(InsertChildElem(u"n", v, 2));
#undef TAKES

enum Plain { plain = 7 };
enum class Scoped { value };

template <class... Values>
constexpr bool allTaken = ((takingValue<Values> == 8) && ...);
template <class... Values>
constexpr bool noneTaken = ((takingValue<Values> == 0 && takingMore<Values> == 0) && ...);

static_assert(allTaken<int, unsigned, long, unsigned long, long long, std::uint64_t, short, bool,
                       Plain, float, double, long double>);
static_assert(allTaken<const char16_t*, std::u16string_view, std::u16string, CString,
                       const wchar_t*, std::wstring, std::wstring_view>);
static_assert(takingMore<double> == 8 && takingMore<float> == 8);
// Texts take flags, but attributes have none.
static_assert(takingMore<CString> == 6 && takingMore<const wchar_t*> == 6);
static_assert(takingMore<int> == 0 && takingMore<bool> == 0 && takingMore<std::int64_t> == 0);
static_assert(noneTaken<char, signed char, unsigned char, wchar_t, char16_t, char32_t, char8_t,
                        std::nullptr_t, const char*, void*, Scoped>);

// Literals, which can be null pointers.
template <class Markup>
constexpr bool takesNull = requires(Markup& d) {
  d.AddElem(u"n", 0, 16);
}
|| requires(Markup& d) { d.SetData(0, 16); }
|| requires(Markup& d) { d.AddElem(0); }
|| requires(Markup& d) { d.SetDoc(nullptr); }
|| requires(Markup& d) { d.AddSubDoc(nullptr); }
|| requires(Markup& d) { d.AddNode(2, nullptr); }
|| requires(Markup& d) { d.SavePos(nullptr); }
|| requires { Markup::EscapeText(nullptr); }
|| requires { Markup(nullptr); };
static_assert(!takesNull<CMarkup>);

// Text whose units are wide characters can be worked on in place only where they are as long.
template <class Markup>
constexpr bool worksOnWideUnits = requires(const wchar_t* in, wchar_t* out, int count) {
  Markup::DecodeCharUTF16(in, nullptr);
  Markup::EncodeCharUTF16(count, out, count);
  Markup::UTF8To16(out, "", 0);
};
static_assert(worksOnWideUnits<CMarkup> == wideIsUtf16);

// --- what is written -----------------------------------------------------------------------------

TEST(MarkupArguments, NumbersAreWrittenWhole) {
  CMarkup document;
  const auto data = [&](auto... value) {
    document.SetDoc(u"<a/>");
    document.FindElem();
    EXPECT_TRUE(document.SetData(value...));
    return document.GetData();
  };
  EXPECT_EQ(data(2.75), u"2.75");
  EXPECT_EQ(data(1000.0), u"1000.");
  EXPECT_EQ(data(2.75, 1), u"2.8");
  EXPECT_EQ(data(1.5F, 3), u"1.500");
  EXPECT_EQ(data(std::numeric_limits<double>::quiet_NaN(), 2), u"---");
  EXPECT_EQ(data(5000000000), u"5000000000");
  EXPECT_EQ(data(std::numeric_limits<std::int64_t>::min()), u"-9223372036854775808");
  EXPECT_EQ(data(std::numeric_limits<std::uint64_t>::max()), u"18446744073709551615");
  EXPECT_EQ(data(-2147483647 - 1), u"-2147483648");
  EXPECT_EQ(data(static_cast<short>(-1)), u"-1");
  EXPECT_EQ(data(true), u"1");
  EXPECT_EQ(data(plain), u"7");

  // Decimals that no text can have are refused, and reported.
  EXPECT_FALSE(document.SetData(0.5, 1 << 20));
  EXPECT_EQ(document.GetDoc(), u"<a>7</a>");

  document.SetDoc(u"<?xml version='1.0'?>\n<r>\n<a/>\n</r>\n");
  document.FindElem();
  EXPECT_TRUE(document.SetAttrib(u"x", 1.5) && document.SetAttrib(u"y", 0));
  EXPECT_TRUE(document.FindChildElem() && document.SetChildAttrib(u"z", 0.25, 3));
  EXPECT_TRUE(document.SetChildData(false));
  EXPECT_TRUE(document.AddChildElem(u"b", 0) && document.InsertChildElem(u"c", 0.5));
  EXPECT_TRUE(document.IntoElem() && document.AddElem(u"d", true) &&
              document.InsertElem(u"e", 1.0, 0));
  EXPECT_EQ(document.GetDoc(),
            u"<?xml version='1.0'?>\n<r x=\"1.5\" y=\"0\">\n<a z=\"0.250\">0</a>\n<c>0.5</c>\n"
            u"<e>1</e>\n<d>1</d>\n<b>0</b>\n</r>\n");
}

// Callers write wide literals, whatever the size of their characters.
TEST(MarkupArguments, WideTextIsTaken) {
  CMarkup document(L"<r/>");
  EXPECT_TRUE(document.SetDoc(L"<r>\n<ä/></r>"));
  EXPECT_TRUE(document.FindElem(L"r") && document.FindChildElem(L"ä"));
  EXPECT_TRUE(document.SetChildAttrib(L"n", L"\U0001F600"));
  EXPECT_TRUE(document.AddChildElem(L"b", std::wstring(L"€")));
  EXPECT_TRUE(document.SavePos(L"here") && document.RestorePos(u"here"));
  EXPECT_EQ(document.GetDoc(), u"<r>\n<ä n=\"\xD83D\xDE00\"/>\n<b>€</b>\n</r>");
  const MCD_CSTR wide(L"a copy keeps its text");
  EXPECT_EQ(MCD_CSTR(wide).view(), u"a copy keeps its text");
  EXPECT_TRUE(MCD_CSTR(static_cast<const wchar_t*>(nullptr)).empty());

  EXPECT_EQ(CMarkup::FindErrorLine(L"a\nb\n", 3), 2);
  EXPECT_EQ(CMarkup::EscapeText(L"<ä"), u"&lt;ä");
  char bytes[8] = {};
  EXPECT_EQ(CMarkup::UTF16To8(bytes, L"€ä", 8), 5);
  EXPECT_STREQ(bytes, "\xE2\x82\xAC\xC3\xA4");
  int units = 0;
  CMarkup::EncodeCharUTF16(0x1F600, nullptr, units);
  EXPECT_EQ(units, 2);
  EXPECT_EQ(CMarkup::UTF8To16(nullptr, "\xC3\xA4", 2), 1);
  const auto inPlace = []<class Wide>(Wide* out) {
    if constexpr (sizeof(Wide) == sizeof(char16_t)) {
      int count = 0;
      CMarkup::EncodeCharUTF16(0x1F600, out, count);
      EXPECT_EQ(CMarkup::UTF8To16(out + count, "\xC3\xA4", 2), 2);
      const Wide* position = out;
      EXPECT_EQ(CMarkup::DecodeCharUTF16(position, out + 3), 0x1F600);
      EXPECT_EQ(CMarkup::DecodeCharUTF16(position, nullptr), 0xE4);
    }
  };
  wchar_t out[4] = {};
  inPlace(out);
}

}  // namespace
}  // namespace kpx
