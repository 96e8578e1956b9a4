#include "kpx/text/internal/RealParser.h"

#include <bit>
#include <charconv>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <limits>

#include "kpx/text/HexDigit.h"
#include "kpx/text/internal/PowersOfTen.h"

namespace kpx::detail {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

template <class CharT>
constexpr bool isDigit(CharT unit) noexcept {
  return unit >= '0' && unit <= '9';
}

/// A piece of text that holds a number, and what counts as its decimal sign.
template <class CharT>
struct Field {
  const CharT* last;
  bool commaToo;

  bool isPoint(const CharT* at) const noexcept {
    return at != last && (*at == CharT{'.'} || (commaToo && *at == CharT{','}));
  }
  bool startsWith(const CharT* at, const char* lowerCase) const noexcept {
    for (; *lowerCase != 0; ++at, ++lowerCase) {
      const auto lower = static_cast<CharT>(*lowerCase);
      const auto upper = static_cast<CharT>(*lowerCase - 'a' + 'A');
      if (at == last || (*at != lower && *at != upper)) return false;
    }
    return true;
  }
};

/// Reads an exponent behind its letter at `at`, if digits follow; else nothing is consumed. Its
/// size is limited to what no count of digits in memory can bring back into range.
template <class CharT>
std::int64_t readExponent(const CharT*& at, const CharT* last) noexcept {
  constexpr std::int64_t limit = 1'000'000'000'000'000;
  const CharT* digit = at + 1;
  const bool negative = digit != last && *digit == '-';
  if (digit != last && (*digit == '-' || *digit == '+')) ++digit;
  if (digit == last || !isDigit(*digit)) return 0;
  std::int64_t exponent = 0;
  for (; digit != last && isDigit(*digit); ++digit) {
    if (exponent < limit) exponent = exponent * 10 + (*digit - '0');
  }
  at = digit;
  return negative ? -exponent : exponent;
}

/// The value of the decimal digits from `first` to `last`, with or without a point among them,
/// times ten to `exponent`. Takes any number of digits.
template <class CharT>
double exactValue(const CharT* first, const CharT* last, std::int64_t exponent) noexcept {
  // No value between two doubles needs more digits to tell which is nearer; of those beyond it
  // only counts whether they are all zero.
  constexpr std::size_t mostDigits = 770;
  char text[mostDigits + 32];
  std::size_t count = 0;
  bool rest = false;
  bool behindPoint = false;
  std::int64_t lead = exponent;  // the number is 0.ddd times ten to this power
  for (; first != last; ++first) {
    if (!isDigit(*first)) {
      behindPoint = true;
      continue;
    }
    const bool significant = count > 0 || *first != '0';
    if (significant != behindPoint) lead += significant ? 1 : -1;
    if (!significant) continue;
    if (count < mostDigits) {
      text[count++] = static_cast<char>(*first);
    } else {
      rest = rest || *first != '0';
    }
  }
  if (count == 0 || lead < -330) return 0;
  if (lead > 310) return infinity;
  if (rest) text[count++] = '1';
  char* end = text + count;
  *end++ = 'e';
  end = std::to_chars(end, text + sizeof text, lead - static_cast<std::int64_t>(count)).ptr;
  double value = 0;
  const auto result = std::from_chars(text, end, value);
  if (result.ec == std::errc::result_out_of_range) return lead > 0 ? infinity : 0;
  return value;
}

/// The same for a text of usual length: the number from `first` to `last` with its exponent.
/// Answers false when the text is longer, or the value out of range.
template <class CharT>
bool shortValue(const CharT* first, const CharT* last, double& value) noexcept {
  char text[48];
  const auto length = static_cast<std::size_t>(last - first);
  if (length > sizeof text) return false;
  for (std::size_t i = 0; i < length; ++i) {
    text[i] = first[i] == ',' ? '.' : static_cast<char>(first[i]);
  }
  return std::from_chars(text, text + length, value).ec == std::errc();
}

/// Rounds mantissa times two to `exponent` to the nearest double; `rest` tells that the
/// mantissa was cut.
double scaledMantissa(std::uint64_t mantissa, std::int64_t exponent, bool rest) noexcept {
  if (mantissa == 0) return 0;
  const int length = 64 - std::countl_zero(mantissa);
  const std::int64_t top = exponent + length;  // the value lies below two to this power
  if (top > 1024) return infinity;
  if (top < -1080) return 0;
  // Subnormal numbers have fewer bits.
  const int kept = top > -1022 ? 53 : static_cast<int>(top + 1074);
  const int dropped = length - kept;
  if (dropped > 0) {
    if (dropped > 64) return 0;
    const std::uint64_t below = dropped == 64 ? mantissa : mantissa & ((1ull << dropped) - 1);
    const std::uint64_t half = 1ull << (dropped - 1);
    mantissa = dropped == 64 ? 0 : mantissa >> dropped;
    exponent += dropped;
    if (below > half || (below == half && (rest || (mantissa & 1) != 0))) ++mantissa;
  }
  return std::ldexp(static_cast<double>(mantissa), static_cast<int>(exponent));
}

/// Reads hexadecimal digits behind "0x", which is known to be followed by one.
template <class CharT>
ParsedReal<CharT> parseHexadecimal(const CharT* at, const Field<CharT>& field) noexcept {
  std::uint64_t mantissa = 0;
  std::int64_t exponent = 0;
  bool rest = false;
  const auto take = [&](unsigned digit, bool behindPoint) {
    if (mantissa >> 60 == 0) {
      mantissa = mantissa * 16 + digit;
      if (behindPoint) exponent -= 4;
    } else {
      rest = rest || digit != 0;
      if (!behindPoint) exponent += 4;
    }
  };
  for (; at != field.last && hexValue(*at) < 16; ++at) take(hexValue(*at), false);
  if (field.isPoint(at)) {
    for (++at; at != field.last && hexValue(*at) < 16; ++at) take(hexValue(*at), true);
  }
  if (at != field.last && (*at == 'p' || *at == 'P')) exponent += readExponent(at, field.last);
  return {scaledMantissa(mantissa, exponent, rest), at};
}

template <class CharT>
ParsedReal<CharT> parseWord(const CharT* at, const Field<CharT>& field) noexcept {
  if (field.startsWith(at, "inf")) {
    return {infinity, at + (field.startsWith(at, "infinity") ? 8 : 3)};
  }
  if (!field.startsWith(at, "nan")) return {};
  at += 3;
  if (at != field.last && *at == '(') {
    const CharT* inside = at + 1;
    while (inside != field.last &&
           (isDigit(*inside) || *inside == '_' || (*inside >= 'a' && *inside <= 'z') ||
            (*inside >= 'A' && *inside <= 'Z'))) {
      ++inside;
    }
    if (inside != field.last && *inside == ')') at = inside + 1;
  }
  return {std::numeric_limits<double>::quiet_NaN(), at};
}

template <class CharT>
bool startsHexadecimal(const CharT* at, const Field<CharT>& field) noexcept {
  if (field.last - at < 3 || at[0] != '0' || (at[1] | 0x20) != 'x') return false;
  at += field.isPoint(at + 2) ? 3 : 2;
  return at != field.last && hexValue(*at) < 16;
}

template <class CharT>
ParsedReal<CharT> parseUnsigned(const CharT* const first, const Field<CharT>& field) noexcept {
  const CharT* at = first;
  std::uint64_t mantissa = 0;  // may wrap around; not used then
  for (; at != field.last && isDigit(*at); ++at) {
    mantissa = mantissa * 10 + static_cast<std::uint64_t>(*at - '0');
  }
  std::ptrdiff_t digits = at - first;
  std::int64_t exponent = 0;
  if (field.isPoint(at)) {
    const CharT* const fraction = ++at;
    for (; at != field.last && isDigit(*at); ++at) {
      mantissa = mantissa * 10 + static_cast<std::uint64_t>(*at - '0');
    }
    exponent = fraction - at;
    digits += at - fraction;
  }
  if (digits == 0) return first == field.last ? ParsedReal<CharT>{} : parseWord(first, field);
  if (digits == 1 && startsHexadecimal(first, field)) return parseHexadecimal(first + 2, field);

  const CharT* const digitsEnd = at;
  std::int64_t written = 0;
  if (at != field.last && (*at | 0x20) == 'e') written = readExponent(at, field.last);
  exponent += written;
  // Exact operands give a correctly rounded result.
  if (digits <= 19 && mantissa <= 1ull << 53) {
    const auto value = static_cast<double>(mantissa);
    if (exponent >= 0 && exponent <= largestExactPower) {
      return {value * exactPowersOfTen[exponent], at};
    }
    if (exponent < 0 && exponent >= -largestExactPower) {
      return {value / exactPowersOfTen[-exponent], at};
    }
  }
  if (double value = 0; shortValue(first, at, value)) return {value, at};
  return {exactValue(first, digitsEnd, written), at};
}

}  // namespace

template <class CharT>
ParsedReal<CharT> parseReal(const CharT* first, const CharT* last, bool commaToo) noexcept {
  const CharT* at = first;
  const bool negative = at != last && *at == '-';
  if (at != last && (*at == '-' || *at == '+')) ++at;
  const ParsedReal<CharT> parsed = parseUnsigned(at, Field<CharT>{last, commaToo});
  if (parsed.end == nullptr) return {0, first};
  return {negative ? -parsed.value : parsed.value, parsed.end};
}

template ParsedReal<char> parseReal(const char*, const char*, bool) noexcept;
template ParsedReal<char16_t> parseReal(const char16_t*, const char16_t*, bool) noexcept;
template ParsedReal<wchar_t> parseReal(const wchar_t*, const wchar_t*, bool) noexcept;

}  // namespace kpx::detail
