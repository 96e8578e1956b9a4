#include "kpx/platform/TerminalProgress.h"

#include <algorithm>
#include <csignal>
#include <string>
#include <string_view>

#include "kpx/platform/LineText.h"
#include "kpx/platform/Terminal.h"
#include "kpx/text/Utf.h"

namespace kpx {
namespace {

volatile std::sig_atomic_t interrupted = 0;

// A second one ends the program at once, in case the operation hangs.
void noteInterrupt(int signal) {
  interrupted = 1;
  std::signal(signal, SIG_DFL);
}

/// Takes a signal for as long as it lives.
class SignalTaken {
 public:
  explicit SignalTaken(int signal) : signal_(signal), before_(std::signal(signal, noteInterrupt)) {
    if (before_ == SIG_IGN) std::signal(signal, SIG_IGN);
  }
  ~SignalTaken() {
    if (before_ != SIG_ERR) std::signal(signal_, before_);
  }
  SignalTaken(const SignalTaken&) = delete;
  SignalTaken& operator=(const SignalTaken&) = delete;

 private:
  int signal_;
  void (*before_)(int);
};

// Together with the text 79 columns, which every terminal has.
constexpr std::size_t barColumns = 30;
constexpr int textUnits = 39;

std::u16string barOf(std::size_t from, std::size_t count) {
  std::u16string bar(barColumns, u'.');
  return bar.replace(from, count, count, u'#');
}

std::size_t columnsOf(std::u16string_view line) {
  std::size_t columns = 0;
  for (std::size_t i = 0; i < line.size(); ++columns) nextCodePoint(line, i);
  return columns;
}

/// The end of a path tells more than its front.
CString endOf(const CString& text) {
  if (text.GetLength() <= textUnits) return text;
  CString end = text.Right(textUnits - 1);
  if (isLowSurrogate(end[0])) end.Delete(0);
  return u"…" + end;
}

class TerminalLine final : public ProgressDisplay {
 public:
  explicit TerminalLine(const CString& text) : text_(text), visible_(errorOutputIsTerminal()) {
    interrupted = 0;
  }
  ~TerminalLine() override {
    if (shownColumns_ == 0) return;
    try {
      writeErrorOutput(u"\r" + std::u16string(shownColumns_, u' ') + u"\r");
    } catch (...) {
      // Without memory the line stays.
    }
  }

  bool show(const Progress& progress) override {
    if (visible_) writeLine(progress);
    return interrupted == 0;
  }

 private:
  void writeLine(const Progress& progress) {
    CString line;
    if (progress.total == 0) {
      // Nobody knows how far it is, but the user sees that something happens.
      line.Format(u"[%s]        ", barOf(step_++ % barColumns, 1));
    } else {
      const double part =
          std::min(1.0, static_cast<double>(progress.done) / static_cast<double>(progress.total));
      line.Format(u"[%s] %3d %%  ", barOf(0, static_cast<std::size_t>(part * barColumns)),
                  static_cast<int>(part * 100));
    }
    const std::u16string_view text = progress.text.empty() ? text_.view() : progress.text;
    line += detail::terminalText(endOf(detail::withoutLineBreaks(text)));
    const std::size_t columns = columnsOf(line);
    std::u16string blanks(shownColumns_ > columns ? shownColumns_ - columns : 0, u' ');
    shownColumns_ = std::max(shownColumns_, columns);
    writeErrorOutput(u"\r" + line + std::move(blanks));
  }

  SignalTaken interrupt_{SIGINT};
  SignalTaken terminate_{SIGTERM};
  CString text_;
  bool visible_;
  std::size_t step_ = 0;
  std::size_t shownColumns_ = 0;
};

}  // namespace

std::unique_ptr<ProgressDisplay> terminalProgress(const ProgressDialogRequest& request) {
  return std::make_unique<TerminalLine>(request.text.IsEmpty() ? request.caption : request.text);
}

}  // namespace kpx
