#include "kpx/text/GpsTime.h"

#include <cmath>
#include <cstdint>

#include "kpx/text/CKpxCalendar.h"

namespace kpx {
namespace {

constexpr std::int64_t microsecondsPerSecond = 1'000'000;
constexpr std::int64_t microsecondsPerDay = 86'400 * microsecondsPerSecond;
constexpr double secondsPerWeek = 604'800.0;
/// Past the year 9999; keeps the products below well inside 64 bits.
constexpr int endWeek = 420'000;

std::int64_t gpsDayZero() noexcept { return CKpxCalendar::dayCount(1980, 1, 6); }

std::int64_t microseconds(double seconds) noexcept {
  return std::llround(seconds * static_cast<double>(microsecondsPerSecond));
}

/// The date and time of microseconds that follow a count of days.
int splitTime(std::int64_t days, std::int64_t rest, int& year, int& month, int& day, int& hour,
              int& minute, double& second) noexcept {
  days += rest / microsecondsPerDay;
  rest %= microsecondsPerDay;
  if (!CKpxCalendar::dateOfDayCount(gpsDayZero() + days, year, month, day)) return 0;
  hour = static_cast<int>(rest / (3600 * microsecondsPerSecond));
  minute = static_cast<int>(rest / (60 * microsecondsPerSecond) % 60);
  second = static_cast<double>(rest % (60 * microsecondsPerSecond)) /
           static_cast<double>(microsecondsPerSecond);
  return 1;
}

}  // namespace

int utlGPSDate2Time(int year, int month, int day, int hour, int minute, double second, int& week,
                    double& secondOfWeek) noexcept {
  week = 0;
  secondOfWeek = 0.0;
  // The second is compared on its own, so that NaN fails.
  if (!CKpxCalendar::isValid({year, month, day, hour, minute, 0}) ||
      !(second >= 0.0 && second < 60.0)) {
    return 0;
  }
  std::int64_t days = CKpxCalendar::dayCount(year, month, day) - gpsDayZero();
  if (days < 0) return 0;
  const std::int64_t rest =
      (hour * 3600 + minute * 60) * microsecondsPerSecond + microseconds(second);
  days += rest / microsecondsPerDay;
  week = static_cast<int>(days / 7);
  secondOfWeek = static_cast<double>(days % 7 * microsecondsPerDay + rest % microsecondsPerDay) /
                 static_cast<double>(microsecondsPerSecond);
  return 1;
}

int utlGPSWeekSec2Date(int week, double secondOfWeek, int& year, int& month, int& day, int& hour,
                       int& minute, double& second) noexcept {
  year = month = day = hour = minute = 0;
  second = 0.0;
  if (week < 0 || week > endWeek || !(secondOfWeek >= 0.0 && secondOfWeek <= secondsPerWeek)) {
    return 0;
  }
  return splitTime(std::int64_t{week} * 7, microseconds(secondOfWeek), year, month, day, hour,
                   minute, second);
}

int utlGPSSec2Date(double gpsSeconds, int& year, int& month, int& day, int& hour, int& minute,
                   double& second) noexcept {
  year = month = day = hour = minute = 0;
  second = 0.0;
  if (!(gpsSeconds >= 0.0 && gpsSeconds < endWeek * secondsPerWeek)) return 0;
  return splitTime(0, microseconds(gpsSeconds), year, month, day, hour, minute, second);
}

}  // namespace kpx
