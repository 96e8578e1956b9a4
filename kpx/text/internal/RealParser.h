#pragma once

namespace kpx::detail {

template <class CharT>
struct ParsedReal {
  double value = 0;
  const CharT* end = nullptr;  // where reading stopped; the beginning when there was no number
};

/// Reads the longest beginning of a text that is a number as strtod knows it: sign, decimal or
/// hexadecimal digits with exponent, "inf", "infinity", "nan", "nan(...)". Leading blanks are
/// left to the caller. The decimal sign is "." and, where `commaToo` says so, "," as well.
/// Rounds to nearest even; beyond the range the answer is an infinity or zero. `CharT` is char,
/// char16_t or wchar_t.
template <class CharT>
ParsedReal<CharT> parseReal(const CharT* first, const CharT* last, bool commaToo) noexcept;

/// The white space of the scan family, which depends on no locale.
template <class CharT>
constexpr bool isBlank(CharT unit) noexcept {
  return unit == ' ' || (unit >= '\t' && unit <= '\r');
}

}  // namespace kpx::detail
