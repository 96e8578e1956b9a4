#pragma once

#include <string_view>

#include "kpx/report/Export.h"

namespace kpx {

/// The lower-case form of one UTF-16 unit by the library's own table: Latin letters with the
/// umlauts and accents of Europe, Greek and Cyrillic. Never depends on a locale; units outside
/// the table, surrogates included, stay as they are. One unit always folds to one unit, so ß
/// stays ß.
constexpr char16_t foldCase(char16_t unit) noexcept {
  if (unit < 0x80) {
    return (unit >= u'A' && unit <= u'Z') ? static_cast<char16_t>(unit + 0x20) : unit;
  }
  if (unit >= 0xC0 && unit <= 0xDE) {
    return unit == 0xD7 ? unit : static_cast<char16_t>(unit + 0x20);
  }
  if (unit >= 0x100 && unit <= 0x17F) {
    if (unit == 0x130 || unit == 0x131 || unit == 0x138 || unit == 0x149 || unit == 0x17F) {
      return unit;
    }
    if (unit == 0x178) return 0xFF;
    const bool upperIsOdd = (unit >= 0x139 && unit <= 0x148) || unit >= 0x179;
    const bool isUpper = ((unit & 1) != 0) == upperIsOdd;
    return isUpper ? static_cast<char16_t>(unit + 1) : unit;
  }
  if (unit >= 0x218 && unit <= 0x21B) return static_cast<char16_t>(unit | 1);  // Ș and Ț
  if (unit >= 0x386 && unit <= 0x38F) {
    constexpr char16_t accented[] = {0x3AC, 0x387, 0x3AD, 0x3AE, 0x3AF,
                                     0x38B, 0x3CC, 0x38D, 0x3CD, 0x3CE};
    return accented[unit - 0x386];
  }
  if (unit >= 0x391 && unit <= 0x3AB && unit != 0x3A2) return static_cast<char16_t>(unit + 0x20);
  if (unit >= 0x410 && unit <= 0x42F) return static_cast<char16_t>(unit + 0x20);
  if (unit >= 0x400 && unit <= 0x40F) return static_cast<char16_t>(unit + 0x50);
  if (unit == 0x1E9E) return 0xDF;
  return unit;
}

/// The upper-case form by the same table. ß stays ß.
constexpr char16_t raiseCase(char16_t unit) noexcept {
  if (unit < 0x80) {
    return (unit >= u'a' && unit <= u'z') ? static_cast<char16_t>(unit - 0x20) : unit;
  }
  if (unit == 0xFF) return 0x178;
  if (unit >= 0xE0 && unit <= 0xFE) {
    return unit == 0xF7 ? unit : static_cast<char16_t>(unit - 0x20);
  }
  if (unit >= 0x101 && unit <= 0x17F) {
    const char16_t candidate = static_cast<char16_t>(unit - 1);
    return candidate >= 0x100 && foldCase(candidate) == unit ? candidate : unit;
  }
  if (unit >= 0x218 && unit <= 0x21B) return static_cast<char16_t>(unit & ~1);
  for (char16_t accented = 0x386; unit >= 0x3AC && unit <= 0x3CE && accented <= 0x38F; ++accented) {
    if (foldCase(accented) == unit && accented != unit) return accented;
  }
  if (unit >= 0x3B1 && unit <= 0x3CB && unit != 0x3C2) return static_cast<char16_t>(unit - 0x20);
  if (unit >= 0x430 && unit <= 0x44F) return static_cast<char16_t>(unit - 0x20);
  if (unit >= 0x450 && unit <= 0x45F) return static_cast<char16_t>(unit - 0x50);
  return unit;
}

namespace detail {

/// Orders two texts by their units: negative, 0 or positive.
int compareText(std::u16string_view left, std::u16string_view right) noexcept;

/// Orders two texts by the units of their folded forms: negative, 0 or positive.
int compareTextNoCase(std::u16string_view left, std::u16string_view right) noexcept;

}  // namespace detail
}  // namespace kpx
