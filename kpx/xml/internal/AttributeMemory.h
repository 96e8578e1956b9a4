#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

namespace kpx::detail {

/// Remembers roughly which attribute names the element at hand has: a name that it does not know
/// is certainly new, so that writing an element attribute by attribute needs no search of its
/// growing start tag. Holds while the document stays at one position.
class AttributeMemory {
 public:
  /// Starts with an element without attributes.
  void begin(int element) noexcept {
    *this = AttributeMemory();
    element_ = element;
  }
  void forget() noexcept { element_ = 0; }
  bool isAbout(int element) const noexcept { return element_ == element && element != 0; }

  /// Adds a name and answers whether it was certainly not there.
  bool addNew(std::u16string_view name) noexcept {
    const unsigned hash = hashOf(name);
    const std::uint64_t bit = std::uint64_t{1} << (hash & 63);
    std::uint64_t& bits = bits_[hash >> 6];
    const bool isNew = (bits & bit) == 0;
    bits |= bit;
    return isNew;
  }

 private:
  // From the ends of the name and its length; the names of a start tag differ there.
  static unsigned hashOf(std::u16string_view name) noexcept {
    std::uint64_t first = 0;
    std::uint64_t last = 0;
    if (name.size() >= 4) {
      std::memcpy(&first, name.data(), sizeof first);
      std::memcpy(&last, name.data() + name.size() - 4, sizeof last);
    } else {
      for (const char16_t unit : name) first = first << 16 | unit;
    }
    const std::uint64_t mixed =
        ((first * 0x9E3779B97F4A7C15u) ^ (last + name.size())) * 0xC2B2AE3D27D4EB4Fu;
    return static_cast<unsigned>(mixed >> 56);
  }

  int element_ = 0;
  std::uint64_t bits_[4] = {};
};

}  // namespace kpx::detail
