#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <type_traits>

#include "kpx/text/CString.h"

namespace kpx {

/// A text argument of the markup engine: points to units that the caller keeps alive for the
/// call. Made from a literal, a `CString` or any view of UTF-16 units, and from wide text, which is
/// transcoded where its characters have 32 bits. A null pointer counts as the empty text; a
/// literal one, and a 0, do not compile.
class MCD_CSTR {
 public:
  constexpr MCD_CSTR() noexcept = default;
  constexpr MCD_CSTR(const char16_t* text) noexcept
      : text_(text ? std::u16string_view(text) : std::u16string_view()) {}
  constexpr MCD_CSTR(std::u16string_view text) noexcept : text_(text) {}
  MCD_CSTR(const std::u16string& text) noexcept : text_(text) {}
  MCD_CSTR(const CString& text) noexcept : text_(text.view()) {}
  MCD_CSTR(std::nullptr_t) = delete;
  template <class Wide>
  requires(std::is_same_v<Wide, wchar_t>) MCD_CSTR(const Wide* text)
      : MCD_CSTR(text ? std::wstring_view(text) : std::wstring_view()) {}
  MCD_CSTR(std::wstring_view text) { text_ = wide_.unitsOf(text); }
  MCD_CSTR(const std::wstring& text) : MCD_CSTR(std::wstring_view(text)) {}

  constexpr std::u16string_view view() const noexcept { return text_; }
  constexpr operator std::u16string_view() const noexcept { return text_; }
  constexpr bool empty() const noexcept { return text_.empty(); }
  constexpr std::size_t size() const noexcept { return text_.size(); }

 private:
  // Wide text whose characters are units needs nothing; any other is kept as UTF-16.
  struct SameUnits {
    std::u16string_view unitsOf(std::wstring_view text) const noexcept {
      return {reinterpret_cast<const char16_t*>(text.data()), text.size()};
    }
  };
  struct Transcoded {
    std::shared_ptr<const CString> kept;
    std::u16string_view unitsOf(std::wstring_view text) {
      kept = std::make_shared<const CString>(text);
      return *kept;
    }
  };

  std::u16string_view text_;
  std::conditional_t<wideIsUtf16, SameUnits, Transcoded> wide_;
};

}  // namespace kpx
