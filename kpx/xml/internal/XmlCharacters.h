#pragma once

#include <array>
#include <cstddef>
#include <string_view>

namespace kpx::detail {

// The rules of XML for single characters and names, stricter than what the engine itself reads.
// Those of version 1.0 are those of its fifth edition; `isVersion11` asks for those of version 1.1.

/// Whether a code is a character of XML 1.0, which a reference can name.
constexpr bool isXmlCharacter(char32_t code) noexcept {
  if (code < 0x20) return code == '\t' || code == '\n' || code == '\r';
  return code < 0xD800 || (code >= 0xE000 && code <= 0x10FFFF && code != 0xFFFE && code != 0xFFFF);
}

/// The units of ASCII that names have behind their first.
inline constexpr auto asciiInNames = [] {
  std::array<bool, 128> units{};
  for (char16_t unit = u'0'; unit <= u'9'; ++unit) units[unit] = true;
  for (char16_t unit = u'A'; unit <= u'Z'; ++unit) units[unit] = units[unit + 32] = true;
  for (const char16_t unit : {u'_', u':', u'-', u'.'}) units[unit] = true;
  return units;
}();

/// Names by the whole table of characters; the same in both versions.
bool isAnyXmlName(std::u16string_view name) noexcept;

/// The same; quick for names of ASCII, of which many are checked when a document is built.
inline bool isXmlName(std::u16string_view name) noexcept {
  unsigned all = 0;
  bool isRight = true;
  for (const char16_t unit : name) {
    all |= unit;
    isRight &= asciiInNames[unit & 0x7F];
  }
  if (all >= 0x80) return isAnyXmlName(name);
  // What a name cannot begin with, of what it can hold, comes before ":".
  return isRight && !name.empty() && name.front() >= u':';
}

/// The offset of the first unit from `from` on that is part of no character that may stand in a
/// document as it is: a control character, a lone surrogate, U+FFFE or U+FFFF; the size if there is
/// none.
std::size_t findForbiddenCharacter(std::u16string_view text, std::size_t from,
                                   bool isVersion11 = false) noexcept;

/// Whether a numeric reference, given from "&#" through ";", names a character of XML.
bool isNumericReference(std::u16string_view reference, bool isVersion11 = false) noexcept;

}  // namespace kpx::detail
