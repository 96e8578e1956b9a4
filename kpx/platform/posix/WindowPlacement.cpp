#include "kpx/platform/WindowPlacement.h"

namespace kpx {

// Windows have no common form here; the host's handler knows its own ones.

bool placementOfHandle(void*, WindowPlacement&) noexcept { return false; }

bool placeHandle(void*, const WindowPlacement&) noexcept { return false; }

}  // namespace kpx
