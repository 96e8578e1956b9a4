#pragma once

#include <compare>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// The identifier of a point location: a UUID, 128 bits. Its text form is the standard one in
/// capital letters, 01234567-89AB-CDEF-0123-456789ABCDEF.
class KPX_API CAaaPunktortUUID {
 public:
  /// The null identifier, which means none.
  constexpr CAaaPunktortUUID() noexcept = default;
  /// From the first and the last 16 digits of the text form.
  constexpr CAaaPunktortUUID(std::uint64_t high, std::uint64_t low) noexcept
      : high_(high), low_(low) {}

  /// Takes the text form, in capital or small letters, with or without braces around it. Answers
  /// false and stores nothing for any other text.
  static bool fromText(std::u16string_view text, CAaaPunktortUUID& uuid) noexcept;
  /// The text form. A failure is reported as 910013 and gives the empty text.
  CString text() const;

  constexpr bool isNull() const noexcept { return high_ == 0 && low_ == 0; }
  /// The first and the last 16 digits of the text form as numbers.
  constexpr std::uint64_t high() const noexcept { return high_; }
  constexpr std::uint64_t low() const noexcept { return low_; }

  /// Orders as the text forms do.
  friend constexpr auto operator<=>(const CAaaPunktortUUID&,
                                    const CAaaPunktortUUID&) noexcept = default;

 private:
  std::uint64_t high_ = 0;
  std::uint64_t low_ = 0;
};

}  // namespace kpx

template <>
struct std::hash<kpx::CAaaPunktortUUID> {
  std::size_t operator()(const kpx::CAaaPunktortUUID& uuid) const noexcept {
    return static_cast<std::size_t>((uuid.high() ^ uuid.low()) * 0x9E3779B97F4A7C15u >> 16);
  }
};
