#pragma once

#include <cstdint>

#include "kpx/report/Export.h"
#include "kpx/text/TimeValue.h"

namespace kpx {

/// Calendar computations in the Gregorian calendar, which is also carried back to the time before
/// its introduction in 1582. Years 1 to 9999. A date that does not exist (30.02., month 13, year
/// 0) gives the neutral result that each function names; nothing is reported.
class KPX_API CKpxCalendar {
 public:
  static constexpr int firstYear = 1;
  static constexpr int lastYear = 9999;

  static bool isLeapYear(int year) noexcept;
  /// 28 to 31; 0 for a month or year that does not exist.
  static int daysInMonth(int year, int month) noexcept;
  static bool isValid(int year, int month, int day) noexcept;
  /// A date that exists and a time from 00:00:00 to 23:59:59.
  static bool isValid(const DateTime& fields) noexcept;

  /// Number of the day in its year, 1 to 366; 0 for a bad date.
  static int dayOfYear(int year, int month, int day) noexcept;
  /// Month and day of the day with that number in the year. False, with both 0, when the year has
  /// no such day.
  static bool dateOfDayOfYear(int year, int dayOfYear, int& month, int& day) noexcept;

  /// 1 Monday to 7 Sunday; 0 for a bad date.
  static int weekday(int year, int month, int day) noexcept;

  /// Week number by ISO 8601: weeks begin on Monday, and week 1 is the one with the year's first
  /// Thursday.
  struct Week {
    int year = 0;  // the year the week counts for; up to three days differ from the date's year
    int week = 0;  // 1 to 53

    friend bool operator==(const Week&, const Week&) = default;
  };
  /// Both 0 for a bad date.
  static Week week(int year, int month, int day) noexcept;
  /// The date of a weekday (1 Monday to 7 Sunday) in a week. False, with all 0, when that year
  /// has no such week or the date lies outside the calendar.
  static bool dateOfWeek(const Week& week, int weekday, int& year, int& month, int& day) noexcept;

  /// Days from 01.01.1970 to the date, negative before; 0 for a bad date.
  static std::int64_t dayCount(int year, int month, int day) noexcept;
  /// The date of such a count. False, with all 0, outside the calendar.
  static bool dateOfDayCount(std::int64_t count, int& year, int& month, int& day) noexcept;

  /// Julian day: days and their fraction since noon of 24.11.4714 BC, so a Julian day begins at
  /// noon: 01.01.2000, 12:00 is 2451545.0, and midnight before it 2451544.5. 0.0 for a bad date
  /// or time.
  static double julianDay(const DateTime& fields) noexcept;
  /// The date and time of a Julian day, rounded to the nearest second (a double resolves 0.00004
  /// seconds). False, with all fields 0, for NaN and outside the calendar.
  static bool dateOfJulianDay(double julianDay, DateTime& fields) noexcept;
};

}  // namespace kpx
