#include "kpx/platform/MessageBox.h"

#include <atomic>

namespace kpx {
namespace {

constinit std::atomic<MessageBoxHandler> boxHandler{nullptr};
constinit std::atomic<WindowTitleHandler> titleHandler{nullptr};

}  // namespace

int showMessageBox(const MessageBoxRequest& request) {
  const MessageBoxHandler handler = boxHandler.load(std::memory_order_acquire);
  return handler ? handler(request) : detail::systemMessageBox(request);
}

MessageBoxHandler setMessageBoxHandler(MessageBoxHandler handler) noexcept {
  return boxHandler.exchange(handler, std::memory_order_acq_rel);
}

bool showWindowTitle(WindowHandle window, const CString& title) {
  const WindowTitleHandler handler = titleHandler.load(std::memory_order_acquire);
  return handler ? handler(window, title) : detail::systemWindowTitle(window, title);
}

WindowTitleHandler setWindowTitleHandler(WindowTitleHandler handler) noexcept {
  return titleHandler.exchange(handler, std::memory_order_acq_rel);
}

}  // namespace kpx
