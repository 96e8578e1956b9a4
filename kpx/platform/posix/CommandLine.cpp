#include "kpx/platform/CommandLine.h"

#include <fcntl.h>
#include <unistd.h>

namespace kpx {

std::vector<std::string> programArguments(int count, const char* const* values) {
  return count > 1 ? std::vector<std::string>(values + 1, values + count)
                   : std::vector<std::string>();
}

void prepareStandardStreams() noexcept {
  // The first file that is opened would take the number of a closed stream, and get what is
  // printed. What stands there instead can neither be read nor written.
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) >= 0) continue;
    const int file = ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (file >= 0 && file != stream) ::close(file);
  }
}

}  // namespace kpx
