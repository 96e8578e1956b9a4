#include "kpx/platform/RandomBytes.h"

#include <windows.h>
// The header above comes first: this one builds on it.
#include <bcrypt.h>

namespace kpx {

bool fillRandom(unsigned char* bytes, std::size_t count) noexcept {
  return ::BCryptGenRandom(nullptr, bytes, static_cast<ULONG>(count),
                           BCRYPT_USE_SYSTEM_PREFERRED_RNG) == 0;
}

}  // namespace kpx
