#include "kpx/xml/internal/ParseReport.h"

#include "kpx/text/Utf.h"
#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {
namespace {

// Each unended element writes the name of the end tag that closed it. Longer names are cut there,
// or a small hostile file could fill the memory.
constexpr std::size_t plainNameLimit = 128;

// Never between the halves of a character.
std::u16string_view cutName(std::u16string_view name) noexcept {
  if (name.size() <= plainNameLimit) return name;
  const bool splitsPair = isHighSurrogate(name[plainNameLimit - 1]);
  return name.substr(0, plainNameLimit - splitsPair);
}

std::u16string_view syntaxRecordName(MarkupProblemKind kind) noexcept {
  switch (kind) {
    case MarkupProblemKind::exclamationTagSyntax:
      return u"exclamation_tag_syntax";
    case MarkupProblemKind::doctypeTagSyntax:
      return u"doctype_tag_syntax";
    case MarkupProblemKind::commentTagSyntax:
      return u"comment_tag_syntax";
    case MarkupProblemKind::cdataSectionSyntax:
      return u"cdata_section_syntax";
    default:
      return u"first_tag_syntax";
  }
}

}  // namespace

void ParseReport::record(const Outcome& outcome) {
  if (result_) addOutcome(*result_, outcome);
}

void ParseReport::tell(MarkupProblemKind kind, std::u16string_view name, int offset) {
  if (!sink_) return;
  const LineTable::Place place = lines_.at(offset);
  sink_({kind, name, offset, place.line, place.column});
}

void ParseReport::syntaxError(MarkupProblemKind kind, int offset) {
  record({.name = syntaxRecordName(kind), .numberName = u"offset", .number = offset});
  tell(kind, {}, offset);
}

void ParseReport::unterminated(std::u16string_view openType, int offset) {
  record({.name = u"unterminated_tag_syntax",
          .textName = u"type",
          .text = openType,
          .numberName = u"offset",
          .number = offset});
  tell(MarkupProblemKind::unterminatedTagSyntax, openType, offset);
}

void ParseReport::unendedRecord(std::u16string_view name, int offset, int missedAt) {
  record({.name = u"unended_start_tag",
          .textName = u"tagname",
          .text = name,
          .numberName = u"offset",
          .number = offset,
          .offset2 = missedAt});
}

void ParseReport::unendedProblem(std::u16string_view name, int offset) {
  tell(MarkupProblemKind::unendedStartTag, name, offset);
}

void ParseReport::loneEndTag(std::u16string_view name, int offset) {
  record({.name = u"lone_end_tag",
          .textName = u"tagname",
          .text = name,
          .numberName = u"offset",
          .number = offset});
  tell(MarkupProblemKind::loneEndTag, name, offset);
}

void ParseReport::noRootElement() {
  record({.name = u"no_root_element"});
  tell(MarkupProblemKind::noRootElement, {}, 0);
}

void ParseReport::rootHasSibling(int offset, bool isReal) {
  record({.name = u"root_has_sibling"});
  if (isReal) tell(MarkupProblemKind::rootHasSibling, {}, offset);
}

void ParseReport::tooLarge(std::u16string_view what, int offset) {
  record({.name = u"limit_exceeded",
          .textName = u"type",
          .text = what,
          .numberName = u"offset",
          .number = offset});
  tell(MarkupProblemKind::tooLarge, what, offset);
}

void ParseReport::plainLine(std::u16string_view opening, std::u16string_view name,
                            std::u16string_view middle, int offset, std::u16string_view beforeLine,
                            int lineOffset) {
  if (!result_) return;
  std::u16string& text = result_->units();
  text.append(opening).append(cutName(name)).append(middle);
  appendNumber(text, offset);
  text.append(beforeLine);
  // The unit at the offset counts too, as in FindErrorLine.
  appendNumber(text, lines_.at(lineOffset + 1).line - 1);
  text.append(u"\n");
}

void ParseReport::mismatchLine(std::u16string_view endTagName, int endTagOffset, int lineOffset) {
  plainLine(u"End tag '", endTagName, u"' at offset ", endTagOffset,
            u" does not match start tag  --> Error in line ", lineOffset);
}

void ParseReport::unterminatedLine(std::u16string_view tagName, int tagOffset, int lineOffset) {
  // Kept: this wording stands for every unterminated tag, readers of old logs know it.
  plainLine(u"No start tag for end tag '", tagName, u"' at offset ", tagOffset,
            u" --> Error in line ", lineOffset);
}

}  // namespace kpx::detail
