#include "kpx/text/internal/NumberPieces.h"

#include <algorithm>
#include <bit>
#include <charconv>
#include <cmath>
#include <cstdlib>
#include <cstring>
#include <iterator>

namespace kpx::detail {
namespace {

// No double has more decimals or more significant digits; what lies beyond is zeros.
constexpr int mostDecimals = 1074;
constexpr int mostSignificant = 767;

constexpr bool isUpper(char letter) noexcept { return letter >= 'A' && letter <= 'Z'; }

void addSign(NumberPieces& pieces, const PrintDirective& directive, bool negative) {
  if (negative) {
    pieces.addPrefix('-');
  } else if (directive.plus) {
    pieces.addPrefix('+');
  } else if (directive.blank) {
    pieces.addPrefix(' ');
  }
}

void raise(char* first, char* last) noexcept {
  for (; first != last; ++first) {
    if (*first >= 'a' && *first <= 'z') *first = static_cast<char>(*first - 'a' + 'A');
  }
}

void printFixed(NumberPieces& pieces, const PrintDirective& directive, double magnitude) {
  const int decimals = std::min(directive.precision, mostDecimals);
  char* const end = std::to_chars(pieces.body, pieces.body + pieces.bodyCapacity, magnitude,
                                  std::chars_format::fixed, decimals)
                        .ptr;
  pieces.bodyLength = static_cast<std::size_t>(end - pieces.body);
  if (directive.precision == 0 && directive.alternate) pieces.body[pieces.bodyLength++] = '.';
  pieces.trailingZeros = static_cast<std::size_t>(directive.precision - decimals);
}

/// Writes d.ddd with `decimals` decimals to the body, and the exponent with its letter. Answers
/// the value of the exponent.
int printMantissa(NumberPieces& pieces, int decimals, double magnitude) {
  char* const end = std::to_chars(pieces.body, pieces.body + pieces.bodyCapacity, magnitude,
                                  std::chars_format::scientific, decimals)
                        .ptr;
  const char* const letter = std::find(pieces.body, end, 'e');
  pieces.bodyLength = static_cast<std::size_t>(letter - pieces.body);
  pieces.exponentLength = static_cast<std::size_t>(end - letter);
  std::copy(letter, static_cast<const char*>(end), pieces.exponent);
  int exponent = 0;
  for (const char* digit = letter + 2; digit != end; ++digit)
    exponent = exponent * 10 + *digit - '0';
  return letter[1] == '-' ? -exponent : exponent;
}

void printScientific(NumberPieces& pieces, const PrintDirective& directive, double magnitude) {
  const int decimals = std::min(directive.precision, mostSignificant);
  printMantissa(pieces, decimals, magnitude);
  if (directive.precision == 0 && directive.alternate) pieces.body[pieces.bodyLength++] = '.';
  pieces.trailingZeros = static_cast<std::size_t>(directive.precision - decimals);
}

void printGeneral(NumberPieces& pieces, const PrintDirective& directive, double magnitude) {
  const int significant = std::max(directive.precision, 1);
  const int printed = std::min(significant, mostSignificant);
  const int exponent = printMantissa(pieces, printed - 1, magnitude);
  const bool fixed = exponent >= -4 && exponent < significant;
  if (directive.alternate) {
    pieces.trailingZeros = static_cast<std::size_t>(significant - printed);
    if (printed == 1) pieces.body[pieces.bodyLength++] = '.';
  } else if (printed > 1) {
    const std::string_view body(pieces.body, pieces.bodyLength);
    const std::size_t last = body.find_last_not_of('0');
    pieces.bodyLength = body[last] == '.' ? last : last + 1;
  }
  if (!fixed) return;
  pieces.exponentLength = 0;
  if (exponent == 0) return;
  // Moves the point from behind the first digit to where it belongs.
  char digits[mostSignificant + 1];
  std::size_t count = 0;
  for (std::size_t i = 0; i < pieces.bodyLength; ++i) {
    if (pieces.body[i] != '.') digits[count++] = pieces.body[i];
  }
  char* to = pieces.body;
  if (exponent < 0) {
    to = std::copy_n("0.000", 1 - exponent, to);
    to = std::copy_n(digits, count, to);
  } else {
    const std::size_t whole = static_cast<std::size_t>(exponent) + 1;
    to = std::copy_n(digits, std::min(whole, count), to);
    if (count < whole) to = std::fill_n(to, whole - count, '0');
    if (count > whole || directive.alternate) *to++ = '.';
    if (count > whole) to = std::copy(digits + whole, digits + count, to);
  }
  pieces.bodyLength = static_cast<std::size_t>(to - pieces.body);
}

void printHexadecimal(NumberPieces& pieces, const PrintDirective& directive, double magnitude) {
  constexpr int nibbles = 13;
  const auto bits = std::bit_cast<std::uint64_t>(magnitude);
  std::uint64_t mantissa = bits & 0xFFFFFFFFFFFFFu;
  const int biased = static_cast<int>(bits >> 52);
  // Subnormal numbers keep the smallest exponent and a leading 0.
  const int exponent = magnitude == 0 ? 0 : biased == 0 ? -1022 : biased - 1023;
  if (biased != 0) mantissa |= std::uint64_t{1} << 52;
  int decimals = nibbles;
  if (directive.precision >= 0 && directive.precision < nibbles) {
    decimals = directive.precision;
    const int dropped = 4 * (nibbles - decimals);
    const std::uint64_t half = std::uint64_t{1} << (dropped - 1);
    const std::uint64_t rest = mantissa & (2 * half - 1);
    mantissa >>= dropped;
    if (rest > half || (rest == half && (mantissa & 1) != 0)) ++mantissa;
  } else if (directive.precision < 0) {
    for (; decimals > 0 && (mantissa & 15) == 0; --decimals) mantissa >>= 4;
  } else {
    pieces.trailingZeros = static_cast<std::size_t>(directive.precision - nibbles);
  }
  pieces.addPrefix('0');
  pieces.addPrefix('x');
  char* to = pieces.body;
  *to++ = static_cast<char>('0' + (mantissa >> (4 * decimals)));
  if (decimals > 0 || directive.alternate) *to++ = '.';
  while (decimals-- > 0) *to++ = "0123456789abcdef"[(mantissa >> (4 * decimals)) & 15];
  pieces.bodyLength = static_cast<std::size_t>(to - pieces.body);
  pieces.exponent[0] = 'p';
  pieces.exponent[1] = exponent < 0 ? '-' : '+';
  to = std::to_chars(pieces.exponent + 2, std::end(pieces.exponent), std::abs(exponent)).ptr;
  pieces.exponentLength = static_cast<std::size_t>(to - pieces.exponent);
}

}  // namespace

void printReal(NumberPieces& pieces, const PrintDirective& directive, double value) {
  // The sign of a NaN means nothing and differs between processors.
  addSign(pieces, directive, std::signbit(value) && !std::isnan(value));
  const double magnitude = std::fabs(value);
  if (!std::isfinite(value)) {
    std::memcpy(pieces.body, std::isnan(value) ? "nan" : "inf", 3);
    pieces.bodyLength = 3;
    pieces.zeroPaddable = false;
  } else {
    PrintDirective exact = directive;
    if (exact.precision < 0 && (exact.conversion | 0x20) != 'a') exact.precision = 6;
    switch (exact.conversion | 0x20) {
      case 'f':
        printFixed(pieces, exact, magnitude);
        break;
      case 'e':
        printScientific(pieces, exact, magnitude);
        break;
      case 'g':
        printGeneral(pieces, exact, magnitude);
        break;
      default:
        printHexadecimal(pieces, exact, magnitude);
        break;
    }
  }
  if (isUpper(directive.conversion)) {
    raise(pieces.prefix, pieces.prefix + pieces.prefixLength);
    raise(pieces.body, pieces.body + pieces.bodyLength);
    raise(pieces.exponent, pieces.exponent + pieces.exponentLength);
  }
}

void printInteger(NumberPieces& pieces, const PrintDirective& directive, std::uint64_t bits,
                  std::size_t size) {
  // As in C, small types are widened to int first, and only hh and h narrow again.
  unsigned width = size > 4 ? 64 : 32;
  if (directive.length == LengthModifier::character) width = 8;
  if (directive.length == LengthModifier::shortWidth) width = 16;
  const unsigned unused = 64 - width;
  std::uint64_t magnitude = (bits << unused) >> unused;
  int base = 10;
  switch (directive.conversion) {
    case 'd':
    case 'i': {
      const bool negative = ((magnitude >> (width - 1)) & 1) != 0;
      if (negative) magnitude = ((~magnitude + 1) << unused) >> unused;
      addSign(pieces, directive, negative);
      break;
    }
    case 'o':
      base = 8;
      break;
    case 'x':
    case 'X':
      base = 16;
      if (directive.alternate && magnitude != 0) {
        pieces.addPrefix('0');
        pieces.addPrefix(directive.conversion);
      }
      break;
    default:
      break;
  }
  if (magnitude != 0 || directive.precision != 0) {
    char* const end =
        std::to_chars(pieces.body, pieces.body + pieces.bodyCapacity, magnitude, base).ptr;
    pieces.bodyLength = static_cast<std::size_t>(end - pieces.body);
    if (directive.conversion == 'X') raise(pieces.body, end);
  }
  if (directive.precision >= 0) {
    // As in C, a precision cancels the padding with zeros.
    pieces.zeroPaddable = false;
    const auto wanted = static_cast<std::size_t>(directive.precision);
    if (wanted > pieces.bodyLength) pieces.leadingZeros = wanted - pieces.bodyLength;
  }
  if (base == 8 && directive.alternate && pieces.leadingZeros == 0 &&
      (pieces.bodyLength == 0 || pieces.body[0] != '0')) {
    pieces.leadingZeros = 1;
  }
}

}  // namespace kpx::detail
