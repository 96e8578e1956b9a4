#include "kpx/text/TimeValue.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

#include "kpx/text/PrintScan.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

struct Case {
  double value;
  TIME time;
  const char16_t* text;
};

TEST(TimeValue, DoublesAreCutIntoFieldsAndTexts) {
  const Case cases[] = {
      {20210305083334.0, {20210305, 83334}, u"05.03.2021-08:33:34"},
      {20161231235960.0, {20161231, 235959}, u"31.12.2016-23:59:59"},  // leap second
      {0.0, {0, 0}, u"00.00.0000-00:00:00"},
      {99991231235959.0, {99991231, 235959}, u"31.12.9999-23:59:59"},
      {10101.0, {0, 10101}, u"00.00.0000-01:01:01"},
      {123456789235959.0, {123456789, 235959}, u"89.67.12345-23:59:59"},
      {2147483647000000.0, {2147483647, 0}, u"47.36.214748-00:00:00"},
      // Cut toward zero after the guard was added, so negative fields lose one.
      {-20210305083334.0, {-20210304, -83333}, u"-4.-3.-2021--8:-33:-33"},
  };
  for (const Case& item : cases) {
    EXPECT_EQ(detail::timeOfDouble(item.value), item.time) << item.value;
    EXPECT_EQ(detail::timeDoubleText(item.value), item.text);
  }
  for (const double value : {std::nan(""), infinity, -infinity, 2147483648000000.0, 1e300}) {
    EXPECT_EQ(detail::timeOfDouble(value), TIME()) << value;
    EXPECT_EQ(detail::timeOfDoubleEx(value), TIME()) << value;
  }
}

TEST(TimeValue, EverySecondSurvivesItsDoubleAndItsText) {
  std::mt19937 random(1);
  const auto below = [&](unsigned limit) { return static_cast<int>(random() % limit); };
  for (int i = 0; i < 20000; ++i) {
    const TIME time =
        packTime({below(9999) + 1, below(12) + 1, below(31) + 1, below(24), below(60), below(60)});
    const double value = detail::doubleOfTime(time);
    ASSERT_EQ(detail::timeOfDouble(value), time);
    ASSERT_EQ(detail::timeDoubleOf(detail::timeDoubleText(value)), value);
    // The year 3355 is the last one whose tenths all survive.
    const TIME tenths{time.date % 33550000 + 10000, time.time * 10 + below(10)};
    ASSERT_EQ(detail::timeOfDoubleEx(detail::doubleOfTimeEx(tenths)), tenths);
  }
}

TEST(TimeValue, WritesWhatTheGeneralFormatterWrites) {
  std::mt19937_64 random(2);
  std::u16string appended;
  for (int i = 0; i < 20000; ++i) {
    // All magnitudes, both signs.
    const double value = std::ldexp(static_cast<double>(static_cast<std::int64_t>(random())),
                                    -static_cast<int>(random() % 64));
    TIME time = detail::timeOfDouble(value);
    CString expected;
    expected.Format(u"%02d.%02d.%04d-%02d:%02d:%02d", time.date % 100, (time.date / 100) % 100,
                    time.date / 10000, time.time / 10000, (time.time / 100) % 100, time.time % 100);
    ASSERT_EQ(detail::timeDoubleText(value), expected);
    ASSERT_EQ(detail::dateText(time) + u"-" + detail::clockText(time), expected);
    appended.clear();
    detail::appendTimeDoubleText(appended, value);
    ASSERT_EQ(CString(appended), expected);
  }
  const TIME smallest{std::numeric_limits<std::int32_t>::min(), 0};
  EXPECT_EQ(detail::dateText(smallest), u"-48.-36.-214748");
}

// --- reading, against the general scanner -----------------------------------------------------

std::int64_t packed(std::int64_t high, std::int64_t middle, std::int64_t low) {
  return (high * 100 + middle) * 100 + low;
}

std::int64_t carried(std::int64_t hour, std::int64_t minute, std::int64_t second) {
  if (second >= 60) second -= 60, ++minute;
  if (minute >= 60) minute -= 60, ++hour;
  if (hour >= 24) hour -= 24;
  return packed(hour, minute, second);
}

double doubleIfFits(std::int64_t date, std::int64_t time) {
  const auto fits = [](std::int64_t field) { return field == static_cast<std::int32_t>(field); };
  return fits(date) && fits(time) ? static_cast<double>(date) * 1e6 + static_cast<double>(time)
                                  : 0.0;
}

double scanned(const CString& text, bool withClock) {
  std::int32_t a = 0, b = 0, c = 0, hour = 0, minute = 0, second = 0;
  if (text.Find(u'-') != text.ReverseFind(u'-')) {
    kpxswscanf(text, u"%ld-%ld-%ld", &a, &b, &c);
    return doubleIfFits(packed(a, b, c), 0);
  }
  if (withClock) {
    kpxswscanf(text, u"%ld.%ld.%ld-%ld:%ld:%ld", &a, &b, &c, &hour, &minute, &second);
  } else {
    kpxswscanf(text, u"%ld.%ld.%ld", &a, &b, &c);
  }
  return doubleIfFits(packed(c, b, a), carried(hour, minute, second));
}

double scannedClock(const CString& text) {
  std::int32_t hour = 0, minute = 0, second = 0;
  kpxswscanf(text, u"%ld:%ld:%ld", &hour, &minute, &second);
  return doubleIfFits(0, carried(hour, minute, second));
}

TEST(TimeValue, ReadsWhatTheGeneralScannerReads) {
  constexpr std::u16string_view units = u"0123456789.-:+ \t\nx\u0660";
  const char16_t* const forms[] = {u"05.03.2021-08:33:34", u"2021-03-05", u"31.12.1999-23:59:60",
                                   u"-1.-2.-3-4:5:6",      u"08:33:34",   u"99999999999.1.1"};
  std::mt19937 random(3);
  for (int i = 0; i < 60000; ++i) {
    CString text = forms[random() % std::size(forms)];
    for (unsigned change = random() % 5; change > 0; --change) {
      const int place = static_cast<int>(random() % static_cast<unsigned>(text.GetLength() + 1));
      if (random() % 2) text.Delete(place);
      if (random() % 2) text.Insert(place, units[random() % units.size()]);
    }
    ASSERT_EQ(detail::timeDoubleOf(text), scanned(text, true)) << testing::PrintToString(text);
    ASSERT_EQ(detail::doubleOfTime(detail::dateOfText(text)), scanned(text, false))
        << testing::PrintToString(text);
    ASSERT_EQ(detail::doubleOfTime(detail::clockOfText(text)), scannedClock(text))
        << testing::PrintToString(text);
  }
}

TEST(TimeValue, ClockCarriesWithoutReachingTheDate) {
  EXPECT_EQ(detail::clockOfText(u"23:59:60"), TIME());
  EXPECT_EQ(detail::timeDoubleOf(u"31.12.2016-23:59:60"), 20161231000000.0);
  EXPECT_EQ(detail::timeDoubleOf(u"2021-03-05"), 20210305000000.0);
  EXPECT_EQ(detail::dateOfText(u""), TIME());
}

// --- office dates ---------------------------------------------------------------------------

TEST(TimeValue, OfficeDatesCountForwardFromMidnightOnNegativeDaysToo) {
  const struct {
    double days;
    double time;
  } cases[] = {
      {0.0, 18991230000000.0},     {0.25, 18991230060000.0},     {-1.25, 18991229060000.0},
      {36526.5, 20000101120000.0}, {-657434.0, 1000101000000.0}, {2958465.0, 99991231000000.0},
  };
  for (const auto& item : cases) {
    EXPECT_EQ(detail::timeDoubleOfOleDate(item.days), item.time);
    EXPECT_EQ(detail::oleDateOfTimeDouble(item.time), item.days);
  }
  // A hair before midnight is the next day, not 23:59:60.
  EXPECT_EQ(detail::timeDoubleOfOleDate(36525.999999), 20000101000000.0);
  for (const double days : {std::nan(""), -657435.0, 2958465.999999, infinity}) {
    EXPECT_EQ(detail::timeDoubleOfOleDate(days), 0.0) << days;
  }
  for (const double time : {20210229000000.0, 20210305240000.0, 991231000000.0}) {
    EXPECT_EQ(detail::oleDateOfTimeDouble(time), 0.0) << time;
  }
}

}  // namespace
}  // namespace kpx
