#include <algorithm>

#include "kpx/text/CaseFold.h"
#include "kpx/xml/internal/MarkupEditor.h"
#include "kpx/xml/internal/PieceCheck.h"
#include "kpx/xml/internal/Tokenizer.h"
#include "kpx/xml/internal/XmlCharacters.h"

namespace kpx::detail {
namespace {

// What may stand outside of the root element.
constexpr int outside = MarkupNode::whitespace | MarkupNode::comment |
                        MarkupNode::processingInstruction | MarkupNode::documentType;

std::u16string_view targetOf(std::u16string_view instruction) noexcept {
  const auto* const end = std::find_if(instruction.begin(), instruction.end(), isMarkupSpace);
  return instruction.substr(0, static_cast<std::size_t>(end - instruction.begin()));
}

bool isRightComment(std::u16string_view text) noexcept {
  return text.find(u"--") == text.npos && !text.ends_with(u'-');
}

bool isRightInstruction(std::u16string_view text) noexcept {
  const std::u16string_view target = targetOf(text);
  return isXmlName(target) && detail::compareTextNoCase(target, u"xml") != 0;
}

}  // namespace

// --- line breaks ---------------------------------------------------------------------------------

// Whether a line break between its children would become part of a parent's text.
bool MarkupEditor::holdsText(int parent) noexcept {
  ElemPos& record = index_[parent];
  if (record.hasFlag(ElemPos::noTextFlag) || (parent != 0 && record.isTagOnly())) return false;
  TokenPos token{text_};
  token.end = parent != 0 ? record.contentStart() : documentStart();
  for (int child = record.firstChild;; child = index_[child].next) {
    const int end = child != 0 ? index_[child].start : parent != 0 ? record.contentEnd() : size();
    while (token.end < end) {
      const int kind = nextToken(token);
      if (kind == MarkupNode::text || (kind == MarkupNode::cdataSection && !token.name().empty())) {
        return true;
      }
    }
    if (child == 0) break;
    token.end = index_[child].end();
  }
  // Remembered, because many elements may be added to one parent.
  if (index_.capacity() != 0) record.setFlag(ElemPos::noTextFlag);
  return false;
}

std::u16string_view MarkupEditor::lineEnd() noexcept {
  if (document_.lineEnd_.empty()) {
    const int feed = findUnit(text_, 0, '\n');
    const int carriageReturn = findUnit(textOf(0, feed), 0, '\r');
    const bool isPair = feed < size() && carriageReturn == feed - 1;
    const bool hasNone = feed == size() && carriageReturn == size();
    document_.lineEnd_ = isPair || hasNone ? u"\r\n" : carriageReturn < feed ? u"\r" : u"\n";
  }
  return document_.lineEnd_;
}

// --- what may stand where ------------------------------------------------------------------------

// Behind a byte-order mark.
int MarkupEditor::documentStart() const noexcept { return text_.starts_with(u'\xFEFF') ? 1 : 0; }

// Where the XML declaration ends; where it would begin if there is none.
int MarkupEditor::declarationEnd() const noexcept {
  TokenPos token{text_};
  token.end = documentStart();
  const int start = token.end;
  const bool isDeclaration = nextToken(token) == MarkupNode::processingInstruction &&
                             detail::compareTextNoCase(targetOf(token.name()), u"xml") == 0;
  return isDeclaration ? token.end : start;
}

bool MarkupEditor::hasDocumentType(int begin, int end) const noexcept {
  TokenPos token{text_};
  for (token.end = begin; token.end < end;) {
    if (nextToken(token) == MarkupNode::documentType) return true;
  }
  return false;
}

// Whether a node of this kind may stand at a place of the document level.
bool MarkupEditor::mayStandAt(int type, int offset) const noexcept {
  if (offset < declarationEnd()) return false;
  const int first = index_[0].firstChild;
  const int firstElement = first != 0 ? index_[first].start : size();
  const bool isBehindRoot = first != 0 && firstElement < offset;
  if (type == MarkupNode::element) return isBehindRoot || !hasDocumentType(offset, firstElement);
  if (type != MarkupNode::documentType) return true;
  return !isBehindRoot && !hasDocumentType(documentStart(), firstElement);
}

// Whether a node may be written at a place instead of `removed` units. `text` is what `markup` has
// between its delimiters.
bool MarkupEditor::isRightNode(int type, std::u16string_view text, std::u16string_view markup,
                               EditPlace place, int removed) const {
  const bool isDeclaration = type == MarkupNode::processingInstruction &&
                             detail::compareTextNoCase(targetOf(text), u"xml") == 0;
  if (isDeclaration) {
    const bool isFree = declarationEnd() == documentStart() || removed != 0;
    return place.parent == 0 && place.offset == documentStart() && isFree &&
           isRightDocument(markup) && keepsRight(place.offset, removed, markup);
  }
  if (type == MarkupNode::comment && !isRightComment(text)) return false;
  if (type == MarkupNode::processingInstruction && !isRightInstruction(text)) return false;
  if (place.parent != 0) return type != MarkupNode::documentType;
  if ((type & outside) == 0 || (removed == 0 && !mayStandAt(type, place.offset))) return false;
  const bool isForAll = type == MarkupNode::documentType || place.offset < declarationEnd();
  return !isForAll || keepsRight(place.offset, removed, markup);
}

// What a declaration or document type says holds for the whole document, so that a change in it is
// tried out.
bool MarkupEditor::keepsRight(int offset, int removed, std::u16string_view markup) const {
  if (!isRightDocument(text_)) return true;
  std::u16string changed;
  changed.reserve(text_.size() + markup.size());
  changed.append(textOf(0, offset)).append(markup).append(textOf(offset + removed, size()));
  return isRightDocument(changed);
}

// The markup of text that is put in front of other text: the two must not make the end of a CDATA
// section.
void MarkupEditor::keepFromClosing(std::u16string& markup, int offset) const {
  const bool isClosing = offset < size() && unitAt(offset) == u'>' && markup.ends_with(u']');
  if (!isClosing) return;
  const char16_t before = markup.size() > 1 ? markup[markup.size() - 2]
                          : offset > 0      ? unitAt(offset - 1)
                                            : u'\0';
  if (before == u']') markup.replace(markup.size() - 1, 1, u"&#93;");
}

// The same for text that comes together because something between is removed: the ">" behind `end`
// is to be written as a reference then.
bool MarkupEditor::wouldClose(int begin, int end) const noexcept {
  return begin >= 2 && end < size() && unitAt(begin - 2) == u']' && unitAt(begin - 1) == u']' &&
         unitAt(end) == u'>';
}

}  // namespace kpx::detail
