#pragma once

#include <cstdint>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// A duration in milliseconds as the timer reports show it, with a blank at the end: above 500
/// in whole seconds (so 600 is "1 seconds "), above 1 in milliseconds, else in microseconds.
KPX_API CString timeToString(double milliseconds);

/// A number with one "." three digits from its end when it is greater than 1000, and only one:
/// 1234567 is "1234.567". Kept: that is how the reports have always looked.
KPX_API CString numThou(std::int32_t number);

/// A line of a timer report in CSV.
struct TimerLine {
  CString name;
  double milliseconds = 0.0;
  std::int32_t calls = 0;
  bool running = false;
};

/// Reads the reports that `CTimerFactory::dumpCsv` wrote; a file to which reports were appended
/// has several. Names may hold commas. Answers the numbers of the lines, from 1, that are none of a
/// report, such as one that was torn when a program ended; the others are read all the same. A text
/// without any report has at least line 1 among them.
KPX_API std::vector<int> readTimerCsv(const CString& text,
                                      std::vector<std::vector<TimerLine>>& reports);

}  // namespace kpx
