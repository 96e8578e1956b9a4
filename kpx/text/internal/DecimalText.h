#pragma once

#include <cstdint>
#include <cstring>

namespace kpx::detail {

/// The texts of 00 to 99, so that digits are written in pairs.
struct DigitPairs {
  char16_t units[100][2];
};
inline constexpr DigitPairs digitPairs = [] {
  DigitPairs pairs{};
  for (int i = 0; i < 100; ++i) {
    pairs.units[i][0] = static_cast<char16_t>(u'0' + i / 10);
    pairs.units[i][1] = static_cast<char16_t>(u'0' + i % 10);
  }
  return pairs;
}();

/// Writes the last `count` digits of `number`, which loses them, so that they end at `end`.
/// Answers where they begin.
inline char16_t* writeDigits(char16_t* end, std::uint64_t& number, int count) noexcept {
  for (; count >= 2; count -= 2) {
    end -= 2;
    std::memcpy(end, digitPairs.units[number % 100], sizeof digitPairs.units[0]);
    number /= 100;
  }
  if (count > 0) {
    *--end = static_cast<char16_t>(u'0' + number % 10);
    number /= 10;
  }
  return end;
}

/// Writes all digits of `number`, at least one, so that they end at `end`.
inline char16_t* writeInteger(char16_t* end, std::uint64_t number) noexcept {
  for (; number >= 100; number /= 100) {
    end -= 2;
    std::memcpy(end, digitPairs.units[number % 100], sizeof digitPairs.units[0]);
  }
  if (number >= 10) {
    end -= 2;
    std::memcpy(end, digitPairs.units[number], sizeof digitPairs.units[0]);
  } else {
    *--end = static_cast<char16_t>(u'0' + number);
  }
  return end;
}

}  // namespace kpx::detail
