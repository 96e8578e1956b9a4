#include "kpx/report/TraceScope.h"

#include <atomic>

namespace kpx {
namespace {
constinit std::atomic<TraceSink> currentTraceSink{nullptr};
}

TraceSink setTraceSink(TraceSink sink) noexcept {
  return currentTraceSink.exchange(sink, std::memory_order_acq_rel);
}

TraceSink detail::traceSink() noexcept { return currentTraceSink.load(std::memory_order_acquire); }

}  // namespace kpx
