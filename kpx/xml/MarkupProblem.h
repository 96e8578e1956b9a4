#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// What can be wrong with a document.
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

  // What a parse lets pass, but `MarkupCheck` and other XML programs do not.
  forbiddenCharacter,
  nameSyntax,  // of an element, an attribute or a processing instruction
  attributeWithoutBlank,
  attributeWithoutValue,
  valueWithoutQuotes,
  unclosedValue,
  repeatedAttribute,
  lessThanInValue,
  ampersandWithoutReference,
  unknownEntity,
  endTagSyntax,
  textOutsideRoot,
  sectionEndInText,
  hyphensInComment,
  misplacedDeclaration,  // of the XML version, or a target that is too much like it
  declarationSyntax,
  misplacedDocumentType,

  // Not forbidden.
  lineBreakInValue,       // other XML programs read a blank
  uncheckedDocumentType,  // what it declares is not checked
};

/// One problem with its place. Line and column count from 1, columns in UTF-16 units.
struct MarkupProblem {
  MarkupProblemKind kind;
  std::u16string_view name;  // of the tag, attribute or entity, or what was open; valid during
                             // the call only
  int offset = 0;
  int line = 0;
  int column = 0;
};

/// The problem as a sentence for people who know its place: "start tag 'a' has no end tag".
KPX_API CString describe(const MarkupProblem& problem);
/// A word for programs that stays the same: "unended-start-tag".
KPX_API std::u16string_view kindName(MarkupProblemKind kind) noexcept;

/// Receives every problem in the order found; not limited like the result text.
using MarkupProblemSink = std::function<void(const MarkupProblem&)>;

}  // namespace kpx
