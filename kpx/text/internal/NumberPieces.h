#pragma once

#include <cstddef>
#include <cstdint>

#include "kpx/text/PrintDirective.h"

namespace kpx::detail {

/// A number as the print family writes it, in the order of the members. Runs of zeros are kept
/// as counts, so that a large precision needs no large buffer.
struct NumberPieces {
  // All digits of the largest number, the point and all decimals of the smallest one.
  static constexpr std::size_t bodyCapacity = 309 + 1 + 1074 + 16;

  char prefix[4];  // sign and 0x
  std::size_t prefixLength = 0;
  std::size_t leadingZeros = 0;
  char body[bodyCapacity];
  std::size_t bodyLength = 0;
  std::size_t trailingZeros = 0;
  char exponent[8];
  std::size_t exponentLength = 0;
  bool zeroPaddable = true;

  void addPrefix(char unit) { prefix[prefixLength++] = unit; }
  std::size_t length() const noexcept {
    return prefixLength + leadingZeros + bodyLength + trailingZeros + exponentLength;
  }
};

/// The conversions f F e E g G a A. The width of the directive is left to the caller.
void printReal(NumberPieces& pieces, const PrintDirective& directive, double value);

/// The conversions d i u o x X of a value of `size` bytes, whose bits stand in `bits`
/// (sign-extended when it is signed).
void printInteger(NumberPieces& pieces, const PrintDirective& directive, std::uint64_t bits,
                  std::size_t size);

}  // namespace kpx::detail
