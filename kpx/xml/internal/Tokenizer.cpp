#include "kpx/xml/internal/Tokenizer.h"

#include <algorithm>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/UnitScan.h"

namespace kpx::detail {
namespace {

// Offsets are wider than in the token, so that one behind the end of the longest text has no
// overflow.
using Offset = std::ptrdiff_t;

Offset findFrom(std::u16string_view text, Offset from, char unit) noexcept {
  const char16_t* const end = text.data() + text.size();
  const char16_t* found = end;
  visitUnits(
      text.data() + std::min(from, static_cast<Offset>(text.size())), end,
      [unit](UnitBlock block) { return block.equal(unit); },
      [&](const char16_t* position) {
        found = position;
        return end;
      });
  return found - text.data();
}

class Scanner {
 public:
  explicit Scanner(TokenPos& token) noexcept
      : token_(token), text_(token.text), size_(static_cast<Offset>(token.text.size())) {}

  int markup() noexcept {
    const Offset first = Offset{token_.start} + 1;
    if (first == size_) return unterminated(u"tag");
    const char16_t unit = at(first);
    if (isNameStart(unit)) return startTag();
    switch (unit) {
      case u'/':
        return endTag();
      case u'!':
        return declaration();
      case u'?':
        return delimited(MarkupNode::processingInstruction, 2, u"?>", u"processing_instruction");
      default:
        return syntaxError(MarkupProblemKind::firstTagSyntax);
    }
  }

 private:
  char16_t at(Offset offset) const noexcept { return text_[static_cast<std::size_t>(offset)]; }
  bool standsAt(Offset offset, std::u16string_view part) const noexcept {
    return text_.substr(static_cast<std::size_t>(offset)).starts_with(part);
  }
  // Whether the text ends in the middle of `part`, or right behind it.
  bool endsWithin(Offset offset, std::u16string_view part) const noexcept {
    return part.starts_with(text_.substr(static_cast<std::size_t>(offset)));
  }
  void setEnd(Offset end) noexcept { token_.end = static_cast<int>(end); }
  void setName(Offset start, Offset end) noexcept {
    token_.nameStart = static_cast<int>(start);
    token_.nameEnd = static_cast<int>(end);
  }

  int unterminated(const char16_t* openType) noexcept {
    setEnd(size_);
    token_.problem = MarkupProblemKind::unterminatedTagSyntax;
    token_.openType = openType;
    return TokenKind::unterminated;
  }

  int syntaxError(MarkupProblemKind problem) noexcept {
    token_.problem = problem;
    setEnd(std::min(findFrom(text_, Offset{token_.start} + 1, '>') + 1, size_));
    return TokenKind::syntaxError;
  }

  void readName(Offset first) noexcept {
    Offset position = first;
    while (position < size_ && !endsName(at(position))) ++position;
    setName(first, position);
  }

  int startTag() noexcept {
    readName(Offset{token_.start} + 1);
    // Quotes matter only where a value begins, so that a stray one swallows nothing.
    bool valueMayBegin = false;
    for (Offset position = token_.nameEnd; position < size_; ++position) {
      const char16_t unit = at(position);
      switch (unit) {
        case u'>':
          setEnd(position + 1);
          if (at(position - 1) == u'/') token_.tokenFlags |= TokenPos::emptyElement;
          return MarkupNode::element;
        case u'"':
        case u'\'':
          if (valueMayBegin) position = findFrom(text_, position + 1, static_cast<char>(unit));
          valueMayBegin = false;
          break;
        case u'=':
          valueMayBegin = true;
          break;
        default:
          if (!isMarkupSpace(unit)) valueMayBegin = false;
      }
    }
    return unterminated(u"start_tag");
  }

  int endTag() noexcept {
    readName(Offset{token_.start} + 2);
    const Offset close = findFrom(text_, token_.nameEnd, '>');
    if (close == size_) return unterminated(u"end_tag");
    setEnd(close + 1);
    return TokenKind::endTag;
  }

  int declaration() noexcept {
    const Offset first = Offset{token_.start} + 2;
    if (first == size_) return unterminated(u"tag");
    switch (at(first)) {
      case u'-':
        if (standsAt(first, u"--")) return delimited(MarkupNode::comment, 4, u"-->", u"comment");
        if (endsWithin(first, u"--")) return unterminated(u"comment");
        return syntaxError(MarkupProblemKind::commentTagSyntax);
      case u'[':
        if (standsAt(first, u"[CDATA[")) {
          return delimited(MarkupNode::cdataSection, 9, u"]]>", u"cdata_section");
        }
        if (endsWithin(first, u"[CDATA[")) return unterminated(u"cdata_section");
        return syntaxError(MarkupProblemKind::cdataSectionSyntax);
      case u'D':
        return documentType();
      default:
        return syntaxError(MarkupProblemKind::exclamationTagSyntax);
    }
  }

  int delimited(int kind, int openLength, std::u16string_view close,
                const char16_t* openType) noexcept {
    const Offset content = Offset{token_.start} + openLength;
    const Offset last = findDelimiter(content, close);
    if (last == size_) return unterminated(openType);
    setName(content, last + 1 - static_cast<Offset>(close.size()));
    setEnd(last + 1);
    return kind;
  }

  // Where the ">" of a delimiter stands that is wholly behind `from`; the size if there is none.
  Offset findDelimiter(Offset from, std::u16string_view close) const noexcept {
    const auto before = static_cast<Offset>(close.size()) - 1;
    Offset position = findFrom(text_, from + before, '>');
    while (position < size_ && !standsAt(position - before, close)) {
      position = findFrom(text_, position + 1, '>');
    }
    return position;
  }

  int documentType() noexcept {
    constexpr std::u16string_view word = u"DOCTYPE";
    const Offset first = Offset{token_.start} + 2;
    const Offset behind = first + static_cast<Offset>(word.size());
    if (endsWithin(first, word)) return unterminated(u"document_type");
    if (!standsAt(first, word) ||
        !(isMarkupSpace(at(behind)) || at(behind) == u'[' || at(behind) == u'>')) {
      return syntaxError(MarkupProblemKind::doctypeTagSyntax);
    }
    int brackets = 0;
    for (Offset position = behind; position < size_; ++position) {
      switch (at(position)) {
        case u'"':
        case u'\'':
          position = findFrom(text_, position + 1, static_cast<char>(at(position)));
          break;
        case u'[':
          ++brackets;
          break;
        case u']':
          brackets = std::max(brackets - 1, 0);
          break;
        case u'<':
          if (standsAt(position, u"<!--")) {
            position = findDelimiter(position + 4, u"-->");
          } else if (standsAt(position, u"<?")) {
            position = findDelimiter(position + 2, u"?>");
          }
          break;
        case u'>':
          if (brackets > 0) break;
          setName(behind, position);
          setEnd(position + 1);
          return MarkupNode::documentType;
        default:
          break;
      }
    }
    return unterminated(u"document_type");
  }

  TokenPos& token_;
  const std::u16string_view text_;
  const Offset size_;
};

void beginToken(TokenPos& token) noexcept {
  token.start = token.end;
  token.nameStart = token.nameEnd = token.start;
  token.tokenFlags = 0;
}

}  // namespace

int findUnit(std::u16string_view text, int from, char unit) noexcept {
  return static_cast<int>(findFrom(text, from, unit));
}

int nextToken(TokenPos& token) noexcept {
  beginToken(token);
  const int size = static_cast<int>(token.text.size());
  if (token.start >= size) return TokenKind::endOfText;
  if (token.text[static_cast<std::size_t>(token.start)] == u'<') return Scanner(token).markup();
  token.end = token.nameEnd = findUnit(token.text, token.start, '<');
  const std::u16string_view content = token.name();
  return std::all_of(content.begin(), content.end(), isMarkupSpace) ? MarkupNode::whitespace
                                                                    : MarkupNode::text;
}

int nextMarkup(TokenPos& token) noexcept {
  token.end = findUnit(token.text, token.end, '<');
  beginToken(token);
  if (token.start >= static_cast<int>(token.text.size())) return TokenKind::endOfText;
  return Scanner(token).markup();
}

}  // namespace kpx::detail
