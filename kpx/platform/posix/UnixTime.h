#pragma once

#include <cstdint>

#include "kpx/text/CKpxCalendar.h"
#include "kpx/text/TimeValue.h"

namespace kpx::detail {

inline constexpr std::int64_t secondsPerDay = 86400;

/// Date and time in UTC of the seconds since 01.01.1970; false outside the years 1 to 9999.
inline bool dateTimeOfUnixTime(std::int64_t seconds, DateTime& fields) noexcept {
  std::int64_t day = seconds / secondsPerDay;
  std::int64_t rest = seconds % secondsPerDay;
  if (rest < 0) {
    rest += secondsPerDay;
    --day;
  }
  if (!CKpxCalendar::dateOfDayCount(day, fields.year, fields.month, fields.day)) return false;
  fields.hour = static_cast<int>(rest / 3600);
  fields.minute = static_cast<int>(rest / 60 % 60);
  fields.second = static_cast<int>(rest % 60);
  return true;
}

}  // namespace kpx::detail
