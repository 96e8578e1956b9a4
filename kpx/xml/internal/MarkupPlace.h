#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {

/// Where in the markup a unit stands, as far as references go.
enum class MarkupPlace : std::uint8_t {
  value,    // data or an attribute value: a reference stands for its character
  cdata,    // a CDATA section: a reference would have to interrupt it
  name,     // a tag outside of attribute values: no reference can stand there
  verbatim  // comment, processing instruction or declaration: a reference is mere text
};

/// Tells places of a text, asked for in ascending order; linear over all questions.
class MarkupPlaces {
 public:
  explicit MarkupPlaces(std::u16string_view text) noexcept : token_{text} {}

  MarkupPlace at(std::size_t offset) noexcept;

 private:
  MarkupPlace inTag(std::size_t offset) noexcept;

  TokenPos token_;
  int kind_ = 0;
  // Up to here the quotes of the tag are known; `quote_` is the open one, or 0.
  std::size_t quotesUpTo_ = 0;
  char16_t quote_ = 0;
};

}  // namespace kpx::detail
