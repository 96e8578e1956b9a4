#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

namespace kpx {

/// What a parse can find wrong with a document.
enum class MarkupProblemKind : std::uint8_t {
  firstTagSyntax,
  exclamationTagSyntax,
  doctypeTagSyntax,
  commentTagSyntax,
  cdataSectionSyntax,
  unterminatedTagSyntax,
  unendedStartTag,
  loneEndTag,
  rootHasSibling,
  noRootElement,
  tooLarge,  // a tag, a nesting or a text that the index cannot hold
};

/// One problem with its place. Line and column count from 1, columns in UTF-16 units.
struct MarkupProblem {
  MarkupProblemKind kind;
  std::u16string_view name;  // tag name, or what was open; valid during the call only
  int offset = 0;
  int line = 0;
  int column = 0;
};

/// Receives every problem of a parse in the order found; not limited like the result text.
using MarkupProblemSink = std::function<void(const MarkupProblem&)>;

}  // namespace kpx
