#pragma once

#include <string_view>
#include <type_traits>
#include <utility>

namespace kpx::detail {

/// The set of a `%[` conversion.
template <class CharT>
class ScanSet {
 public:
  /// Reads the set behind its opening bracket and moves `at` behind the closing one; false when
  /// there is none. A bracket that closes at once, or at once behind "^", is a member.
  bool read(const CharT*& at, const CharT* end) noexcept {
    if (at != end && *at == '^') {
      excluded_ = true;
      ++at;
    }
    const CharT* const first = at;
    if (at != end) ++at;
    while (at != end && *at != ']') ++at;
    if (at == end) return false;
    members_ = {first, static_cast<std::size_t>(at - first)};
    ++at;
    for (unsigned unit = 0; unit < lowUnits; ++unit) low_[unit] = search(static_cast<CharT>(unit));
    return true;
  }

  bool contains(CharT unit) const noexcept {
    const auto code = static_cast<std::make_unsigned_t<CharT>>(unit);
    return (code < lowUnits ? low_[code] : search(unit)) != excluded_;
  }

 private:
  static constexpr unsigned lowUnits = 256;

  /// A "-" between two units makes a range of them, in either order.
  bool search(CharT wanted) const noexcept {
    using Unsigned = std::make_unsigned_t<CharT>;
    for (std::size_t i = 0; i < members_.size(); ++i) {
      auto low = static_cast<Unsigned>(members_[i]);
      auto high = low;
      if (i + 2 < members_.size() && members_[i + 1] == '-') {
        high = static_cast<Unsigned>(members_[i + 2]);
        if (low > high) std::swap(low, high);
        i += 2;
      }
      const auto code = static_cast<Unsigned>(wanted);
      if (code >= low && code <= high) return true;
    }
    return false;
  }

  std::basic_string_view<CharT> members_;
  bool excluded_ = false;
  bool low_[lowUnits] = {};
};

}  // namespace kpx::detail
