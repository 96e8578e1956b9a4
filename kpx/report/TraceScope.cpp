#include "kpx/report/TraceScope.h"

#include <atomic>

namespace kpx {
namespace {
constinit std::atomic<TraceSink> currentSink{nullptr};
}

TraceSink setTraceSink(TraceSink sink) noexcept {
  return currentSink.exchange(sink, std::memory_order_acq_rel);
}

TraceSink detail::traceSink() noexcept { return currentSink.load(std::memory_order_acquire); }

}  // namespace kpx
