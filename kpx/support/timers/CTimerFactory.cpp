#include "kpx/support/timers/CTimerFactory.h"

#include <algorithm>
#include <string>

#include "kpx/platform/Clock.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/platform/MessageBox.h"
#include "kpx/report/Error.h"
#include "kpx/support/Operations.h"
#include "kpx/support/timers/TimerReport.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/TimeValue.h"

namespace kpx {
namespace {

const CString hyphens = CString(u'-', 59) + u'\n';

CString now() {
  const TIME time = packTime(currentClock().localNow());
  return detail::dateText(time) + u' ' + detail::clockText(time);
}

CString onOneLine(CString name) {
  name.Replace(u'\r', u' ');
  name.Replace(u'\n', u' ');
  return name;
}

int writeReport(const CString& path, const CString& text, timerFileMode mode) {
  const std::string bytes = text.utf8();
  if (mode == timerFileMode::overwrite) return fileSystem().replaceFile(path, bytes) ? 1 : 0;
  std::unique_ptr<OutputFile> file;
  return fileSystem().openAppend(path, file) && file->write(bytes) && file->close();
}

}  // namespace

CTimerFactory& GetTimerFactory() noexcept {
  static CTimerFactory factory;
  return factory;
}

CHiFreqTimer* CTimerFactory::find(const CString& name) const noexcept {
  const auto found = byName_.find(name);
  return found != byName_.end() ? timers_[found->second].timer.get() : nullptr;
}

CHiFreqTimer* CTimerFactory::getTimer(const CString& name) noexcept {
  if (CHiFreqTimer* const found = find(name)) return found;
  return Guarded("CTimerFactory::getTimer"_support, static_cast<CHiFreqTimer*>(nullptr), [&] {
    const int number = static_cast<int>(timers_.size()) + 1;
    NamedTimer added{name, std::make_unique<CHiFreqTimer>(number)};
    timers_.push_back(std::move(added));
    try {
      byName_.emplace(name, timers_.size() - 1);
    } catch (...) {
      timers_.pop_back();
      throw;
    }
    return timers_.back().timer.get();
  });
}

CHiFreqTimer* CTimerFactory::getTimerChecked(const CString& name) {
  CHiFreqTimer* const found = find(name);
  if (found == nullptr) {
    Guarded("CTimerFactory::getTimerChecked"_support, [&] {
      showMessageBox({u"Timer not found: " + name, u"Error", MessageBoxStyle::error});
    });
  }
  return found;
}

int CTimerFactory::isTimerPresent(const CString& name) const noexcept {
  return find(name) != nullptr ? 1 : 0;
}

CString CTimerFactory::getTimerName(const CHiFreqTimer* timer) const {
  return Guarded("CTimerFactory::getTimerName"_support, CString(), [&] { return nameOf(timer); });
}

CString CTimerFactory::nameOf(const CHiFreqTimer* timer) const {
  const auto found = std::find_if(timers_.begin(), timers_.end(), [&](const NamedTimer& each) {
    return each.timer.get() == timer;
  });
  return found != timers_.end() ? found->name : CString();
}

void CTimerFactory::clearTimers() noexcept {
  timers_.clear();
  byName_.clear();
}

// --- reports --------------------------------------------------------------------------------

std::vector<const CTimerFactory::NamedTimer*> CTimerFactory::inOrder(timerSortType sort) const {
  struct Timed {
    double time;
    const NamedTimer* timer;
  };
  std::vector<Timed> all;
  all.reserve(timers_.size());
  for (const NamedTimer& each : timers_) {
    all.push_back({sort == timersort ? each.timer->netTime() : 0.0, &each});
  }
  std::stable_sort(all.begin(), all.end(),
                   [](const Timed& a, const Timed& b) { return a.time > b.time; });
  std::vector<const NamedTimer*> order;
  order.reserve(all.size());
  for (const Timed& each : all) order.push_back(each.timer);
  return order;
}

CString CTimerFactory::report(timerDestType kind, timerSortType sort) const {
  return Guarded("CTimerFactory::report"_support, CString(),
                 [&] { return reportText(kind, sort); });
}

CString CTimerFactory::sampleReport(timerDestType kind, const CHiFreqTimer& timer) const {
  return Guarded("CTimerFactory::sampleReport"_support, CString(),
                 [&] { return sampleText(kind, timer); });
}

// Files are made of the texts themselves: a report that could not be made must replace none.

CString CTimerFactory::reportText(timerDestType kind, timerSortType sort) const {
  const bool csv = kind == timerDestType::csv;
  CString text;
  if (csv) {
    text = u"Timer name,Time (ms),# Calls\n";
  } else {
    text = hyphens;
    text.AppendFormat(u"Timings at %s \n", now());
    text += hyphens;
  }
  if (timers_.empty()) text += u"No timers run\n";
  for (const NamedTimer* const each : inOrder(sort)) {
    const CString name = onOneLine(each->name);
    const double time = each->timer->getTotalTime();
    const int calls = each->timer->numberOfCalls();
    const bool running = each->timer->isRunning() != 0;
    if (csv) {
      text.AppendFormat(u"%s,%lf,%d%s\n", name, time, calls,
                        running ? u",*currently running*" : u"");
    } else {
      text.AppendFormat(u"%s took %s (called %s time%s)%s\n", name, timeToString(time),
                        numThou(calls), calls == 1 ? u"" : u"s",
                        running ? u" *currently running*" : u"");
    }
  }
  return text += u'\n';
}

CString CTimerFactory::sampleText(timerDestType kind, const CHiFreqTimer& timer) const {
  CString text;
  if (kind == timerDestType::text) {
    text = hyphens;
    text.AppendFormat(u"%s at %s \n", onOneLine(nameOf(&timer)), now());
    text += hyphens;
  }
  const int width = detail::longAsText(timer.getNumberSamples()).GetLength();
  int number = 0;
  for (const double sample : timer.getSamples()) {
    ++number;
    if (kind == timerDestType::csv) {
      text.AppendFormat(u"%d,%lf\n", number, sample);
    } else {
      text.AppendFormat(u"Sample %*s = %s\n", width, detail::longAsText(number),
                        timeToString(sample));
    }
  }
  if (kind == timerDestType::text) text += u'\n';
  return text;
}

int CTimerFactory::dump(const CString& path, timerSortType sort, timerFileMode mode) const {
  return Guarded("CTimerFactory::dump"_support, 0,
                 [&] { return writeReport(path, reportText(timerDestType::text, sort), mode); });
}

int CTimerFactory::dumpCsv(const CString& path, timerSortType sort, timerFileMode mode) const {
  return Guarded("CTimerFactory::dumpCsv"_support, 0,
                 [&] { return writeReport(path, reportText(timerDestType::csv, sort), mode); });
}

int CTimerFactory::dumpSamples(const CHiFreqTimer* timer, const CString& path,
                               timerFileMode mode) const {
  return Guarded("CTimerFactory::dumpSamples"_support, 0, [&] {
    if (timer == nullptr) return 0;
    return writeReport(path, sampleText(timerDestType::text, *timer), mode);
  });
}

int CTimerFactory::dumpSamples(const CString& name, const CString& path, timerFileMode mode) const {
  return dumpSamples(find(name), path, mode);
}

int CTimerFactory::dumpSamplesCsv(const CHiFreqTimer* timer, const CString& path,
                                  timerFileMode mode) const {
  return Guarded("CTimerFactory::dumpSamplesCsv"_support, 0, [&] {
    if (timer == nullptr) return 0;
    return writeReport(path, sampleText(timerDestType::csv, *timer), mode);
  });
}

int CTimerFactory::dumpSamplesCsv(const CString& name, const CString& path,
                                  timerFileMode mode) const {
  return dumpSamplesCsv(find(name), path, mode);
}

}  // namespace kpx
