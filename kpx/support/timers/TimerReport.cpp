#include "kpx/support/timers/TimerReport.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include "kpx/text/NumberText.h"
#include "kpx/text/PrintScan.h"

namespace kpx {
namespace {

constexpr std::u16string_view header = u"Timer name,Time (ms),# Calls";
constexpr std::u16string_view noTimers = u"No timers run";
constexpr std::u16string_view running = u",*currently running*";

/// Cuts the part behind the last comma off.
bool cutField(std::u16string_view& line, std::u16string_view& field) {
  const std::size_t comma = line.rfind(u',');
  if (comma == line.npos || comma + 1 == line.size()) return false;
  field = line.substr(comma + 1);
  line = line.substr(0, comma);
  return true;
}

bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }

/// Digits, a point and digits, as "%lf" writes a time, with a minus in front or not.
bool isTime(std::u16string_view text) {
  if (text.starts_with(u'-')) text.remove_prefix(1);
  const std::size_t point = std::min(text.find(u'.'), text.size());
  const std::u16string_view fraction = text.substr(std::min(point + 1, text.size()));
  return point > 0 && !fraction.empty() && std::ranges::all_of(text.substr(0, point), isDigit) &&
         std::ranges::all_of(fraction, isDigit);
}

/// A number of calls, of 32 bits.
bool isCount(std::u16string_view text) {
  return std::ranges::all_of(text, isDigit) && utlLongAsText(detail::textAsLong(text)) == text;
}

bool readLine(std::u16string_view line, TimerLine& result) {
  if (line.ends_with(running)) {
    result.running = true;
    line.remove_suffix(running.size());
  }
  std::u16string_view calls;
  std::u16string_view time;
  if (!cutField(line, calls) || !cutField(line, time)) return false;
  if (!isCount(calls) || !isTime(time)) return false;
  result.name = line;
  result.milliseconds = detail::textAsDouble(time);
  result.calls = detail::textAsLong(calls);
  return true;
}

}  // namespace

CString timeToString(double milliseconds) {
  const double time = std::fabs(milliseconds);
  CString text(milliseconds < 0 ? u"-" : u"");
  if (time > 500) return text + detail::doubleAsText(time / 1000, 0, u'.') + u" seconds ";
  if (time > 1) return text + detail::doubleAsText(time, 0, u'.') + u" milli secs ";
  return text + detail::doubleAsText(time * 1000, 0, u'.') + u" micro secs ";
}

CString numThou(std::int32_t number) {
  CString text = detail::longAsText(number);
  if (number > 1000) text.Insert(text.GetLength() - 3, u'.');
  return text;
}

std::vector<int> readTimerCsv(const CString& text, std::vector<std::vector<TimerLine>>& reports) {
  reports.clear();
  std::vector<int> strange;
  std::u16string_view rest = text;
  int number = 0;
  bool isInReport = false;
  while (!rest.empty()) {
    ++number;
    const std::size_t end = rest.find(u'\n');
    std::u16string_view line = rest.substr(0, end);
    rest = end == rest.npos ? std::u16string_view() : rest.substr(end + 1);
    if (line.ends_with(u'\r')) line.remove_suffix(1);
    if (line.empty()) {
      isInReport = false;  // a report ends with an empty line
      continue;
    }
    TimerLine timer;
    if (line.ends_with(header)) {
      // A report that was appended to a torn one begins in the middle of a line.
      if (line != header) strange.push_back(number);
      reports.emplace_back();
      isInReport = true;
    } else if (!isInReport || (line != noTimers && !readLine(line, timer))) {
      strange.push_back(number);
    } else if (line != noTimers) {
      reports.back().push_back(std::move(timer));
    }
  }
  if (reports.empty() && strange.empty()) strange.push_back(1);
  return strange;
}

}  // namespace kpx
