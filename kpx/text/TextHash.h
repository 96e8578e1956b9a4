#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

namespace kpx {

/// Hash of a text: the same on every platform and in every build, at compile time as at run
/// time, so that keys written as literals carry their hash with them.
constexpr std::uint32_t textHash(std::u16string_view text) noexcept {
  std::uint32_t hash = 2166136261u;
  for (const char16_t unit : text) {
    hash = (hash ^ unit) * 16777619u;
  }
  // Mixes the high bits down, for tables that use the low ones.
  hash ^= hash >> 15;
  hash *= 0x85ebca6bu;
  return hash ^ (hash >> 13);
}

}  // namespace kpx
