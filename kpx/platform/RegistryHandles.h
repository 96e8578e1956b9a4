#pragma once

#include <cstdint>

// The handles of the registry's roots and the rights that a key is opened with, by the names and
// values that modules know from the system. A module may include the system's own header before or
// after this one; the type is the same, and its macros stand for the same values.

struct HKEY__;  // NOLINT(bugprone-reserved-identifier): the system's own name
using HKEY = HKEY__*;

#ifndef HKEY_CURRENT_USER
// NOLINTBEGIN(performance-no-int-to-ptr): that is what these handles are
inline const HKEY HKEY_CURRENT_USER =
    reinterpret_cast<HKEY>(static_cast<std::intptr_t>(static_cast<std::int32_t>(0x80000001)));
inline const HKEY HKEY_LOCAL_MACHINE =
    reinterpret_cast<HKEY>(static_cast<std::intptr_t>(static_cast<std::int32_t>(0x80000002)));
// NOLINTEND(performance-no-int-to-ptr)
inline constexpr std::uint32_t KEY_READ = 0x20019;
inline constexpr std::uint32_t KEY_WRITE = 0x20006;
inline constexpr std::uint32_t KEY_ALL_ACCESS = 0xF003F;
#endif
