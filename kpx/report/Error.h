#pragma once

#include <cstdint>
#include <utility>

#include "kpx/report/ErrorTable.h"
#include "kpx/report/Export.h"

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

/// How many reports were made since the library was loaded, and how many of those were dropped
/// because they arose inside another report.
struct ErrorCounts {
  std::uint64_t reported = 0;
  std::uint64_t dropped = 0;
};
KPX_API ErrorCounts errorCounts() noexcept;

namespace detail {

/// Marks that this thread is reporting. Where it does so already, the new report has to be dropped,
/// which is counted.
class KPX_API ReportScope {
 public:
  ReportScope() noexcept;
  ~ReportScope();
  ReportScope(const ReportScope&) = delete;
  ReportScope& operator=(const ReportScope&) = delete;

  bool isNested() const noexcept { return nested_; }

 private:
  bool nested_;
};

}  // namespace detail

/// Runs `body` and returns its result. When it throws, whatever it throws, the failure is
/// reported under the number of the operation and `neutral` is returned:
///
///     return Guarded("CFGCol::serializeXML", 0, [&] { ... });
template <class Result, class Body>
Result Guarded(OperationNumber operation, Result neutral, Body&& body) {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    kpxError(operation.value());
    return neutral;
  }
}

/// The same for operations without a result.
template <class Body>
void Guarded(OperationNumber operation, Body&& body) {
  try {
    std::forward<Body>(body)();
  } catch (...) {
    kpxError(operation.value());
  }
}

}  // namespace kpx
