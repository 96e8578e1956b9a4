#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/internal/MarkupEditor.h"
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
  EditPlace place{parent, 0, index_[parent].contentStart()};
  if (parent == 0 && text_.starts_with(u"<?xml ")) {
    TokenPos token;
    token.text = text_;
    if (nextToken(token) == MarkupNode::processingInstruction) place.offset = token.end;
  }
  return place;
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
  const std::u16string markup = composeNode(type, text, 0);
  Surroundings around;
  if (markup.empty() || kindOfNode(markup) != type || !surround(nodePlace(before), false, around) ||
      !makeRoom(markup.size() + around.length(), static_cast<std::size_t>(around.removed))) {
    return false;
  }
  CMarkup::NodePos node{type, around.bodyStart(), static_cast<int>(markup.size()),
                        around.place.previous};
  changeAround(around, TextPieces(markup));
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
  if (!isSameKind || !makeRoom(markup.size(), static_cast<std::size_t>(old.length))) return false;
  change(document_.parentPos_, old.previousElem, old.offset, old.length, TextPieces(markup));
  document_.nodeType_ = kind;
  for (auto& [name, saved] : document_.savedPositions_) {
    if (saved.node.length != 0 && saved.node.offset == old.offset) saved.node.type = kind;
  }
  return true;
}

void MarkupEditor::removeNode() noexcept {
  const EditPlace place{document_.parentPos_, document_.nodePreviousElem_, document_.nodeOffset_};
  change(place.parent, place.previous, place.offset, document_.nodeLength_, {});
  const CMarkup::NodePos before = nodeEndingAt(place);
  if (before.length != 0) {
    document_.x_SetNode(before);
  } else {
    document_.x_SetPos(place.parent, place.previous, 0);
  }
}

}  // namespace kpx::detail
