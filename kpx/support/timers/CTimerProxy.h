#pragma once

#include "kpx/support/timers/CHiFreqTimer.h"

namespace kpx {

/// Runs a timer for the length of a scope:
///
///   const CTimerProxy scope(GetTimerFactory().getTimer(u"loading"));
class CTimerProxy {
 public:
  /// Starts the timer, which must outlive the proxy, unless it is running already. nullptr times
  /// nothing.
  explicit CTimerProxy(CHiFreqTimer* timer) noexcept : timer_(timer) {
    if (timer_ != nullptr) timer_->startTimer(false);
  }
  /// A copy is for the same run: whichever is destroyed first stops it.
  CTimerProxy(const CTimerProxy&) = default;
  CTimerProxy& operator=(const CTimerProxy&) = default;
  ~CTimerProxy() {
    if (timer_ != nullptr) timer_->stopTimer();
  }

 private:
  CHiFreqTimer* timer_;
};

}  // namespace kpx
