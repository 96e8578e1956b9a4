#include "kpx/text/Scanner.h"

#include <gtest/gtest.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <string>

#include "kpx/text/PrintScan.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(Scanner, IntegersOfEveryBase) {
  const struct {
    const char* text;
    const char* format;
    int count;
    int value;
  } cases[] = {
      {" \t-42x", "%d", 1, -42},
      {"0x1F", "%i", 1, 31},
      {"017", "%i", 1, 15},
      {"0x1F", "%x", 1, 31},
      {"1f", "%X", 1, 31},
      {"0x", "%i", 1, 0},
      {"0xg", "%x", 1, 0},
      {"777", "%o", 1, 511},
      {"12345", "%3d", 1, 123},
      {"+5", "%u", 1, 5},
      {"-1", "%u", 1, -1},
      {"99999999999", "%d", 1, 2147483647},
      {"x", "%d", 0, 9},
      {"-", "%d", 0, 9},
      {"", "%d", -1, 9},
      {"   ", "%d", -1, 9},
      {"a 7", "a%d", 1, 7},
      {"a7", "b%d", 0, 9},
      {"5%7", "%*d%%%d", 1, 7},
      {"-9999999999", "%ld", 1, -2147483647 - 1},
      {"7", "%0d", 0, 9},
      {"7", "%n", 0, 9},
      {"7", "%", 0, 9},
      {"7", "%k", 0, 9},
      {"5 7", "%*d %d", 1, 7},
      {"5", "%*d%d", 0, 9},
      {"00000000000000000000000000000000000012", "%d", 1, 12},
  };
  for (const auto& [text, format, count, value] : cases) {
    int result = 9;
    EXPECT_EQ(kpxsscanf(text, format, &result), count) << text << ' ' << format;
    EXPECT_EQ(result, value) << text << ' ' << format;
    result = 9;
    const CString wideText = CString::fromUtf8(text);
    EXPECT_EQ(kpxswscanf(wideText, CString::fromUtf8(format), &result), count) << text;
    EXPECT_EQ(result, value) << text << ' ' << format;
  }
}

TEST(Scanner, TargetsAreFilledByTheirOwnType) {
  struct {
    std::int8_t byte = 0;
    std::int8_t guard = 77;
  } small;
  EXPECT_EQ(kpxsscanf("300", "%ld", &small.byte), 1);
  EXPECT_EQ(small.byte, 127);
  EXPECT_EQ(small.guard, 77);
  std::int64_t large = 0;
  EXPECT_EQ(kpxsscanf("-5000000000", "%d", &large), 1);
  EXPECT_EQ(large, -5000000000);
  std::uint64_t largest = 0;
  EXPECT_EQ(kpxsscanf("18446744073709551616", "%hu", &largest), 1);
  EXPECT_EQ(largest, std::numeric_limits<std::uint64_t>::max());
  float single = 0;
  double real = 0;
  long double longReal = 0;
  EXPECT_EQ(kpxsscanf("1.5 2.5 3.5", "%lf%f%f", &single, &real, &longReal), 3);
  EXPECT_EQ(single, 1.5f);
  EXPECT_EQ(real, 2.5);
  EXPECT_EQ(longReal, 3.5L);
  EXPECT_EQ(kpxsscanf("1 2", "%lf%d", &real, &real), 1) << "a real is no target of %d";
  EXPECT_EQ(real, 1);
  void* address = nullptr;
  EXPECT_EQ(kpxsscanf("00000000000000AB", "%p", &address), 1);
  EXPECT_EQ(reinterpret_cast<std::uintptr_t>(address), 0xABu);
}

TEST(Scanner, TextAndSets) {
  char word[16] = "";
  char rest[16] = "";
  EXPECT_EQ(kpxsscanf("  alpha-7, beta", "%[ ]%5s%[^,],%*[ ]%c", rest, word, word, rest), 4);
  EXPECT_STREQ(word, "-7");
  EXPECT_EQ(rest[0], 'b');
  EXPECT_EQ(rest[1], ' ') << "%c writes no end";
  EXPECT_EQ(kpxsscanf("a]-b", "%[]a-]", word), 1);
  EXPECT_STREQ(word, "a]-");
  EXPECT_EQ(kpxsscanf("c9x", "%[9-0c-a]", word), 1);
  EXPECT_STREQ(word, "c9");
  EXPECT_EQ(kpxsscanf("abc", "%[", word), 0) << "a set without end";
  EXPECT_EQ(kpxsscanf("abc", "%4c", word), 0) << "too few characters";
  EXPECT_EQ(kpxsscanf("x", "%[^x]", word), 0);

  char16_t wide[16] = u"";
  CString text;
  EXPECT_EQ(kpxswscanf(u"äöü€ next", u"%[ä-ü]%s%S", wide, &text, word), 3);
  EXPECT_EQ(std::u16string_view(wide), u"äöü");
  EXPECT_EQ(text, u"€");
  EXPECT_STREQ(word, "next");
  wchar_t platformWide[4] = L"###";
  EXPECT_EQ(kpxswscanf(L"äö 7\U0001F600", L"%[ä-ü]%hs", platformWide, &text), 2);
  EXPECT_EQ(std::wstring_view(platformWide), L"äö");
  EXPECT_EQ(text, L"7\U0001F600");
  EXPECT_EQ(kpxswscanf_s(L"abcd", u"%s", platformWide, 4), 0);
  EXPECT_EQ(kpxswscanf_s(u"abc", L"%s", platformWide, 4), 1);
  EXPECT_EQ(kpxsscanf("\xC3\xA4", "%s", &text), 1);
  EXPECT_EQ(text, u"ä");
}

TEST(Scanner, SizedBuffersAreNeverOverrun) {
  char buffer[5] = "####";
  int number = 0;
  EXPECT_EQ(kpxsscanf_s("abcd 5", "%s%d", buffer, sizeof buffer, &number), 2);
  EXPECT_STREQ(buffer, "abcd");
  EXPECT_EQ(number, 5);
  EXPECT_EQ(kpxsscanf_s("1 abcde 5", "%d%s%d", &number, buffer, 5, &number), 1);
  EXPECT_STREQ(buffer, "");
  EXPECT_EQ(number, 1);
  EXPECT_EQ(kpxsscanf_s("abcde", "%5c", buffer, 5u), 1);
  EXPECT_EQ(std::string_view(buffer, 5), "abcde");
  EXPECT_EQ(kpxsscanf_s("abc", "%[a-z]", buffer, 0), 0);
  EXPECT_EQ(kpxsscanf_s("abc", "%s", buffer, -1), 0);
  EXPECT_EQ(kpxsscanf_s("abc", "%s", buffer), 0) << "no size given";
  CString text;
  EXPECT_EQ(kpxsscanf_s("abc 7", "%s%d", &text, &number), 2) << "a CString needs no size";
  char16_t wide[4];
  EXPECT_EQ(kpxswscanf_s(u"\U0001F600a", u"%s", wide, 4), 1);
  EXPECT_EQ(kpxswscanf_s(u"\U0001F600ab", u"%s", wide, 4), 0);
}

struct RealCase {
  const char* text;
  double value;
  int used;  // characters read
};

TEST(RealParser, WholeGrammar) {
  const RealCase cases[] = {
      {"1.5", 1.5, 3},
      {" \t\n+1.5x", 1.5, 7},
      {"1,5", 1, 1},
      {".5", 0.5, 2},
      {"5.", 5, 2},
      {".", 0, 0},
      {"", 0, 0},
      {"  ", 0, 0},
      {"+-1", 0, 0},
      {"1e5", 1e5, 3},
      {"1e", 1, 1},
      {"1e+", 1, 1},
      {"2.e-002", 0.02, 7},
      {"0x1.8p1", 3, 7},
      {"0x.8", 0.5, 4},
      {"0X1P-1074", 5e-324, 9},
      {"0x1p-1075", 0, 9},
      {"0x1.0000000000001p-1075", 5e-324, 23},
      {"0x1.00000000000008", 1, 18},
      {"0x1.000000000000080001", 0x1.0000000000001p0, 22},
      {"0x", 0, 1},
      {"0x.p1", 0, 1},
      {"inf", infinity, 3},
      {"-INFINITY", -infinity, 9},
      {"infinit", infinity, 3},
      {"1e309", infinity, 5},
      {"-1e999999999999999999999", -infinity, 24},
      {"1e-400", 0, 6},
      {"1e-999999999999999999999", 0, 24},
      {"0e999999999999999999999", 0, 23},
      {"2.4703282292062327e-324", 0, 23},
      {"2.4703282292062328e-324", 5e-324, 23},
      {"1.7976931348623158e308", std::numeric_limits<double>::max(), 22},
      {"1.7976931348623159e308", infinity, 22},
      {"9007199254740993", 9007199254740992.0, 16},
      {"9007199254740993.00000000000000000000000000000000000000000000001", 9007199254740994.0, 64},
      {"0.00000000000000000000000000000000000000000001e44", 1, 49},
      {"123456789012345678901234567890", 123456789012345678901234567890.0, 30},
  };
  for (const auto& [text, value, used] : cases) {
    char* end = nullptr;
    EXPECT_EQ(kpxstrtod(text, &end), value) << text;
    EXPECT_EQ(end - text, used) << text;
    const CString wide = CString::fromUtf8(text);
    char16_t* wideEnd = nullptr;
    EXPECT_EQ(kpxwcstod(wide.GetString(), &wideEnd), value) << text;
    EXPECT_EQ(wideEnd - wide.GetString(), used) << text;
    EXPECT_EQ(kpxwtof(wide), value) << text;
    const std::wstring platformWide = wide.wide();
    wchar_t* platformEnd = nullptr;
    EXPECT_EQ(kpxwcstod(platformWide.c_str(), &platformEnd), value) << text;
    EXPECT_EQ(platformEnd - platformWide.c_str(), used) << text;
  }
  EXPECT_TRUE(std::isnan(kpxatof("nan(ind)")));
  EXPECT_TRUE(std::signbit(kpxatof("-0")));
  EXPECT_EQ(kpxatof(static_cast<const char*>(nullptr)), 0);
  EXPECT_EQ(kpxstrlen(static_cast<const wchar_t*>(nullptr)), 0u);
  EXPECT_EQ(kpxstrlen(L"abc"), 3u);
  EXPECT_EQ(kpxwtof(L" 1.5"), 1.5);
}

TEST(RealParser, SeventeenDigitsGiveTheSameBits) {
  std::mt19937_64 random(2);
  char text[128];
  for (int i = 0; i < 100000; ++i) {
    const double value = std::bit_cast<double>(random());
    if (!std::isfinite(value)) continue;
    for (const char* format : {"%.17g", "%.40e", "%a"}) {
      kpxsprintf(text, format, value);
      ASSERT_EQ(kpxatof(text), value) << text;
    }
  }
}

// A long tail of digits decides only at the very end; the cost must stay that of reading it.
TEST(RealParser, LongTextsDecideByTheirLastDigit) {
  std::string half = "9007199254740993." + std::string(2'000'000, '0');
  EXPECT_EQ(kpxatof(half), 9007199254740992.0);
  half += '1';
  EXPECT_EQ(kpxatof(half), 9007199254740994.0);
  EXPECT_EQ(kpxatof("0." + std::string(2'000'000, '0') + "1e2000001"), 1);
}

}  // namespace
}  // namespace kpx
