#pragma once

namespace kpx::detail {

/// The value of a hexadecimal digit of either case, or 16 for any other unit.
template <class CharT>
constexpr unsigned hexValue(CharT unit) noexcept {
  if (unit >= '0' && unit <= '9') return static_cast<unsigned>(unit - '0');
  if (unit >= 'a' && unit <= 'f') return static_cast<unsigned>(unit - 'a' + 10);
  if (unit >= 'A' && unit <= 'F') return static_cast<unsigned>(unit - 'A' + 10);
  return 16;
}

}  // namespace kpx::detail
