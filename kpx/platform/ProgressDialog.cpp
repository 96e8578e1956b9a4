#include "kpx/platform/ProgressDialog.h"

#include <atomic>

#include "kpx/platform/Clock.h"

namespace kpx {
namespace {

constinit std::atomic<ProgressDialogHandler> dialogHandler{nullptr};

constexpr std::uint64_t updatesPerSecond = 20;

std::unique_ptr<ProgressDisplay> makeDisplay(const ProgressDialogRequest& request) {
  const ProgressDialogHandler handler = dialogHandler.load(std::memory_order_acquire);
  return handler ? handler(request) : detail::systemProgressDialog(request);
}

}  // namespace

ProgressDisplay::~ProgressDisplay() = default;

ProgressDialogHandler setProgressDialogHandler(ProgressDialogHandler handler) noexcept {
  return dialogHandler.exchange(handler, std::memory_order_acq_rel);
}

ProgressDialog::ProgressDialog(const ProgressDialogRequest& request)
    : display_(makeDisplay(request)),
      interval_(currentClock().counterFrequency() / updatesPerSecond) {}

ProgressDialog::~ProgressDialog() = default;

bool ProgressDialog::show(const Progress& progress) {
  if (cancelled_ || !display_) return !cancelled_;
  Clock& clock = currentClock();
  const std::uint64_t now = clock.counter();
  if (now < next_) return true;
  next_ = now + interval_;
  if (!display_->show(progress)) cancelled_ = true;
  // Where showing takes long, the operation still gets most of the time.
  next_ = clock.counter() + interval_;
  return !cancelled_;
}

ProgressReport ProgressDialog::report() {
  return [this](const Progress& progress) { return show(progress); };
}

}  // namespace kpx
