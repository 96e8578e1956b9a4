#include "kpx/platform/Terminal.h"

#include <unistd.h>

namespace kpx {

bool errorOutputIsTerminal() noexcept { return ::isatty(STDERR_FILENO) == 1; }

}  // namespace kpx
