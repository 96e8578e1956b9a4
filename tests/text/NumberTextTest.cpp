#include "kpx/text/NumberText.h"

#include <gtest/gtest.h>

#include <bit>
#include <clocale>
#include <cmath>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>

#include "kpx/report/Error.h"
#include "kpx/text/PrintScan.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();

// Tells whether the run that is meant for a decimal comma really has one.
TEST(NumberText, GermanRunHasADecimalComma) {
  const char* wanted = std::getenv("LC_ALL");
  if (wanted == nullptr || std::string(wanted).rfind("de_DE", 0) != 0) {
    GTEST_SKIP() << "not the German run";
  }
  EXPECT_STREQ(std::localeconv()->decimal_point, ",") << "the locale de_DE.UTF-8 is missing";
}

TEST(NumberText, RoundsHalfAwayFromZeroWithAHairMore) {
  EXPECT_EQ(kpxRunde(2.675, 2), 2.68);
  EXPECT_EQ(kpxRunde(-2.5, 0), -3);
  EXPECT_EQ(kpxRunde(1234.5, -2), 1200);
  EXPECT_EQ(kpxRunde(-1250, -2), -1300);
  EXPECT_EQ(kpxRunde(0.4999998, 0), 0);
  EXPECT_EQ(kpxRunde(0.49999995, 0), 1) << "kept: the addend is above one half";
  EXPECT_FALSE(std::signbit(kpxRunde(-0.004, 2)));
  EXPECT_FALSE(std::signbit(kpxRunde(-0.0, 2)));
  for (const int decimals : {309, 400, std::numeric_limits<int>::max()}) {
    EXPECT_EQ(kpxRunde(-1.5, decimals), -1.5) << decimals;
  }
  for (const int decimals : {-309, -400, std::numeric_limits<int>::min()}) {
    EXPECT_EQ(kpxRunde(1e300, decimals), 0) << decimals;
  }
  EXPECT_EQ(kpxRunde(infinity, 3), infinity);
  EXPECT_TRUE(std::isnan(kpxRunde(notANumber, 3)));
}

TEST(NumberText, RealsAsText) {
  const struct {
    double value;
    int decimals;
    char16_t separator;
    const char16_t* text;
  } cases[] = {
      {1.5, 3, u',', u"1,500"},
      {1.5, 3, u'.', u"1.500"},
      {1.5, 3, u';', u"1.500"},
      {-1234567.8915, 3, u'.', u"-1234567.892"},
      {2.5, 0, u',', u"3"},
      {-0.0004, 3, u'.', u"0.000"},
      {0.05, 1, u'.', u"0.1"},
      {1e50, 1, u'.', u"100000000000000007629769841091887003294964970946560.0"},
      {1e60, 0, u'.', u"---"},
      {-1e60, 3, u',', u"---"},
      {notANumber, 0, u'.', u"---"},
      {-infinity, 5, u'.', u"---"},
      {infinity, -3, u'.', u"---"},
      {1234.5, -3, u'.', u"1000.000000"},
      {1250000, -5, u',', u"1300000,000000"},
      {0.1, -2, u'.', u"1.0000000000000001e-01"},
      {-1e100, -2, u',', u"-1,0000000000000000e+100"},
      {infinity, -2, u'.', u"inf"},
      {-infinity, -1, u'.', u"-inf"},
      {notANumber, -1, u'.', u"nan"},
      {0, -1, u'.', u"0."},
      {-0.0, -1, u'.', u"-0."},
      {1000, -1, u'.', u"1000."},
      {1000, -1, u',', u"1000,"},
      {0.02, -1, u'.', u"2.e-002"},
      {0.1, -1, u'.', u"0.1"},
      {0.099999999999999, -1, u'.', u"9.9999999999999e-002"},
      {0.0999999999999999999, -1, u'.', u"0.1"},
      {-2.5, -1, u'.', u"-2.5"},
      {1e20, -1, u'.', u"1.e+020"},
      {-1.25e300, -1, u',', u"-1,25e+300"},
      {5e-324, -1, u'.', u"4.94065645841247e-324"},
      {123456.789, -1, u'.', u"123456.789"},
      {99999999999999.0, -1, u'.', u"99999999999999."},
      {100000000000000.0, -1, u'.', u"100000000000000"},
      {123456789012345.0, -1, u'.', u"123456789012345"},
      {999999999999999.6, -1, u'.', u"1.e+015"},
      {0.1 + 0.2, -1, u'.', u"0.3"},
      {1.0 / 3, -1, u'.', u"0.333333333333333"},
  };
  CString kept(u"old text that is long enough to be seen behind a short number");
  for (const auto& [value, decimals, separator, text] : cases) {
    EXPECT_EQ(utlDoubleAsText(value, decimals, separator), text) << value << ' ' << decimals;
    detail::doubleAsTextInto(kept, value, decimals, separator);
    EXPECT_EQ(kept, text);
  }
}

int lastReport = 0;

TEST(NumberText, AbsurdDecimalsAreReportedOnce) {
  const ErrorSink previous = setErrorSink([](int number) noexcept { lastReport = number; });
  EXPECT_EQ(utlDoubleAsText(1.5, 100, u'.').GetLength(), 102);
  EXPECT_EQ(lastReport, 0);
  EXPECT_EQ(utlDoubleAsText(1.5, 2'000'000'000, u'.'), u"");
  EXPECT_EQ(lastReport, 910001);
  setErrorSink(previous);
}

TEST(NumberText, WithoutMemoryReportsAndGivesTheEmptyTextOrKeepsTheOld) {
  const ErrorSink previous = setErrorSink([](int number) noexcept { lastReport = number; });
  CString kept(u"old");
  for (const int decimals : {9, allDigits, scientificDigits}) {
    lastReport = 0;
    CString text(u"old");
    {
      const FailingAllocations all(0);
      text = utlDoubleAsText(-1.23456789012345e-7, decimals, u'.');
    }
    EXPECT_EQ(std::exchange(lastReport, 0), 910001) << decimals;
    bool passed = false;
    try {
      const FailingAllocations all(0);
      detail::doubleAsTextInto(kept, -1.23456789012345e-7, decimals, u'.');
    } catch (const std::bad_alloc&) {
      passed = true;
    }
    EXPECT_TRUE(passed) << decimals;
    EXPECT_EQ(text, u"") << decimals;
    EXPECT_EQ(kept, u"old") << decimals;
    EXPECT_EQ(lastReport, 910001) << decimals;
  }
  setErrorSink(previous);
}

/// Values of every size, and those on which rounding turns, with their neighbours.
double testValue(std::mt19937_64& random, int i) {
  const std::uint64_t bits = random();
  double value = 0;
  switch (i % 5) {
    case 0:
      value = std::bit_cast<double>(bits);
      break;
    case 1:
      value = static_cast<double>(bits >> (bits % 50)) / 1000;
      break;
    case 2:
      value = static_cast<double>(2 * (bits % 50'000'000) + 1) / 2000;
      break;
    case 3:
      value = static_cast<double>(bits >> 12) / static_cast<double>(1 + random() % 99999);
      break;
    default:
      value = std::ldexp(1.0, static_cast<int>(bits % 120) - 60);
      break;
  }
  const int neighbour = static_cast<int>(random() % 3) - 1;
  if (neighbour != 0) value = std::nextafter(value, neighbour * infinity);
  return (bits & 1) != 0 ? -value : value;
}

// The road through scaled integers must be the same text as rounding and then printing.
TEST(NumberText, FastRoadWritesWhatTheSlowRoadWrites) {
  std::mt19937_64 random(3);
  for (int i = 0; i < 1'000'000; ++i) {
    const double value = testValue(random, i);
    if (!(std::fabs(value) <= 1e50)) continue;
    const int decimals = i % 3 == 0 ? static_cast<int>(random() % 24) : 3;
    char slow[512];
    kpxsprintf(slow, "%.*f", decimals, kpxRunde(value, decimals));
    char16_t wide[512];
    const CString fast = utlDoubleAsText(value, decimals, u'.');
    std::copy(slow, slow + std::char_traits<char>::length(slow) + 1, wide);
    ASSERT_EQ(fast, wide) << decimals << ' ' << utlDoubleAsText(value, -2, u'.').utf8();
  }
}

TEST(NumberText, AllDigitsAreTheNearestFifteen) {
  std::mt19937_64 random(4);
  for (int i = 0; i < 300'000; ++i) {
    const double value = testValue(random, i);
    if (!std::isfinite(value)) continue;
    char16_t exact[64];
    kpxswprintf(exact, u"%.14e", value);
    const CString text = utlDoubleAsText(value, allDigits, u'.');
    ASSERT_EQ(kpxwtof(text), kpxwtof(exact)) << text.utf8();
    const int digits = text.GetLength() - (text.Find(u'e') >= 0 ? 5 : 0);
    ASSERT_LE(digits, 15 + 1 + 1 + 1) << text.utf8();
  }
}

TEST(NumberText, TextsAsReals) {
  const struct {
    const char16_t* text;
    double value;
  } cases[] = {
      {u"---", undefinedNumber},
      {u" ---", 0},
      {u"", 0},
      {u"abc", 0},
      {u"2,75", 2.75},
      {u"2.75", 2.75},
      {u"1,5,3", 1.5},
      {u"1.5,3", 1.5},
      {u"1,5.3", 1.5},
      {u" \t-,5", -0.5},
      {u"1.234,5", 1.234},
      {u"1,5e1", 15},
      {u"2.e-002", 0.02},
      {u"2,e-02", 0.02},
      {u"8888.88888", undefinedNumber},
      {u"8888.888880009", undefinedNumber},
      {u"8888.88888002", 8888.88888002},
      {u"0,1234567890123456789012345", 0.1234567890123456789012345},
      {u"0x1,8", 1.5},
  };
  for (const auto& [text, value] : cases) {
    EXPECT_EQ(utlTextAsDouble(text), value) << CString(text).utf8();
  }
  EXPECT_EQ(utlTextAsDouble(u"inf"), infinity);
}

TEST(NumberText, TextsWithASeparatorOfTheirOwn) {
  EXPECT_EQ(utlTextAsDoubleDecimal(u"---", u'-'), undefinedNumber);
  EXPECT_EQ(utlTextAsDoubleDecimal(u"1;5", u';'), 1.5);
  EXPECT_EQ(utlTextAsDoubleDecimal(u"1;5;3", u';'), 1.5);
  EXPECT_EQ(utlTextAsDoubleDecimal(u"1,5;3", u';'), 1.5);
  EXPECT_EQ(utlTextAsDoubleDecimal(u"1.5", u','), 1.5);
  EXPECT_EQ(utlTextAsDoubleDecimal(u"", u','), 0);
}

TEST(NumberText, IntegersStayIn32Bits) {
  const struct {
    const char16_t* text;
    std::int32_t value;
  } cases[] = {
      {u"42", 42},
      {u" \t-42,5", -42},
      {u"+7x", 7},
      {u"", 0},
      {u"- 5", 0},
      {u"abc", 0},
      {u"0x10", 0},
      {u"2147483648", 2147483647},
      {u"-2147483648", -2147483647 - 1},
      {u"-2147483649", -2147483647 - 1},
      {u"99999999999999999999999999999999999999999", 2147483647},
  };
  for (const auto& [text, value] : cases) {
    EXPECT_EQ(utlTextAsLong(text), value) << CString(text).utf8();
  }
  for (const std::int32_t value : {0, 7, 42, -1, 100, 2147483647, -2147483647 - 1}) {
    CString expected;
    expected.Format(u"%ld", value);
    EXPECT_EQ(utlLongAsText(value), expected);
    CString kept(u"old");
    detail::longAsTextInto(kept, value);
    EXPECT_EQ(kept, expected);
  }
}

}  // namespace
}  // namespace kpx
