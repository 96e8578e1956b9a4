#include "kpx/platform/Terminal.h"

#include <unistd.h>

#include <cstdio>
#include <string>

namespace kpx {

bool outputIsTerminal() noexcept { return ::isatty(STDOUT_FILENO) == 1; }

bool errorOutputIsTerminal() noexcept { return ::isatty(STDERR_FILENO) == 1; }

void writeErrorOutput(const CString& text) {
  const std::string bytes = text.utf8();
  std::fwrite(bytes.data(), 1, bytes.size(), stderr);
  std::fflush(stderr);
}

}  // namespace kpx
