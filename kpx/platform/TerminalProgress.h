#pragma once

#include <memory>

#include "kpx/platform/ProgressDialog.h"
#include "kpx/report/Export.h"

namespace kpx {

/// Shows the progress in one line of standard error, when that is a terminal, and lets the user
/// cancel with the interrupt key or a request to end the program; a second one ends the program at
/// once. For programs of the console, on every system:
/// `setProgressDialogHandler(terminalProgress)`.
///
/// The signals SIGINT and SIGTERM are taken, also when nobody sees the line, unless they are
/// ignored, and put back as they were at the end.
KPX_API std::unique_ptr<ProgressDisplay> terminalProgress(const ProgressDialogRequest& request);

}  // namespace kpx
