#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "kpx/text/CKpxCalendar.h"
#include "kpx/text/GpsTime.h"

namespace kpx {
namespace {

using Week = CKpxCalendar::Week;

TEST(Calendar, EveryDayOfTheCalendarIsReachedFromItsNumbers) {
  std::int64_t count = CKpxCalendar::dayCount(1, 1, 1);
  int weekday = 1;  // 01.01.0001 was a Monday
  for (int year = 1; year <= 9999; ++year) {
    int dayOfYear = 0;
    for (int month = 1; month <= 12; ++month) {
      for (int day = 1; day <= CKpxCalendar::daysInMonth(year, month); ++day, ++count) {
        ASSERT_EQ(CKpxCalendar::dayCount(year, month, day), count);
        ASSERT_EQ(CKpxCalendar::dayOfYear(year, month, day), ++dayOfYear);
        ASSERT_EQ(CKpxCalendar::weekday(year, month, day), weekday);
        int y, m, d;
        ASSERT_TRUE(CKpxCalendar::dateOfDayCount(count, y, m, d));
        ASSERT_TRUE(y == year && m == month && d == day) << year << '-' << month << '-' << day;
        const Week week = CKpxCalendar::week(year, month, day);
        ASSERT_TRUE(CKpxCalendar::dateOfWeek(week, weekday, y, m, d));
        ASSERT_TRUE(y == year && m == month && d == day) << year << '-' << month << '-' << day;
        weekday = weekday % 7 + 1;
      }
    }
    ASSERT_EQ(dayOfYear, CKpxCalendar::isLeapYear(year) ? 366 : 365);
  }
  int y, m, d;
  EXPECT_FALSE(CKpxCalendar::dateOfDayCount(count, y, m, d));
}

TEST(Calendar, IsoWeeksAtTheTurnOfTheYear) {
  const struct {
    int year, month, day, weekday;
    Week week;
  } cases[] = {
      {1977, 1, 1, 6, {1976, 53}},   {1978, 1, 1, 7, {1977, 52}},   {1978, 1, 2, 1, {1978, 1}},
      {1979, 12, 31, 1, {1980, 1}},  {1980, 12, 28, 7, {1980, 52}}, {1980, 12, 29, 1, {1981, 1}},
      {1981, 12, 31, 4, {1981, 53}}, {1982, 1, 3, 7, {1981, 53}},   {2005, 1, 1, 6, {2004, 53}},
      {2007, 12, 31, 1, {2008, 1}},  {2008, 9, 26, 5, {2008, 39}},  {2020, 12, 31, 4, {2020, 53}},
  };
  for (const auto& item : cases) {
    EXPECT_EQ(CKpxCalendar::week(item.year, item.month, item.day), item.week) << item.year;
    EXPECT_EQ(CKpxCalendar::weekday(item.year, item.month, item.day), item.weekday) << item.year;
  }
  int y, m, d;
  EXPECT_FALSE(CKpxCalendar::dateOfWeek({2021, 53}, 1, y, m, d));  // 2021 has 52 weeks
}

TEST(Calendar, PublishedJulianDays) {
  const struct {
    DateTime fields;
    double julianDay;
  } cases[] = {
      {{2000, 1, 1, 12, 0, 0}, 2451545.0},     {{1999, 1, 1, 0, 0, 0}, 2451179.5},
      {{1987, 1, 27, 0, 0, 0}, 2446822.5},     {{1988, 6, 19, 12, 0, 0}, 2447332.0},
      {{1957, 10, 4, 19, 26, 24}, 2436116.31}, {{1600, 12, 31, 0, 0, 0}, 2305812.5},
      {{1858, 11, 17, 0, 0, 0}, 2400000.5},
  };
  for (const auto& item : cases) {
    EXPECT_DOUBLE_EQ(CKpxCalendar::julianDay(item.fields), item.julianDay);
    DateTime back;
    EXPECT_TRUE(CKpxCalendar::dateOfJulianDay(item.julianDay, back));
    EXPECT_EQ(back, item.fields) << item.julianDay;
  }
  DateTime fields;
  EXPECT_TRUE(CKpxCalendar::dateOfJulianDay(2451544.5 - 1e-6, fields));
  EXPECT_EQ(fields, (DateTime{2000, 1, 1, 0, 0, 0}));
  for (const double day : {std::nan(""), 0.0, 5373484.5 - 1e-6, 1e300}) {
    EXPECT_FALSE(CKpxCalendar::dateOfJulianDay(day, fields)) << day;
    EXPECT_EQ(fields, DateTime()) << day;
  }
}

TEST(Calendar, DatesThatDoNotExistGiveTheNeutralResult) {
  const int dates[][3] = {{1900, 2, 29}, {2021, 2, 30}, {2021, 13, 1},
                          {2021, 0, 1},  {2021, 4, 31}, {0, 1, 1},
                          {10000, 1, 1}, {2021, 1, 0},  {std::numeric_limits<int>::min(), 1, 1}};
  for (const auto& [year, month, day] : dates) {
    EXPECT_EQ(CKpxCalendar::dayOfYear(year, month, day), 0);
    EXPECT_EQ(CKpxCalendar::weekday(year, month, day), 0);
    EXPECT_EQ(CKpxCalendar::week(year, month, day), Week());
    EXPECT_EQ(CKpxCalendar::julianDay({year, month, day, 0, 0, 0}), 0.0);
    int week;
    double second;
    EXPECT_EQ(utlGPSDate2Time(year, month, day, 0, 0, 0.0, week, second), 0);
  }
}

// --- GPS time ---------------------------------------------------------------------------------

struct GpsDate {
  int year, month, day, hour, minute;
  double second;

  friend bool operator==(const GpsDate&, const GpsDate&) = default;
};

int dateOfWeek(int week, double secondOfWeek, GpsDate& date) {
  return utlGPSWeekSec2Date(week, secondOfWeek, date.year, date.month, date.day, date.hour,
                            date.minute, date.second);
}

TEST(GpsTime, WeeksAndRollovers) {
  const struct {
    int week;
    double secondOfWeek;
    GpsDate date;
  } cases[] = {
      {0, 0.0, {1980, 1, 6, 0, 0, 0.0}},
      {1023, 604799.5, {1999, 8, 21, 23, 59, 59.5}},
      {1024, 0.0, {1999, 8, 22, 0, 0, 0.0}},
      {2048, 0.0, {2019, 4, 7, 0, 0, 0.0}},
      {2148, 462814.125, {2021, 3, 12, 8, 33, 34.125}},
  };
  for (const auto& item : cases) {
    GpsDate date;
    EXPECT_EQ(dateOfWeek(item.week, item.secondOfWeek, date), 1);
    EXPECT_EQ(date, item.date) << item.week;
    EXPECT_EQ(utlGPSSec2Date(item.week * 604800.0 + item.secondOfWeek, date.year, date.month,
                             date.day, date.hour, date.minute, date.second),
              1);
    EXPECT_EQ(date, item.date) << item.week;
    int week;
    double secondOfWeek;
    EXPECT_EQ(utlGPSDate2Time(item.date.year, item.date.month, item.date.day, item.date.hour,
                              item.date.minute, item.date.second, week, secondOfWeek),
              1);
    EXPECT_EQ(week, item.week);
    EXPECT_EQ(secondOfWeek, item.secondOfWeek);
  }
}

TEST(GpsTime, NeverShowsSixtySeconds) {
  GpsDate date;
  EXPECT_EQ(dateOfWeek(1023, 604799.99999999, date), 1);
  EXPECT_EQ(date, (GpsDate{1999, 8, 22, 0, 0, 0.0}));
  int week;
  double secondOfWeek;
  EXPECT_EQ(utlGPSDate2Time(1999, 8, 21, 23, 59, 59.99999999, week, secondOfWeek), 1);
  EXPECT_EQ(week, 1024);
  EXPECT_EQ(secondOfWeek, 0.0);
}

TEST(GpsTime, BadInputGivesZeros) {
  const struct {
    int week;
    double secondOfWeek;
  } cases[] = {{-1, 0.0},          {0, -0.001},       {0, 604800.001},   {0, std::nan("")},
               {418479, 604799.0}, {2147483647, 0.0}, {-2147483647, 0.0}};
  for (const auto& item : cases) {
    GpsDate date{1, 1, 1, 1, 1, 1.0};
    EXPECT_EQ(dateOfWeek(item.week, item.secondOfWeek, date), 0) << item.week;
    EXPECT_EQ(date, GpsDate()) << item.week;
  }
  int week;
  double secondOfWeek;
  EXPECT_EQ(utlGPSDate2Time(1980, 1, 5, 23, 59, 59.0, week, secondOfWeek), 0);
  EXPECT_EQ(utlGPSDate2Time(2016, 12, 31, 23, 59, 60.0, week, secondOfWeek), 0);
  EXPECT_EQ(utlGPSDate2Time(2016, 12, 31, 24, 0, 0.0, week, secondOfWeek), 0);
}

}  // namespace
}  // namespace kpx
