#include "tools/kpx/ProgressBar.h"

#include <algorithm>
#include <csignal>
#include <cstdio>
#include <string>

#include "kpx/platform/Terminal.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {
namespace {

volatile std::sig_atomic_t interrupted = 0;

// A second one ends the program at once, in case the operation hangs.
void noteInterrupt(int signal) {
  interrupted = 1;
  std::signal(signal, SIG_DFL);
}

constexpr std::size_t barColumns = 30;
constexpr int textUnits = 40;

}  // namespace

ProgressBar::ProgressBar()
    : visible_(errorOutputIsTerminal()),
      beforeInterrupt_(std::signal(SIGINT, noteInterrupt)),
      beforeTerminate_(std::signal(SIGTERM, noteInterrupt)) {
  interrupted = 0;
}

ProgressBar::~ProgressBar() {
  std::signal(SIGINT, beforeInterrupt_);
  std::signal(SIGTERM, beforeTerminate_);
  if (shownColumns_ != 0) {
    std::fprintf(stderr, "\r%*s\r", static_cast<int>(shownColumns_), "");
    std::fflush(stderr);
  }
}

bool ProgressBar::show(const Progress& progress) {
  const auto now = std::chrono::steady_clock::now();
  if (visible_ && now >= next_) {
    next_ = now + std::chrono::milliseconds(100);
    writeLine(progress);
  }
  return interrupted == 0;
}

void ProgressBar::writeLine(const Progress& progress) {
  const double part = progress.total == 0 ? 1.0
                                          : static_cast<double>(progress.done) /
                                                static_cast<double>(progress.total);
  const auto full = static_cast<std::size_t>(part * barColumns);
  // The end of a path tells more than its front.
  const std::string text = shownOnOneLine(CString(progress.text).Right(textUnits));
  std::string line = "[" + std::string(full, '#') + std::string(barColumns - full, '.') + "] " +
                     std::to_string(static_cast<int>(part * 100)) + " %  " + text;
  const std::size_t columns = line.size();
  if (columns < shownColumns_) line.append(shownColumns_ - columns, ' ');
  shownColumns_ = std::max(shownColumns_, columns);
  std::fprintf(stderr, "\r%s", line.c_str());
  std::fflush(stderr);
}

}  // namespace kpx::tool
