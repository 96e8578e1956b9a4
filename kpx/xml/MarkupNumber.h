#pragma once

#include <concepts>
#include <cstdint>
#include <string_view>
#include <type_traits>

#include "kpx/report/Export.h"
#include "kpx/text/NumberText.h"
#include "kpx/xml/MarkupText.h"

namespace kpx {

namespace detail {

template <class T, class... Others>
inline constexpr bool isAnyOf = (std::is_same_v<T, Others> || ...);

template <class T>
inline constexpr bool isCharacter =
    isAnyOf<T, char, signed char, unsigned char, wchar_t, char8_t, char16_t, char32_t>;

}  // namespace detail

/// What the markup engine writes as a whole number: integers of up to 64 bits and the values of
/// enumerations that convert to them, `bool` as 1 and 0. No characters, which would be written as
/// their codes.
template <class T>
concept MarkupInteger = (std::integral<T> && sizeof(T) <= 8 && !detail::isCharacter<T>) ||
                        (std::is_enum_v<T> && std::is_convertible_v<T, long long>);

/// What it writes as a real number.
template <class T>
concept MarkupReal = std::floating_point<T>;

namespace detail {

/// The decimal text of an integer.
class KPX_API IntegerText {
 public:
  template <MarkupInteger Integer>
  explicit IntegerText(Integer value) noexcept
      : IntegerText(std::is_signed_v<decltype(+value)> && static_cast<std::int64_t>(value) < 0,
                    static_cast<std::uint64_t>(value)) {}

  operator MCD_CSTR() const noexcept { return std::u16string_view(units_, length_); }

 private:
  IntegerText(bool isNegative, std::uint64_t bits) noexcept;

  char16_t units_[20];
  std::size_t length_ = 0;
};

/// The text of a real; empty when there is none, which has been reported then.
class RealText {
 public:
  template <MarkupReal Real>
  RealText(Real value, int decimals)
      : text_(utlDoubleAsText(static_cast<double>(value), decimals, u'.')) {}

  bool isEmpty() const noexcept { return text_.IsEmpty(); }
  operator MCD_CSTR() const noexcept { return text_; }

 private:
  CString text_;
};

}  // namespace detail
}  // namespace kpx
