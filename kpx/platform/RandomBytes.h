#pragma once

#include <cstddef>

#include "kpx/report/Export.h"

namespace kpx {

/// Fills a block with bytes that nobody can foresee, from the system's source; false when it has
/// none.
KPX_API bool fillRandom(unsigned char* bytes, std::size_t count) noexcept;

}  // namespace kpx
