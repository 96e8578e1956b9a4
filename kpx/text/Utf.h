#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kpx/report/Export.h"

namespace kpx {

/// Whether the platform's wide characters are UTF-16 units themselves.
inline constexpr bool wideIsUtf16 = sizeof(wchar_t) == sizeof(char16_t);

/// U+FFFD, which stands for what cannot be decoded.
inline constexpr char32_t replacementCharacter = 0xFFFD;

constexpr bool isHighSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xD800; }
constexpr bool isLowSurrogate(char16_t unit) noexcept { return (unit & 0xFC00) == 0xDC00; }

/// The code point at `position`, which moves behind it. A lone surrogate is its own code.
/// Requires position < text.size().
KPX_API char32_t nextCodePoint(std::u16string_view text, std::size_t& position) noexcept;

/// Writes a code point as UTF-16 and answers the number of units, 1 or 2; codes beyond Unicode
/// become U+FFFD, surrogates stay as they are.
constexpr std::size_t encodeUtf16(char32_t code, char16_t* to) noexcept {
  if (code > 0x10FFFF) code = replacementCharacter;
  if (code < 0x10000) {
    to[0] = static_cast<char16_t>(code);
    return 1;
  }
  to[0] = static_cast<char16_t>(0xD7C0 + (code >> 10));
  to[1] = static_cast<char16_t>(0xDC00 + (code & 0x3FF));
  return 2;
}

/// Appends one code point; codes beyond Unicode become U+FFFD, surrogates stay as they are.
KPX_API void appendCodePoint(std::u16string& text, char32_t code);

/// Appends UTF-8 as UTF-16. Each byte that is part of no valid sequence becomes U+FFFD. Answers
/// the offset of the first such byte, or npos when all were valid.
KPX_API std::size_t appendUtf8(std::u16string& text, std::string_view bytes);

/// Appends UTF-16 as UTF-8; a lone surrogate becomes the three bytes of its code.
KPX_API void appendUtf16(std::string& bytes, std::u16string_view text);
KPX_API std::string utf8FromUtf16(std::u16string_view text);

/// The platform's wide text as UTF-16 and back: a copy where its characters have 16 bits, else
/// transcoded from and to UTF-32. Codes beyond Unicode become U+FFFD, surrogates stay as they are.
KPX_API void appendWide(std::u16string& text, std::wstring_view wide);
KPX_API std::wstring wideFromUtf16(std::u16string_view text);

}  // namespace kpx
