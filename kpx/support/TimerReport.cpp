#include "kpx/support/TimerReport.h"

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

bool readLine(std::u16string_view line, TimerLine& result) {
  if (line.ends_with(running)) {
    result.running = true;
    line.remove_suffix(running.size());
  }
  std::u16string_view calls;
  std::u16string_view time;
  if (!cutField(line, calls) || !cutField(line, time)) return false;
  if (calls.find_first_not_of(u"0123456789") != calls.npos ||
      time.find_first_not_of(u"0123456789.-") != time.npos) {
    return false;
  }
  result.name = line;
  result.milliseconds = textAsDouble(time);
  result.calls = textAsLong(calls);
  return true;
}

}  // namespace

CString timeToString(double milliseconds) {
  const double time = std::fabs(milliseconds);
  CString text(milliseconds < 0 ? u"-" : u"");
  if (time > 500) return text + utlDoubleAsText(time / 1000, 0, u'.') + u" seconds ";
  if (time > 1) return text + utlDoubleAsText(time, 0, u'.') + u" milli secs ";
  return text + utlDoubleAsText(time * 1000, 0, u'.') + u" micro secs ";
}

CString numThou(std::int32_t number) {
  CString text = utlLongAsText(number);
  if (number > 1000) text.Insert(text.GetLength() - 3, u'.');
  return text;
}

int readTimerCsv(const CString& text, std::vector<std::vector<TimerLine>>& reports) {
  reports.clear();
  std::u16string_view rest = text;
  int number = 0;
  while (!rest.empty()) {
    ++number;
    const std::size_t end = rest.find(u'\n');
    std::u16string_view line = rest.substr(0, end);
    rest = end == rest.npos ? std::u16string_view() : rest.substr(end + 1);
    if (line.ends_with(u'\r')) line.remove_suffix(1);
    if (line.empty()) continue;
    if (line == header) {
      reports.emplace_back();
      continue;
    }
    if (reports.empty()) return number;
    if (line == noTimers) continue;
    TimerLine timer;
    if (!readLine(line, timer)) return number;
    reports.back().push_back(std::move(timer));
  }
  return reports.empty() ? 1 : 0;
}

}  // namespace kpx
