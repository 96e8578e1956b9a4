#include "kpx/platform/MessageBox.h"

#include <windows.h>

namespace kpx::detail {

int systemMessageBox(const MessageBoxRequest& request) {
  return ::MessageBoxW(request.owner, request.text, request.caption,
                       static_cast<UINT>(request.style));
}

bool systemWindowTitle(WindowHandle window, const CString& title) {
  return window != nullptr && ::SetWindowTextW(window, title) != 0;
}

}  // namespace kpx::detail
