#include "kpx/xml/internal/MarkupPlace.h"

#include "kpx/xml/CMarkup.h"

namespace kpx::detail {

MarkupPlace MarkupPlaces::at(std::size_t offset) noexcept {
  while (static_cast<std::size_t>(token_.end) <= offset) {
    kind_ = nextToken(token_);
    if (kind_ == TokenKind::endOfText) return MarkupPlace::value;
    quotesUpTo_ = static_cast<std::size_t>(token_.start);
    quote_ = 0;
    if (kind_ == TokenKind::unterminated) break;
  }
  switch (kind_) {
    case MarkupNode::element:
      return inTag(offset);
    case TokenKind::endTag:
      return MarkupPlace::name;
    case MarkupNode::cdataSection:
      return MarkupPlace::cdata;
    case MarkupNode::comment:
    case MarkupNode::processingInstruction:
    case MarkupNode::documentType:
      return MarkupPlace::verbatim;
    default:  // text; and what is ill-formed, where a reference says most
      return MarkupPlace::value;
  }
}

MarkupPlace MarkupPlaces::inTag(std::size_t offset) noexcept {
  for (; quotesUpTo_ < offset; ++quotesUpTo_) {
    const char16_t unit = token_.text[quotesUpTo_];
    if (quote_ != 0) {
      if (unit == quote_) quote_ = 0;
    } else if (unit == u'"' || unit == u'\'') {
      quote_ = unit;
    }
  }
  return quote_ != 0 ? MarkupPlace::value : MarkupPlace::name;
}

}  // namespace kpx::detail
