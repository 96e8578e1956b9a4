#pragma once

#include <cstddef>
#include <string_view>
#include <type_traits>

#include "kpx/text/CString.h"

namespace kpx {

/// A text argument of the markup engine: points to units that the caller keeps alive for the
/// call. Made from a literal, a `CString` or any view of UTF-16 units; a null pointer counts as
/// the empty text.
class MCD_CSTR {
 public:
  constexpr MCD_CSTR() noexcept = default;
  constexpr MCD_CSTR(const char16_t* text) noexcept
      : text_(text ? std::u16string_view(text) : std::u16string_view()) {}
  constexpr MCD_CSTR(std::u16string_view text) noexcept : text_(text) {}
  MCD_CSTR(const CString& text) noexcept : text_(text.view()) {}
  template <class Wide>
  requires(wideIsUtf16&& std::is_same_v<Wide, wchar_t>) MCD_CSTR(const Wide* text)
  noexcept : MCD_CSTR(reinterpret_cast<const char16_t*>(text)) {}

  constexpr std::u16string_view view() const noexcept { return text_; }
  constexpr operator std::u16string_view() const noexcept { return text_; }
  constexpr bool empty() const noexcept { return text_.empty(); }
  constexpr std::size_t size() const noexcept { return text_.size(); }

 private:
  std::u16string_view text_;
};

}  // namespace kpx
