#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/xml/MarkupProblem.h"

namespace kpx::detail {

/// Kinds of tokens besides those of `MarkupNode`, whose `loneEndTag` the tokenizer cannot tell
/// from other end tags.
namespace TokenKind {
inline constexpr int endTag = 0;
inline constexpr int unterminated = -1;  // a tag that the text ends in
inline constexpr int endOfText = -2;
inline constexpr int syntaxError = -3;  // what follows "<" makes no tag; goes through the next ">"
}  // namespace TokenKind

/// One token of a text, and where the next one begins.
struct TokenPos {
  static constexpr std::uint32_t emptyElement = 0x10000;

  std::u16string_view text;
  int docFlags = 0;
  std::uint32_t tokenFlags = 0;  // emptyElement: the start tag ended with "/>"
  // The token is [start, end). The next token begins at `end`; a scan begins where `end` is set.
  int start = 0;
  int end = 0;
  // The name of a tag, or what stands between the delimiters of another token.
  int nameStart = 0;
  int nameEnd = 0;
  // Of a syntax error: which; of an unterminated tag: the text for its record.
  MarkupProblemKind problem{};
  const char16_t* openType = u"";

  int length() const noexcept { return end - start; }
  std::u16string_view name() const noexcept {
    return text.substr(static_cast<std::size_t>(nameStart),
                       static_cast<std::size_t>(nameEnd - nameStart));
  }
  bool isEmptyElement() const noexcept { return (tokenFlags & emptyElement) != 0; }
};

constexpr bool isMarkupSpace(char16_t unit) noexcept {
  return unit == u' ' || unit == u'\n' || unit == u'\t' || unit == u'\r';
}

/// The generous rule for the first unit of a name: every unit from "a" up counts, so all of
/// non-ASCII text does, and so do "{", "|", "}" and "~".
constexpr bool isNameStart(char16_t unit) noexcept {
  return unit >= u'a' || (unit >= u'A' && unit <= u'Z') || unit == u'_' || unit == u':';
}

constexpr bool endsName(char16_t unit) noexcept {
  return unit == u'>' || unit == u'/' || isMarkupSpace(unit);
}

/// The offset of the first `unit` (from 1 to 254) at or behind `from`; the text's length if there
/// is none.
int findUnit(std::u16string_view text, int from, char unit) noexcept;

/// Reads the token that begins at `token.end` and answers its kind. Each call looks at the units
/// of its token only, so reading a whole text is linear whatever it holds.
int nextToken(TokenPos& token) noexcept;

/// The same for callers to whom text is nothing: passes over text to the next "<" first.
int nextMarkup(TokenPos& token) noexcept;

}  // namespace kpx::detail
