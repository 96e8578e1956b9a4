#pragma once

#include <cstddef>

namespace kpx {

/// Fills a block with bytes that nobody can foresee, from the system's source; false when it has
/// none.
bool fillRandom(unsigned char* bytes, std::size_t count) noexcept;

}  // namespace kpx
