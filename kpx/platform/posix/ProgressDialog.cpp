#include "kpx/platform/ProgressDialog.h"

#include "kpx/platform/Terminal.h"
#include "kpx/platform/TerminalProgress.h"

namespace kpx::detail {

std::unique_ptr<ProgressDisplay> systemProgressDialog(const ProgressDialogRequest& request) {
  // Where nobody watches, the signals stay with the host.
  return errorOutputIsTerminal() ? terminalProgress(request) : nullptr;
}

}  // namespace kpx::detail
