#pragma once

#include <cstddef>
#include <cstdint>

namespace kpx::detail {

/// A length modifier of a print or scan conversion.
enum class LengthModifier : std::uint8_t {
  none,
  character,   // hh
  shortWidth,  // h
  longWidth,   // l
  longLong,    // ll, I64
  maximum,     // j
  size,        // z
  difference,  // t, I
  longDouble,  // L
  bits32,      // I32
  wide,        // w
};

/// Reads a length modifier, if there is one, and moves `at` behind it.
template <class CharT>
LengthModifier readLengthModifier(const CharT*& at, const CharT* end) noexcept {
  if (at == end) return LengthModifier::none;
  const auto follows = [&](std::ptrdiff_t offset, char unit) {
    return end - at > offset && at[offset] == static_cast<CharT>(unit);
  };
  const auto take = [&](int count, LengthModifier modifier) {
    at += count;
    return modifier;
  };
  switch (*at) {
    case 'h':
      return follows(1, 'h') ? take(2, LengthModifier::character)
                             : take(1, LengthModifier::shortWidth);
    case 'l':
      return follows(1, 'l') ? take(2, LengthModifier::longLong)
                             : take(1, LengthModifier::longWidth);
    case 'j':
      return take(1, LengthModifier::maximum);
    case 'z':
      return take(1, LengthModifier::size);
    case 't':
      return take(1, LengthModifier::difference);
    case 'L':
      return take(1, LengthModifier::longDouble);
    case 'w':
      return take(1, LengthModifier::wide);
    case 'I':
      if (follows(1, '6') && follows(2, '4')) return take(3, LengthModifier::longLong);
      if (follows(1, '3') && follows(2, '2')) return take(3, LengthModifier::bits32);
      return take(1, LengthModifier::difference);
    default:
      return LengthModifier::none;
  }
}

/// Reads a decimal number that stays at `limit` once it is reached.
template <class CharT>
int readCount(const CharT*& at, const CharT* end, int limit) noexcept {
  int count = 0;
  for (; at != end && *at >= '0' && *at <= '9'; ++at) {
    const int digit = static_cast<int>(*at) - '0';
    count = count > (limit - digit) / 10 ? limit : count * 10 + digit;
  }
  return count;
}

}  // namespace kpx::detail
