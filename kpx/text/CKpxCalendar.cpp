#include "kpx/text/CKpxCalendar.h"

#include <cmath>

namespace kpx {
namespace {

/// Days before each month of a common year.
constexpr int daysBefore[] = {0, 31, 59, 90, 120, 151, 181, 212, 243, 273, 304, 334, 365};

constexpr std::int64_t secondsPerDay = 86400;
/// Julian day of 01.01.1970, 00:00.
constexpr double julianDayZero = 2440587.5;

bool isYear(int year) noexcept {
  return year >= CKpxCalendar::firstYear && year <= CKpxCalendar::lastYear;
}

bool leap(int year) noexcept { return year % 4 == 0 && (year % 100 != 0 || year % 400 == 0); }

int daysBeforeMonth(int year, int month) noexcept {
  return daysBefore[month - 1] + (month > 2 && leap(year) ? 1 : 0);
}

/// Days from 01.01.0001 to 01.01. of the year.
constexpr std::int64_t daysBeforeYear(int year) noexcept {
  const std::int64_t before = year - 1;
  return before * 365 + before / 4 - before / 100 + before / 400;
}

constexpr std::int64_t epoch = daysBeforeYear(1970);
constexpr std::int64_t firstCount = -epoch;
constexpr std::int64_t endCount = daysBeforeYear(CKpxCalendar::lastYear + 1) - epoch;

/// 1 Monday to 7 Sunday of a valid day count; 01.01.0001 was a Monday.
int weekdayOfCount(std::int64_t count) noexcept {
  return static_cast<int>((count - firstCount) % 7) + 1;
}

/// Day count of the Monday of week 1: the week that holds the 4th of January.
std::int64_t firstMonday(int year) noexcept {
  const std::int64_t fourth = daysBeforeYear(year) - epoch + 3;
  return fourth - (weekdayOfCount(fourth) - 1);
}

}  // namespace

bool CKpxCalendar::isLeapYear(int year) noexcept { return isYear(year) && leap(year); }

int CKpxCalendar::daysInMonth(int year, int month) noexcept {
  if (!isYear(year) || month < 1 || month > 12) return 0;
  if (month == 2 && leap(year)) return 29;
  return daysBefore[month] - daysBefore[month - 1];
}

bool CKpxCalendar::isValid(int year, int month, int day) noexcept {
  return day >= 1 && day <= daysInMonth(year, month);
}

bool CKpxCalendar::isValid(const DateTime& fields) noexcept {
  return isValid(fields.year, fields.month, fields.day) && fields.hour >= 0 && fields.hour < 24 &&
         fields.minute >= 0 && fields.minute < 60 && fields.second >= 0 && fields.second < 60;
}

int CKpxCalendar::dayOfYear(int year, int month, int day) noexcept {
  return isValid(year, month, day) ? daysBeforeMonth(year, month) + day : 0;
}

bool CKpxCalendar::dateOfDayOfYear(int year, int dayOfYear, int& month, int& day) noexcept {
  month = 0;
  day = 0;
  if (!isYear(year) || dayOfYear < 1 || dayOfYear > (leap(year) ? 366 : 365)) return false;
  month = 12;
  while (daysBeforeMonth(year, month) >= dayOfYear) --month;
  day = dayOfYear - daysBeforeMonth(year, month);
  return true;
}

int CKpxCalendar::weekday(int year, int month, int day) noexcept {
  return isValid(year, month, day) ? weekdayOfCount(dayCount(year, month, day)) : 0;
}

CKpxCalendar::Week CKpxCalendar::week(int year, int month, int day) noexcept {
  if (!isValid(year, month, day)) return {};
  const std::int64_t count = dayCount(year, month, day);
  int weekYear = year;
  if (count < firstMonday(year)) {
    --weekYear;
  } else if (count >= firstMonday(year + 1)) {
    ++weekYear;
  }
  return {weekYear, static_cast<int>((count - firstMonday(weekYear)) / 7) + 1};
}

bool CKpxCalendar::dateOfWeek(const Week& week, int weekday, int& year, int& month,
                              int& day) noexcept {
  year = month = day = 0;
  if (!isYear(week.year) || week.week < 1 || week.week > 53 || weekday < 1 || weekday > 7) {
    return false;
  }
  const std::int64_t monday = firstMonday(week.year) + (week.week - 1) * 7;
  if (monday >= firstMonday(week.year + 1)) return false;
  return dateOfDayCount(monday + weekday - 1, year, month, day);
}

std::int64_t CKpxCalendar::dayCount(int year, int month, int day) noexcept {
  if (!isValid(year, month, day)) return 0;
  return daysBeforeYear(year) - epoch + daysBeforeMonth(year, month) + day - 1;
}

bool CKpxCalendar::dateOfDayCount(std::int64_t count, int& year, int& month, int& day) noexcept {
  year = month = day = 0;
  if (count < firstCount || count >= endCount) return false;
  // 400 years have 146,097 days, so this is the year or the one after it.
  const std::int64_t days = count - firstCount;
  int found = static_cast<int>(days * 400 / 146097) + 1;
  if (daysBeforeYear(found + 1) <= days) {
    ++found;
  } else if (daysBeforeYear(found) > days) {
    --found;
  }
  year = found;
  return dateOfDayOfYear(year, static_cast<int>(days - daysBeforeYear(year)) + 1, month, day);
}

double CKpxCalendar::julianDay(const DateTime& fields) noexcept {
  if (!isValid(fields)) return 0.0;
  const int seconds = fields.hour * 3600 + fields.minute * 60 + fields.second;
  return static_cast<double>(dayCount(fields.year, fields.month, fields.day)) + julianDayZero +
         seconds / double{secondsPerDay};
}

bool CKpxCalendar::dateOfJulianDay(double julianDay, DateTime& fields) noexcept {
  fields = {};
  const double days = julianDay - julianDayZero;
  // Written so that NaN fails it.
  if (!(days >= double{firstCount} - 1 && days < double{endCount})) return false;
  const double whole = std::floor(days);
  // Rounded before it is split, so that a minute never shows 60 seconds.
  const auto second = std::int64_t{std::llround((days - whole) * secondsPerDay)};
  const std::int64_t count = static_cast<std::int64_t>(whole) + second / secondsPerDay;
  if (!dateOfDayCount(count, fields.year, fields.month, fields.day)) return false;
  const int rest = static_cast<int>(second % secondsPerDay);
  fields.hour = rest / 3600;
  fields.minute = rest / 60 % 60;
  fields.second = rest % 60;
  return true;
}

}  // namespace kpx
