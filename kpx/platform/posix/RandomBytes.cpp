#include "kpx/platform/RandomBytes.h"

#include <unistd.h>

#include <algorithm>

namespace kpx {

bool fillRandom(unsigned char* bytes, std::size_t count) noexcept {
  // The system gives at most this many at a time.
  constexpr std::size_t most = 256;
  for (; count != 0;) {
    const std::size_t part = std::min(count, most);
    if (::getentropy(bytes, part) != 0) return false;
    bytes += part;
    count -= part;
  }
  return true;
}

}  // namespace kpx
