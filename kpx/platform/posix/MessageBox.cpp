#include "kpx/platform/MessageBox.h"

#include <cstdio>
#include <string>

namespace kpx::detail {

int systemMessageBox(const MessageBoxRequest& request) {
  std::string line = request.caption.utf8();
  if (!line.empty()) line += ": ";
  line += request.text.utf8();
  line += '\n';
  std::fputs(line.c_str(), stderr);
  switch (request.style & MessageBoxStyle::buttons) {
    case MessageBoxStyle::okCancel:
    case MessageBoxStyle::yesNoCancel:
    case MessageBoxStyle::retryCancel:
      return MessageBoxAnswer::cancel;
    case MessageBoxStyle::abortRetryIgnore:
      return MessageBoxAnswer::abort;
    case MessageBoxStyle::yesNo:
      return MessageBoxAnswer::no;
    default:
      return MessageBoxAnswer::ok;
  }
}

bool systemWindowTitle(WindowHandle, const CString&) { return false; }

}  // namespace kpx::detail
