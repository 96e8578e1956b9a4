#pragma once

#include <cstddef>

#include "kpx/text/Utf.h"

namespace kpx::detail {

/// Stands for a byte that is part of no valid UTF-8 sequence.
inline constexpr char32_t invalidSequence = 0xFFFFFFFF;

struct DecodedSequence {
  char32_t code;
  std::size_t length;
};

/// Decodes the sequence at `bytes`, of which `available` > 0 may be read. An invalid sequence
/// has length 1. Reads a byte only when all before it are valid, so a text whose length is not
/// known is safe as long as a 0 ends it.
inline DecodedSequence decodeUtf8(const char* bytes, std::size_t available) noexcept {
  constexpr DecodedSequence invalid{invalidSequence, 1};
  const auto lead = static_cast<unsigned char>(bytes[0]);
  if (lead < 0x80) return {lead, 1};
  if (lead < 0xC2 || lead > 0xF4) return invalid;
  const std::size_t length = lead < 0xE0 ? 2 : lead < 0xF0 ? 3 : 4;
  if (length > available) return invalid;
  const auto second = static_cast<unsigned char>(bytes[1]);
  if ((second & 0xC0) != 0x80) return invalid;
  if (length == 2) return {((lead & 0x1Fu) << 6) | (second & 0x3Fu), 2};
  // The second byte tells overlong forms, surrogates and codes beyond Unicode.
  if ((lead == 0xE0 && second < 0xA0) || (lead == 0xED && second > 0x9F) ||
      (lead == 0xF0 && second < 0x90) || (lead == 0xF4 && second > 0x8F)) {
    return invalid;
  }
  const auto third = static_cast<unsigned char>(bytes[2]);
  if ((third & 0xC0) != 0x80) return invalid;
  if (length == 3) {
    return {((lead & 0x0Fu) << 12) | ((second & 0x3Fu) << 6) | (third & 0x3Fu), 3};
  }
  const auto fourth = static_cast<unsigned char>(bytes[3]);
  if ((fourth & 0xC0) != 0x80) return invalid;
  return {
      ((lead & 0x07u) << 18) | ((second & 0x3Fu) << 12) | ((third & 0x3Fu) << 6) | (fourth & 0x3Fu),
      4};
}

/// Writes a code point of at most 0x10FFFF as UTF-8 and answers the number of bytes, 1 to 4.
inline std::size_t encodeUtf8(char32_t code, char* to) noexcept {
  const auto byte = [](char32_t value) { return static_cast<char>(value); };
  if (code < 0x80) {
    to[0] = byte(code);
    return 1;
  }
  if (code < 0x800) {
    to[0] = byte(0xC0 | (code >> 6));
    to[1] = byte(0x80 | (code & 0x3F));
    return 2;
  }
  if (code < 0x10000) {
    to[0] = byte(0xE0 | (code >> 12));
    to[1] = byte(0x80 | ((code >> 6) & 0x3F));
    to[2] = byte(0x80 | (code & 0x3F));
    return 3;
  }
  to[0] = byte(0xF0 | (code >> 18));
  to[1] = byte(0x80 | ((code >> 12) & 0x3F));
  to[2] = byte(0x80 | ((code >> 6) & 0x3F));
  to[3] = byte(0x80 | (code & 0x3F));
  return 4;
}

}  // namespace kpx::detail
