#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kpx/text/TextHash.h"

namespace kpx {

/// A key written as a literal, with its hash computed by the compiler, so that looking it up
/// costs no walk over its text.
class KeyLiteral {
 public:
  /// The empty key.
  constexpr KeyLiteral() noexcept = default;
  template <std::size_t N>
  explicit consteval KeyLiteral(const char16_t (&key)[N]) noexcept
      : text_(key, N - 1), hash_(textHash(text_)) {}

  constexpr std::u16string_view text() const noexcept { return text_; }
  constexpr std::uint32_t hash() const noexcept { return hash_; }
  constexpr bool empty() const noexcept { return text_.empty(); }

 private:
  std::u16string_view text_;
  std::uint32_t hash_ = textHash({});
};

}  // namespace kpx
