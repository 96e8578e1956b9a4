#include "kpx/report/Error.h"

#include <atomic>

#include "kpx/report/Exceptions.h"

/// What registers the reporter when a program or the library is loaded. Of a static library the
/// linker takes only files in which something is needed, and in that one nothing would be: without
/// this, programs would lose their error logs unawares. A build of single layers has no reporter
/// and defines it as nullptr.
extern "C" const void* const kpxLoadOrder;

namespace kpx::detail {
extern const void* const* const loadOrder;
const void* const* const loadOrder = &kpxLoadOrder;
}  // namespace kpx::detail

namespace kpx {
namespace {

void ignoreReport(int) noexcept {}

constinit std::atomic<ErrorSink> currentSink{&ignoreReport};
constinit std::atomic<std::uint64_t> reportedCount{0};
constinit std::atomic<std::uint64_t> droppedCount{0};
constinit thread_local bool reporting = false;
constinit thread_local std::uint64_t caughtCount = 0;

}  // namespace

detail::ReportScope::ReportScope() noexcept : nested_(reporting) {
  reportedCount.fetch_add(1, std::memory_order_relaxed);
  if (nested_) droppedCount.fetch_add(1, std::memory_order_relaxed);
  reporting = true;
}

detail::ReportScope::~ReportScope() { reporting = nested_; }

void kpxError(int number) noexcept {
  const detail::ReportScope scope;
  if (!scope.isNested()) currentSink.load(std::memory_order_acquire)(number);
}

void detail::guardCaught(OperationNumber operation) noexcept {
  // What a report itself meets is nothing that an operation has failed with.
  if (!reporting) ++caughtCount;
  kpxError(operation.value());
}

GuardWatch::GuardWatch() noexcept : before_(caughtCount) {}

bool GuardWatch::hasCaught() const noexcept { return caughtCount != before_; }

void GuardWatch::passOn() const {
  if (hasCaught()) throw GuardedException();
}

ErrorSink setErrorSink(ErrorSink sink) noexcept {
  const ErrorSink previous =
      currentSink.exchange(sink ? sink : &ignoreReport, std::memory_order_acq_rel);
  return previous == &ignoreReport ? nullptr : previous;
}

ErrorCounts errorCounts() noexcept {
  return {reportedCount.load(std::memory_order_relaxed),
          droppedCount.load(std::memory_order_relaxed)};
}

}  // namespace kpx
