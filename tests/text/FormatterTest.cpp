#include "kpx/text/Formatter.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdio>
#include <limits>
#include <random>
#include <string>

#include "kpx/text/PrintScan.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct FormatCase {
  const char16_t* format;
  FormatArg value;
  const char16_t* text;
};

TEST(Formatter, Numbers) {
  const FormatCase cases[] = {
      {u"%d|%%", -42, u"-42|%"},
      {u"%i", std::numeric_limits<std::int64_t>::min(), u"-9223372036854775808"},
      {u"%5d|", 42, u"   42|"},
      {u"%-5d|", 42, u"42   |"},
      {u"%05d", -42, u"-0042"},
      {u"%-05d|", 42, u"42   |"},
      {u"%+d", 42, u"+42"},
      {u"% d", 42, u" 42"},
      {u"%.3d", 7, u"007"},
      {u"%08.3d", -7, u"    -007"},
      {u"%.0d", 0, u""},
      {u"%u", -1, u"4294967295"},
      {u"%d", 4294967295u, u"-1"},
      {u"%d", std::int64_t{5000000000}, u"5000000000"},
      {u"%lld", 5, u"5"},
      {u"%hhd", 300, u"44"},
      {u"%hu", -1, u"65535"},
      {u"%x", static_cast<signed char>(-1), u"ffffffff"},
      {u"%#x", 255, u"0xff"},
      {u"%#X", 255, u"0XFF"},
      {u"%#x", 0, u"0"},
      {u"%#o", 8, u"010"},
      {u"%#.0o", 0, u"0"},
      {u"%I64x", std::uint64_t{1} << 40, u"10000000000"},
      {u"%I32d", 5, u"5"},
      {u"%f", 1.5, u"1.500000"},
      {u"%.0f", 2.5, u"2"},
      {u"%.0f", 3.5, u"4"},
      {u"%#.0f", 3.0, u"3."},
      {u"%+08.2f", 3.14159, u"+0003.14"},
      {u"%f", 7, u"7.000000"},
      {u"%.2f", 2.5f, u"2.50"},
      {u"%.1f", 2.25L, u"2.2"},
      {u"%e", 0.0, u"0.000000e+00"},
      {u"%.16e", 0.1, u"1.0000000000000001e-01"},
      {u"%.0e", 12345.0, u"1e+04"},
      {u"%#.0e", 12345.0, u"1.e+04"},
      {u"%E", 1e-300, u"1.000000E-300"},
      {u"%g", 100000.0, u"100000"},
      {u"%g", 1e6, u"1e+06"},
      {u"%G", 1e-5, u"1E-05"},
      {u"%g", 0.0001, u"0.0001"},
      {u"%g", 999999.5, u"1e+06"},
      {u"%#g", 1.0, u"1.00000"},
      {u"%#g", 999999.5, u"1.00000e+06"},
      {u"%#.3g", 100.0, u"100."},
      {u"%.0g", 25.0, u"2e+01"},
      {u"%a", 1.0, u"0x1p+0"},
      {u"%a", -0.1, u"-0x1.999999999999ap-4"},
      {u"%.1a", 1.96875, u"0x2.0p+0"},
      {u"%.1a", 1.03125, u"0x1.0p+0"},
      {u"%A", 5e-324, u"0X0.0000000000001P-1022"},
      {u"%012a", 1.5, u"0x00001.8p+0"},
      {u"%f", infinity, u"inf"},
      {u"%05F", -infinity, u" -INF"},
      {u"%f", -std::numeric_limits<double>::quiet_NaN(), u"nan"},
      {u"%+.1f", -0.0, u"-0.0"},
  };
  for (const auto& [format, value, text] : cases) {
    CString result;
    EXPECT_TRUE(result.Format(format, value)) << CString(format).utf8();
    EXPECT_EQ(result, text) << CString(format).utf8();
  }
}

TEST(Formatter, TextOfEitherKind) {
  const FormatCase cases[] = {
      {u"%s|%%", u"wide", u"wide|%"},
      {u"%s", "n\xC3\xA4rrow", u"närrow"},
      {u"%S", "n\xC3\xA4rrow", u"närrow"},
      {u"%hs", u"wide", u"wide"},
      {u"%s", L"\u20AC", u"€"},
      {u"%hs", L"wide", u"wide"},
      {u"%.1S", L"wide", u"w"},
      {u"%ls", "narrow", u"narrow"},
      {u"%6s|", u"ab", u"    ab|"},
      {u"%-6.1s|", u"ab", u"a     |"},
      {u"%.2s", "\xC3\xA4\xC3\xB6\xC3\xBC", u"äö"},
      {u"%.2s|", "a\xF0\x9F\x98\x80", u"a|"},  // no half of a character
      {u"%s", static_cast<const char16_t*>(nullptr), u"(null)"},
      {u"%s", std::u16string_view(), u""},
      {u"%s", std::string_view("n\xFF"), u"n\uFFFD"},
      {u"%c", u'ä', u"ä"},
      {u"%3c", 'x', u"  x"},
      {u"%c", U'\U0001F600', u"\U0001F600"},
      {u"%hc", 0xE4, u"\uFFFD"},
      {u"%C", 'x', u"x"},
  };
  for (const auto& [format, value, text] : cases) {
    CString result;
    EXPECT_TRUE(result.Format(format, value)) << CString(format).utf8();
    EXPECT_EQ(result, text) << CString(format).utf8();
  }
  CString text;
  EXPECT_TRUE(text.Format(L"%5s|%s|%c%%", L"ä€", u"units", L'x'));
  EXPECT_TRUE(text.AppendFormat(std::wstring(L"|%d"), 5));
  EXPECT_EQ(text, u"   ä€|units|x%|5");
  std::string narrow;
  EXPECT_EQ(detail::appendFormatted(narrow, "%s %S %lc %.4ls|", {"n", u"wä", u'ö', u"ab€€"}), 12);
  EXPECT_EQ(narrow, "n w\xC3\xA4 \xC3\xB6 ab|") << "a precision counts bytes, no part of a €";
}

TEST(Formatter, PrecisionEndsTextWithoutTerminator) {
  // A sanitizer sees a read behind either array.
  const char narrow[] = {'a', '\xC3', '\xA4'};
  const char16_t wide[] = {u'a', u'b', 0xD83D};
  char buffer[16];
  EXPECT_EQ(kpxsprintf(buffer, "%.3s", &narrow[0]), 3);
  EXPECT_EQ(kpxsprintf(buffer, "%.2S", &wide[0]), 2);
  CString text;
  EXPECT_TRUE(text.Format(u"%.2S", &narrow[0]));
  EXPECT_EQ(text, u"aä");
}

TEST(Formatter, WidthsFromArguments) {
  CString text;
  EXPECT_TRUE(text.Format(u"%*d|%-*d|%*d|%.*f|%.*f|%*%", 4, 1, 4, 2, -4, 3, 1, 0.25, -1, 0.5, 9));
  EXPECT_EQ(text, u"   1|2   |3   |0.2|0.500000|%");
}

TEST(Formatter, PointersShowAllDigits) {
  char text[64];
  EXPECT_EQ(kpxsprintf(text, "%p", static_cast<const void*>(nullptr)),
            static_cast<int>(2 * sizeof(void*)));
  // NOLINTNEXTLINE(performance-no-int-to-ptr)
  kpxsprintf(text, "%p", reinterpret_cast<const void*>(std::uintptr_t{0xAB}));
  EXPECT_TRUE(std::string(text).ends_with("000000AB")) << text;
}

TEST(Formatter, RefusedFormatsChangeNothing) {
  const FormatCase cases[] = {
      {u"x%d", u"text", u""},
      {u"x%d", 1.5, u""},
      {u"x%s", 5, u""},
      {u"x%f", u"1.5", u""},
      {u"x%c", u"c", u""},
      {u"x%n", 5, u""},
      {u"x%y", 5, u""},
      {u"x%", 5, u""},
      {u"x%5", 5, u""},
      {u"x%d%d", 5, u""},
      {u"x%*d", 5, u""},
      {u"x%65536d", 5, u""},
      {u"x%p", 1.5, u""},
      {u"x%.65536f", 1.5, u""},
      {u"x%99999999999999999999d", 5, u""},
      {u"x%l", 5, u""},
      {u"x%-99999999999s", u"", u""},
  };
  for (const auto& [format, value, unused] : cases) {
    CString text(u"kept");
    EXPECT_FALSE(text.AppendFormat(format, value)) << CString(format).utf8();
    EXPECT_EQ(text, u"kept") << CString(format).utf8();
  }
  EXPECT_FALSE(CString().Format(u"%*d", std::numeric_limits<int>::min(), 1));
  EXPECT_FALSE(CString().Format(u"%*d", 1e9, 1));
}

TEST(Formatter, LargestWidthAndDigitsOfTheSmallestNumber) {
  CString text;
  EXPECT_TRUE(text.Format(u"%65535d", 1));
  EXPECT_EQ(text.GetLength(), 65535);
  EXPECT_TRUE(text.Format(u"%.65535f", -std::numeric_limits<double>::max()));
  EXPECT_EQ(text.GetLength(), 1 + 309 + 1 + 65535);
  EXPECT_TRUE(text.Format(u"%.1100f", 5e-324));
  EXPECT_TRUE(text.EndsWith(u"62500000000000000000000000000"));
}

// The C runtime's own printing, with the decimal sign of whatever locale the tests run under.
int printByRuntime(char (&text)[512], int kind, int precision, double value) {
  const int length = kind == 0   ? std::snprintf(text, sizeof text, "%.*f", precision, value)
                     : kind == 1 ? std::snprintf(text, sizeof text, "%+20.*e", precision, value)
                     : kind == 2 ? std::snprintf(text, sizeof text, "%-15.*g|", precision, value)
                                 : std::snprintf(text, sizeof text, "%020.*G", precision, value);
  std::replace(text, text + length, ',', '.');
  return length;
}

TEST(Formatter, PrintsRealsLikeTheRuntimeInEveryPrecision) {
  const char* const formats[] = {"%.*f", "%+20.*e", "%-15.*g|", "%020.*G"};
  std::mt19937_64 random(1);
  for (int i = 0; i < 60000; ++i) {
    double value = std::bit_cast<double>(random());
    if (i % 2 != 0) value = static_cast<double>(random() % 100000000) / 1024;
    if (std::isnan(value)) continue;
    const auto precision = static_cast<int>(random() % 25);
    const auto kind = static_cast<int>(random() % 4);
    char expected[512];
    char printed[512];
    const int length = printByRuntime(expected, kind, precision, value);
    ASSERT_EQ(kpxsprintf_s(printed, sizeof printed, formats[kind], precision, value), length);
    ASSERT_STREQ(printed, expected);
  }
}

TEST(PrintFamily, TextsThatDoNotFitAreCutAndEnded) {
  char16_t wide[6] = u"#####";
  EXPECT_EQ(kpxswprintf_s(wide, 6, u"%d", 12345), 5);
  EXPECT_EQ(kpxswprintf_s(wide, 4, u"%d", 67890), -1);
  EXPECT_EQ(std::u16string_view(wide, 6), std::u16string_view(u"678\0005\0", 6));
  // A character that takes two units is one where wide characters have 32 bits.
  wchar_t platformWide[6] = L"#####";
  EXPECT_EQ(kpxswprintf(platformWide, L"%s%d", L"\U0001F600", 1), wideIsUtf16 ? 3 : 2);
  EXPECT_EQ(std::wstring_view(platformWide), L"\U0001F6001");
  EXPECT_EQ(kpxswprintf_s(platformWide, 4, u"%s", "abcd"), -1);
  EXPECT_EQ(std::wstring_view(platformWide, 4), std::wstring_view(L"abc\0", 4));
  EXPECT_EQ(kpxswprintf_s(platformWide, 4, static_cast<const wchar_t*>(nullptr)), -1);
  char narrow[3] = "##";
  EXPECT_EQ(kpxsprintf_s(narrow, 3, "%s", "abc"), -1);
  EXPECT_STREQ(narrow, "ab");
  EXPECT_EQ(kpxsprintf_s(narrow, 3, "%d", "no number"), -1);
  EXPECT_STREQ(narrow, "ab");
  EXPECT_EQ(kpxsprintf_s(narrow, 0, "%d", 1), -1);
  EXPECT_STREQ(narrow, "ab");
  EXPECT_EQ(kpxsprintf_s(nullptr, 3, "%d", 1), -1);
  EXPECT_EQ(kpxsprintf(narrow, static_cast<const char*>(nullptr)), -1);
  EXPECT_EQ(kpxsprintf(narrow, ""), 0);
  EXPECT_STREQ(narrow, "");
}

// Under a sanitizer the standard library's own code calls that one's allocation functions.
#if defined(__has_feature)
#if __has_feature(address_sanitizer)
#define KPX_OTHER_ALLOCATION
#endif
#endif
#ifndef KPX_OTHER_ALLOCATION
TEST(PrintFamily, WithoutMemoryTheAnswerIsMinusOne) {
  static char narrow[70000];
  static char16_t wide[70000];
  int answers[2] = {};
  {
    const FailingAllocations all(0);
    answers[0] = kpxsprintf(narrow, "%60000d", 1);
    answers[1] = kpxswprintf(wide, u"%60000d", 1);
  }
  EXPECT_EQ(answers[0], -1);
  EXPECT_EQ(answers[1], -1);
}
#endif

template <class Unit>
int printList(std::FILE* stream, const Unit* format, ...) {
  std::va_list list;
  va_start(list, format);
  const int count = kpxvfwprintf(stream, format, list);
  va_end(list);
  return count;
}

TEST(PrintFamily, StreamsTakeWideTextAsUtf8) {
  std::FILE* stream = std::tmpfile();
  ASSERT_NE(stream, nullptr);
  EXPECT_EQ(kpxfwprintf(stream, u"ä%.1f ", 0.5), 5);
  EXPECT_EQ(kpxfprintf_s(stream, "%s ", u"€"), 4);
  EXPECT_EQ(printList(stream, u"%s%d", u"ö", 7), 2);
  EXPECT_EQ(printList(stream, L"%s%hs", L"ü", "n"), 2);
  EXPECT_EQ(kpxfwprintf(stream, L"%s", L"ß"), 1);
  EXPECT_EQ(kpxfwprintf(stream, u"lost %d", u""), -1);
  EXPECT_EQ(kpxfprintf(nullptr, "x"), -1);
  std::rewind(stream);
  char bytes[64] = {};
  std::fread(bytes, 1, sizeof bytes, stream);
  EXPECT_STREQ(bytes,
               "\xC3\xA4"
               "0.5 \xE2\x82\xAC \xC3\xB6"
               "7\xC3\xBCn\xC3\x9F");
  std::fclose(stream);
}

}  // namespace
}  // namespace kpx
