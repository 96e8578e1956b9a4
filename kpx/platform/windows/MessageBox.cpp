#include "kpx/platform/MessageBox.h"

#include <windows.h>

namespace kpx::detail {

int systemMessageBox(const MessageBoxRequest& request) {
  // For a window that is gone the system would show nothing at all. That of another thread would
  // have to answer before the box is there, and never would while it waits for this thread.
  const bool isOwn = ::GetWindowThreadProcessId(request.owner, nullptr) == ::GetCurrentThreadId();
  const HWND owner = isOwn ? request.owner : nullptr;
  return ::MessageBoxW(owner, request.text, request.caption, static_cast<UINT>(request.style));
}

bool systemWindowTitle(WindowHandle window, const CString& title) {
  return window != nullptr && ::SetWindowTextW(window, title) != 0;
}

}  // namespace kpx::detail
