#pragma once

#include "kpx/report/Export.h"

namespace kpx {

// GPS time counts weeks and seconds of the week from 06.01.1980, 00:00:00. No leap seconds are
// applied: the calendar dates here are GPS time too, which runs ahead of UTC. Weeks are counted
// through, without the receivers' rollover every 1,024 weeks.
//
// The functions answer 1, or 0 for input that is no such time, and then set all results to 0.
// Seconds are rounded to whole microseconds before they are split, so a second result is always
// below 60 and a time a hair before midnight becomes the next day.

/// The week (from 0) and second of the week (0 to below 604,800) of a date and time. `second` is
/// 0 to below 60. Dates from 06.01.1980 to the year 9999.
KPX_API int utlGPSDate2Time(int year, int month, int day, int hour, int minute, double second,
                            int& week, double& secondOfWeek) noexcept;

/// The date and time of a GPS week and second of the week, 0 to 604,800; the last is the first
/// second of the next week.
KPX_API int utlGPSWeekSec2Date(int week, double secondOfWeek, int& year, int& month, int& day,
                               int& hour, int& minute, double& second) noexcept;

/// The date and time of seconds since 06.01.1980. A double resolves 0.0000002 seconds here.
KPX_API int utlGPSSec2Date(double gpsSeconds, int& year, int& month, int& day, int& hour,
                           int& minute, double& second) noexcept;

}  // namespace kpx
