#pragma once

#include <cstdint>
#include <vector>

#include "kpx/report/Export.h"

namespace kpx {

/// A stopwatch that collects the durations of its runs, in milliseconds. For the main thread.
///
/// Timers belong to the factory (`CTimerFactory`), which knows their names.
class KPX_API CHiFreqTimer {
 public:
  explicit CHiFreqTimer(int number) noexcept : number_(number) {}

  /// Starts a run and counts it as a nested one (inside the run of another timer) or a plain one.
  /// Does nothing while it is running.
  void startTimer(bool nested = false) noexcept;
  /// Ends the run and keeps its duration. Does nothing unless it is running. A failure (no memory)
  /// is reported as 910121, and the run's duration is lost.
  void stopTimer() noexcept;
  /// 1 or 0.
  int isRunning() const noexcept { return running_ ? 1 : 0; }

  /// Over the completed runs, in milliseconds; 0 when there are none.
  double getTotalTime() const noexcept;
  double getAverageTime() const noexcept;
  double getMinimumTime() const noexcept;
  double getMaximumTime() const noexcept;
  /// The completed runs, in their order.
  const std::vector<double>& getSamples() const noexcept { return samples_; }
  int getNumberSamples() const noexcept { return static_cast<int>(samples_.size()); }
  /// The place in the order of creation, from 1.
  int getTimerNo() const noexcept { return number_; }

  /// How often it was started, a run that goes on included.
  int numberOfCalls() const noexcept { return plainStarts_ + nestedStarts_; }
  /// The total less what the measuring itself is estimated to cost, at least 0: the order of the
  /// reports. The estimates are 0, so that the same runs give the same report everywhere.
  double netTime() const noexcept;

 private:
  bool running_ = false;
  std::uint64_t startCounter_ = 0;
  std::vector<double> samples_;
  int number_;
  int plainStarts_ = 0;
  int nestedStarts_ = 0;
  // Starts of other timers while this one was running; when it starts, what the process-wide
  // counters say is taken off, when it stops, it is added.
  std::int64_t otherPlainStarts_ = 0;
  std::int64_t otherNestedStarts_ = 0;
};

}  // namespace kpx
