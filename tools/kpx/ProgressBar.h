#pragma once

#include <chrono>
#include <cstddef>

#include "kpx/support/Progress.h"

namespace kpx::tool {

/// Shows the progress of a long operation in one line of standard error, when that is a terminal,
/// and lets the user cancel it with the interrupt key. One lives at a time.
class ProgressBar {
 public:
  ProgressBar();
  /// Takes the bar away again.
  ~ProgressBar();
  ProgressBar(const ProgressBar&) = delete;
  ProgressBar& operator=(const ProgressBar&) = delete;

  /// False when the user cancelled.
  bool show(const Progress& progress);

 private:
  void writeLine(const Progress& progress);

  bool visible_;
  std::size_t shownColumns_ = 0;
  std::chrono::steady_clock::time_point next_{};
  void (*beforeInterrupt_)(int);
  void (*beforeTerminate_)(int);
};

}  // namespace kpx::tool
