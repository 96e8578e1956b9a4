#include "kpx_c.h"

#include <cstdint>
#include <type_traits>

// A host in C++ passes its own literals, and a host in C the same units.
static_assert(std::is_same_v<kpx_c_unit, char16_t>);
static_assert(sizeof(kpx_c_unit) == sizeof(std::uint_least16_t));
