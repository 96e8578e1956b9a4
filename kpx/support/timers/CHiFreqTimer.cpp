#include "kpx/support/timers/CHiFreqTimer.h"

#include <algorithm>
#include <numeric>

#include "kpx/platform/Clock.h"
#include "kpx/report/Error.h"
#include "kpx/support/Operations.h"

namespace kpx {
namespace {

constinit std::int64_t allPlainStarts = 0;
constinit std::int64_t allNestedStarts = 0;

// What one start costs, and a plain and a nested start of another timer meanwhile, in milliseconds.
constexpr double costOfStart = 0.0;
constexpr double costOfOtherPlainStart = 0.0;
constexpr double costOfOtherNestedStart = 0.0;
constexpr double nestedStartsWeigh = 1.4;

}  // namespace

void CHiFreqTimer::startTimer(bool nested) noexcept {
  if (running_) return;
  ++(nested ? nestedStarts_ : plainStarts_);
  ++(nested ? allNestedStarts : allPlainStarts);
  otherPlainStarts_ -= allPlainStarts;
  otherNestedStarts_ -= allNestedStarts;
  running_ = true;
  startCounter_ = currentClock().counter();
}

void CHiFreqTimer::stopTimer() noexcept {
  if (!running_) return;
  const std::uint64_t ticks = currentClock().counter() - startCounter_;
  running_ = false;
  otherPlainStarts_ += allPlainStarts;
  otherNestedStarts_ += allNestedStarts;
  Guarded("CHiFreqTimer::stopTimer"_support, [&] {
    constexpr double millisecondsPerSecond = 1000.0;
    samples_.push_back(static_cast<double>(ticks) * millisecondsPerSecond /
                       static_cast<double>(currentClock().counterFrequency()));
  });
}

double CHiFreqTimer::getTotalTime() const noexcept {
  return std::accumulate(samples_.begin(), samples_.end(), 0.0);
}

double CHiFreqTimer::getAverageTime() const noexcept {
  return samples_.empty() ? 0.0 : getTotalTime() / static_cast<double>(samples_.size());
}

double CHiFreqTimer::getMinimumTime() const noexcept {
  return samples_.empty() ? 0.0 : *std::min_element(samples_.begin(), samples_.end());
}

double CHiFreqTimer::getMaximumTime() const noexcept {
  return samples_.empty() ? 0.0 : *std::max_element(samples_.begin(), samples_.end());
}

double CHiFreqTimer::netTime() const noexcept {
  const double starts = nestedStarts_ * nestedStartsWeigh + plainStarts_;
  const double overhead = starts * costOfStart +
                          static_cast<double>(otherPlainStarts_) * costOfOtherPlainStart +
                          static_cast<double>(otherNestedStarts_) * costOfOtherNestedStart;
  return std::max(0.0, getTotalTime() - overhead);
}

}  // namespace kpx
