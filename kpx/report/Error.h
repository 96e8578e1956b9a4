#pragma once

#include <cstdint>
#include <utility>

#include "kpx/report/Export.h"
#include "kpx/report/OperationNumber.h"

namespace kpx {

/// Receives the number of a guarded operation that failed. Must not throw.
using ErrorSink = void (*)(int number) noexcept;

/// Reports an unexpected failure by the number that identifies the failing operation.
///
/// Never throws and never waits longer than the registered sink does. A report that arises on a
/// thread while that thread is still reporting another one is dropped and counted.
KPX_API void kpxError(int number) noexcept;

/// Registers the function that shows and logs reports; nullptr restores the default, which only
/// counts. Returns the sink registered before, or nullptr for the default.
KPX_API ErrorSink setErrorSink(ErrorSink sink) noexcept;

/// How many reports all threads made since the library was loaded, and how many of those were
/// dropped because they arose inside another report. They do not tell whether an operation of the
/// caller's own has failed: see GuardWatch.
struct ErrorCounts {
  std::uint64_t reported = 0;
  std::uint64_t dropped = 0;
};
KPX_API ErrorCounts errorCounts() noexcept;

namespace detail {

/// Marks that this thread is reporting. Where it does so already, the new report has to be dropped,
/// which is counted.
class ReportScope {
 public:
  ReportScope() noexcept;
  ~ReportScope();
  ReportScope(const ReportScope&) = delete;
  ReportScope& operator=(const ReportScope&) = delete;

  bool isNested() const noexcept { return nested_; }

 private:
  bool nested_;
};

/// Reports what a guard has caught, and lets the watches of this thread know.
KPX_API void guardCaught(OperationNumber operation) noexcept;

}  // namespace detail

/// Runs `body` and returns its result. When it throws, whatever it throws, the failure is
/// reported under the number of the operation and `neutral` is returned:
///
///     return Guarded("CFGCol::serializeXML"_config, 0, [&] { ... });
template <class Result, class Body>
Result Guarded(OperationNumber operation, Result neutral, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    detail::guardCaught(operation);
    return neutral;
  }
}

/// The same for operations without a result.
template <class Body>
void Guarded(OperationNumber operation, Body&& body) {
  try {
    std::forward<Body>(body)();
  } catch (...) {
    detail::guardCaught(operation);
  }
}

/// Runs `body` and returns its result. What it throws is reported under the number of the
/// operation and goes on to the caller, who has to know of it: an object inside of another one
/// that is being written, say.
template <class Body>
decltype(auto) Reported(OperationNumber operation, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    detail::guardCaught(operation);
    throw;
  }
}

/// Tells whether a guard of this thread has caught anything since the watch began: for callers of
/// constructors and of operations without an answer, whose failure nobody tells them otherwise.
/// What other threads meet does not count. Watches may lie inside each other.
class KPX_API GuardWatch {
 public:
  GuardWatch() noexcept;
  bool hasCaught() const noexcept;
  /// Raises `GuardedException` if a guard has caught anything, for operations that cannot be whole
  /// without those inside of them.
  void passOn() const;

 private:
  std::uint64_t before_;
};

}  // namespace kpx
