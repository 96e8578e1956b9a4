#pragma once

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string_view>

/// The records of a zip archive: numbers are little-endian, lengths are in bytes.
namespace kpx::detail::zip {

inline constexpr std::uint32_t localSignature = 0x04034b50;
inline constexpr std::uint32_t directorySignature = 0x02014b50;
inline constexpr std::uint32_t endSignature = 0x06054b50;
inline constexpr std::uint32_t end64Signature = 0x06064b50;
inline constexpr std::uint32_t end64LocatorSignature = 0x07064b50;

// The fixed part of each record; names, extra fields and comments follow.
inline constexpr std::size_t localLength = 30;
inline constexpr std::size_t directoryLength = 46;
inline constexpr std::size_t endLength = 22;
inline constexpr std::size_t end64Length = 56;
inline constexpr std::size_t end64LocatorLength = 20;
inline constexpr std::size_t longestComment = 0xFFFF;

// A number that does not fit its field stands in a 64-bit field elsewhere.
inline constexpr std::uint16_t elsewhere16 = 0xFFFF;
inline constexpr std::uint32_t elsewhere32 = 0xFFFFFFFF;

inline constexpr std::uint16_t extra64 = 0x0001;
inline constexpr std::uint16_t extraUnicodeName = 0x7075;

inline constexpr std::uint16_t flagEncrypted = 0x0001 | 0x0040 | 0x2000;
inline constexpr std::uint16_t flagSizesFollow = 0x0008;  // the content, with the checksum
inline constexpr std::uint16_t flagUtf8 = 0x0800;

inline constexpr std::uint16_t stored = 0;
inline constexpr std::uint16_t deflated = 8;

/// The number of `Number`'s width at a place. Requires that the bytes are there.
template <class Number>
constexpr Number numberAt(std::string_view bytes, std::size_t place) noexcept {
  Number number = 0;
  for (std::size_t i = sizeof(Number); i-- > 0;) {
    number = static_cast<Number>(number << 8 | static_cast<unsigned char>(bytes[place + i]));
  }
  return number;
}
constexpr std::uint16_t u16(std::string_view bytes, std::size_t place) noexcept {
  return numberAt<std::uint16_t>(bytes, place);
}
constexpr std::uint32_t u32(std::string_view bytes, std::size_t place) noexcept {
  return numberAt<std::uint32_t>(bytes, place);
}
constexpr std::uint64_t u64(std::string_view bytes, std::size_t place) noexcept {
  return numberAt<std::uint64_t>(bytes, place);
}

/// The content of an extra field, or none. A field that is longer than what is left ends the
/// search.
constexpr std::string_view extraField(std::string_view extra, std::uint16_t wanted) noexcept {
  while (extra.size() >= 4) {
    const std::uint16_t id = u16(extra, 0);
    const std::size_t length = u16(extra, 2);
    extra.remove_prefix(4);
    if (length > extra.size()) break;
    if (id == wanted) return extra.substr(0, length);
    extra.remove_prefix(length);
  }
  return {};
}

/// Takes the numbers that do not fit their fields from the 64-bit extra field, which has only
/// those, in this order. False when one is missing.
inline bool readNumbers64(std::string_view extra, std::initializer_list<std::uint64_t*> numbers) {
  std::string_view field = extraField(extra, extra64);
  for (std::uint64_t* const number : numbers) {
    if (*number != elsewhere32) continue;
    if (field.size() < 8) return false;
    *number = u64(field, 0);
    field.remove_prefix(8);
  }
  return true;
}

}  // namespace kpx::detail::zip
