#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/internal/MarkupEditor.h"
#include "kpx/xml/internal/PieceCheck.h"
#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {
namespace {

constexpr int textKinds = MarkupNode::text | MarkupNode::whitespace;

// The markup of a node with a text as GetData gives it back.
std::u16string composeNode(int type, std::u16string_view text, int flags) {
  std::u16string markup;
  switch (type) {
    case MarkupNode::text:
    case MarkupNode::whitespace:
      escapeInto(markup, text, flags & MarkupFlag::withReferences);
      break;
    case MarkupNode::cdataSection:
      markup.append(u"<![CDATA[").append(text).append(u"]]>");
      break;
    case MarkupNode::processingInstruction:
      markup.append(u"<?").append(text).append(u"?>");
      break;
    case MarkupNode::comment:
      markup.append(u"<!--").append(text).append(u"-->");
      break;
    case MarkupNode::documentType:
      markup = text;
      break;
    default:
      break;
  }
  return markup;
}

// The kind of the one node that a markup consists of; 0 if it is not one.
int kindOfNode(std::u16string_view markup) noexcept {
  TokenPos token;
  token.text = markup;
  const int kind = nextToken(token);
  const bool isWhole = static_cast<std::size_t>(token.end) == markup.size();
  return isWhole && kind > MarkupNode::element ? kind : 0;
}

}  // namespace

// Behind an XML declaration, which has to come first; else at the very begin of the content.
EditPlace MarkupEditor::asFirstNode(int parent) const noexcept {
  return {parent, 0, parent != 0 ? index_[parent].contentStart() : declarationEnd()};
}

EditPlace MarkupEditor::nodePlace(bool before) const noexcept {
  const int parent = document_.parentPos_;
  if (const int main = document_.mainPos_; main != 0) {
    if (before) return {parent, document_.x_ElemBefore(main), index_[main].start};
    return {parent, main, index_[main].end()};
  }
  if (document_.nodeLength_ != 0) {
    return {parent, document_.nodePreviousElem_,
            document_.nodeOffset_ + (before ? 0 : document_.nodeLength_)};
  }
  return before ? asFirstNode(parent) : EditPlace{parent, lastChild(parent), contentEnd(parent)};
}

bool MarkupEditor::addNode(int type, std::u16string_view text, bool before) {
  std::u16string markup = composeNode(type, text, 0);
  const EditPlace place = nodePlace(before);
  if (type == MarkupNode::text) keepFromClosing(markup, place.offset);
  Surroundings around;
  if (markup.empty() || kindOfNode(markup) != type || !isRightNode(type, text, markup, place, 0) ||
      !surround(place, false, around) ||
      !makeRoom(markup.size() + around.length(), static_cast<std::size_t>(around.removed))) {
    return false;
  }
  CMarkup::NodePos node{type, around.bodyStart(), static_cast<int>(markup.size()),
                        around.place.previous};
  changeAround(around, TextPieces(markup));
  index_[around.place.parent].clearFlag(ElemPos::noTextFlag);
  settleNode(node);
  document_.x_SetNode(node);
  return true;
}

bool MarkupEditor::setNode(std::u16string_view text, int flags) {
  const bool isText = (document_.nodeType_ & textKinds) != 0;
  const bool asCData = isText && (flags & MarkupFlag::withCData) != 0;
  const int type = asCData ? MarkupNode::cdataSection : document_.nodeType_;
  const std::u16string markup = composeNode(type, text, flags);
  const int kind = markup.empty() ? 0 : kindOfNode(markup);
  const CMarkup::NodePos old{document_.nodeType_, document_.nodeOffset_, document_.nodeLength_,
                             document_.nodePreviousElem_};
  const bool isSameKind = kind == type || (isText && !asCData && (kind & textKinds) != 0);
  const EditPlace place{document_.parentPos_, old.previousElem, old.offset};
  const bool hasReferences = isText && isReferenceData(flags);
  if (!isSameKind || !isRightNode(kind, text, markup, place, old.length) ||
      (hasReferences && !hasRightReferences(markup, DocumentRules(text_))) ||
      !makeRoom(markup.size(), static_cast<std::size_t>(old.length))) {
    return false;
  }
  index_[document_.parentPos_].clearFlag(ElemPos::noTextFlag);
  change(document_.parentPos_, old.previousElem, old.offset, old.length, TextPieces(markup));
  document_.nodeType_ = kind;
  for (auto& [name, saved] : document_.savedPositions_) {
    if (saved.node.length != 0 && saved.node.offset == old.offset) saved.node.type = kind;
  }
  return true;
}

bool MarkupEditor::removeNode() {
  const EditPlace place{document_.parentPos_, document_.nodePreviousElem_, document_.nodeOffset_};
  const int length = document_.nodeLength_;
  const bool isForAll = document_.nodeType_ == MarkupNode::documentType ||
                        (place.parent == 0 && place.offset < declarationEnd());
  if (isForAll && !keepsRight(place.offset, length, {})) return false;
  const bool isClosing = wouldClose(place.offset, place.offset + length);
  change(place.parent, place.previous, place.offset, length + isClosing,
         isClosing ? TextPieces(u"&gt;") : TextPieces());
  const CMarkup::NodePos before = nodeEndingAt(place);
  if (before.length != 0) {
    document_.x_SetNode(before);
  } else {
    document_.x_SetPos(place.parent, place.previous, 0);
  }
  return true;
}

}  // namespace kpx::detail
