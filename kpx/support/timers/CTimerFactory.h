#pragma once

#include <cstddef>
#include <memory>
#include <unordered_map>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/support/timers/CHiFreqTimer.h"
#include "kpx/support/timers/CTimerProxy.h"
#include "kpx/text/CString.h"

namespace kpx {

/// The order of a report: longest first, or as the timers were created. Timers of the same time
/// stand in the order of creation.
enum timerSortType { timersort, ordersort };

/// Whether a report replaces a file or is added at its end.
enum class timerFileMode { overwrite, append };

/// The two kinds of reports.
enum class timerDestType { text, csv };

/// All timers, by their names, and the reports of them. For the main thread.
///
/// Report files are UTF-8 with line feeds. Those that report answer 1 when the file was written
/// and 0 when not; a file that should have been replaced is then as it was. Line breaks in names
/// are shown as blanks, so that each timer has one line.
class CTimerFactory {
 public:
  CTimerFactory() = default;
  CTimerFactory(const CTimerFactory&) = delete;
  CTimerFactory& operator=(const CTimerFactory&) = delete;

  /// For callers that hold the factory like a pointer: `GetTimerFactory()->getTimer(...)`.
  CTimerFactory* operator->() noexcept { return this; }

  /// The timer of a name, created when it is missing. It stays with the factory until
  /// `clearTimers`. nullptr only without memory, reported as 910122.
  KPX_API CHiFreqTimer* getTimer(const CString& name) noexcept;
  /// The timer of a name; when it is missing, a message box says so and the answer is nullptr.
  /// Error number 910130.
  KPX_API CHiFreqTimer* getTimerChecked(const CString& name);
  /// 1 or 0.
  KPX_API int isTimerPresent(const CString& name) const noexcept;
  /// The name of a timer; empty for one that is not of this factory. Error number 910131.
  KPX_API CString getTimerName(const CHiFreqTimer* timer) const;
  /// Removes all timers. Pointers to them are no longer valid, those in proxies included.
  KPX_API void clearTimers() noexcept;

  /// A report of all timers. Error numbers 910123 and 910124.
  KPX_API int dump(const CString& path, timerSortType sort = timersort,
                   timerFileMode mode = timerFileMode::overwrite) const;
  KPX_API int dumpCsv(const CString& path, timerSortType sort = timersort,
                      timerFileMode mode = timerFileMode::overwrite) const;
  /// A report of the completed runs of one timer; 0 without one. Error numbers 910125 and 910126.
  KPX_API int dumpSamples(const CHiFreqTimer* timer, const CString& path,
                          timerFileMode mode = timerFileMode::overwrite) const;
  KPX_API int dumpSamples(const CString& name, const CString& path,
                          timerFileMode mode = timerFileMode::overwrite) const;
  KPX_API int dumpSamplesCsv(const CHiFreqTimer* timer, const CString& path,
                             timerFileMode mode = timerFileMode::overwrite) const;
  KPX_API int dumpSamplesCsv(const CString& name, const CString& path,
                             timerFileMode mode = timerFileMode::overwrite) const;

  /// The same as texts; empty after a failure. Error numbers 910132 and 910133.
  KPX_API CString report(timerDestType kind, timerSortType sort) const;
  KPX_API CString sampleReport(timerDestType kind, const CHiFreqTimer& timer) const;

 private:
  struct NamedTimer {
    CString name;
    std::unique_ptr<CHiFreqTimer> timer;
  };

  CHiFreqTimer* find(const CString& name) const noexcept;
  CString nameOf(const CHiFreqTimer* timer) const;
  CString reportText(timerDestType kind, timerSortType sort) const;
  CString sampleText(timerDestType kind, const CHiFreqTimer& timer) const;
  std::vector<const NamedTimer*> inOrder(timerSortType sort) const;

  std::vector<NamedTimer> timers_;  // in order of creation
  std::unordered_map<CString, std::size_t> byName_;
};

/// The factory of the process.
KPX_API CTimerFactory& GetTimerFactory() noexcept;

}  // namespace kpx
