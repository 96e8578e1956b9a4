#include "kpx/platform/Clock.h"

#include <atomic>

namespace kpx {
namespace {

constinit std::atomic<Clock*> installedClock{nullptr};

}  // namespace

Clock::~Clock() = default;

Clock& currentClock() noexcept {
  Clock* const other = installedClock.load(std::memory_order_acquire);
  return other ? *other : systemClock();
}

Clock* setClock(Clock* other) noexcept {
  return installedClock.exchange(other, std::memory_order_acq_rel);
}

}  // namespace kpx
