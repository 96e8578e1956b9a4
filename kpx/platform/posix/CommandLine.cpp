#include "kpx/platform/CommandLine.h"

namespace kpx {

std::vector<std::string> programArguments(int count, const char* const* values) {
  return count > 1 ? std::vector<std::string>(values + 1, values + count)
                   : std::vector<std::string>();
}

void prepareStandardStreams() noexcept {}

}  // namespace kpx
