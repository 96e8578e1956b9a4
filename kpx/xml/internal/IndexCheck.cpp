#include "kpx/xml/internal/IndexCheck.h"

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/OpenNames.h"

namespace kpx::detail {

IndexCheck::IndexCheck(std::u16string_view text, int docFlags, const ElementIndex& index)
    : text_(text), ignoreCase_((docFlags & MarkupFlag::ignoreCase) != 0), index_(index) {}

bool IndexCheck::wrong(int index, const char* what) {
  problem_ = "record " + std::to_string(index) + ": " + what;
  return false;
}

bool IndexCheck::tree() {
  if (index_.capacity() == 0) return text_.empty() || wrong(0, "a text without an index");
  if (!document()) return false;
  seen_.assign(static_cast<std::size_t>(index_.usedCount()), false);
  int elements = 0;
  // Parents in document order; the children of each are checked together.
  for (int parent = 0;;) {
    if (!children(parent)) return false;
    if (index_[parent].firstChild != 0) {
      parent = index_[parent].firstChild;
    } else {
      while (parent != 0 && index_[parent].next == 0) parent = index_[parent].parent;
      if (parent == 0) break;
      parent = index_[parent].next;
    }
    ++elements;
  }
  return freeList(elements);
}

bool IndexCheck::document() {
  const ElemPos& document = index_[0];
  if (index_.usedCount() < 1 || index_.usedCount() > index_.capacity()) {
    return wrong(0, "used count outside the capacity");
  }
  if (document.start != 0 || document.length != static_cast<int>(text_.size())) {
    return wrong(0, "extent is not the text");
  }
  if (document.tagLengths != 0 || document.level() != 0 || document.parent != 0 ||
      document.next != 0 || document.previous != 0) {
    return wrong(0, "a field that is always 0 is set");
  }
  return true;
}

bool IndexCheck::children(int parent) {
  const ElemPos& above = index_[parent];
  if (above.firstChild == 0) return true;
  if (parent != 0 && above.isTagOnly()) return wrong(parent, "only a start tag, but has children");
  int lowest = parent == 0 ? 0 : above.contentStart();
  const int highest = parent == 0 ? above.length : above.contentEnd();
  int previous = 0;
  for (int child = above.firstChild; child != 0; child = index_[child].next) {
    if (!element(child, parent, previous, lowest, highest)) return false;
    lowest = index_[child].end();
    previous = child;
  }
  if (index_[above.firstChild].previous != previous) {
    return wrong(above.firstChild, "first child does not point to the last one");
  }
  return true;
}

bool IndexCheck::element(int index, int parent, int previous, int lowest, int highest) {
  if (index < 1 || index >= index_.usedCount()) return wrong(index, "linked but never handed out");
  if (seen_[static_cast<std::size_t>(index)]) return wrong(index, "linked twice");
  seen_[static_cast<std::size_t>(index)] = true;
  const ElemPos& element = index_[index];
  if (element.parent != parent) return wrong(index, "another parent than the one that links it");
  if (element.hasFlag(ElemPos::firstChildFlag) != (previous == 0)) {
    return wrong(index, "first-child flag");
  }
  if (previous != 0 && element.previous != previous) return wrong(index, "previous sibling");
  if (element.level() != (parent == 0 ? 0 : index_[parent].level() + 1)) {
    return wrong(index, "level");
  }
  if (element.length < element.startTagLength() + element.endTagLength()) {
    return wrong(index, "shorter than its tags");
  }
  if (element.start < lowest) return wrong(index, "begins before its parent or sibling allows");
  if (element.length > highest - element.start) return wrong(index, "ends behind its parent");
  return tags(index);
}

bool IndexCheck::tags(int index) {
  const ElemPos& element = index_[index];
  TokenPos token{text_};
  token.end = element.start;
  if (nextToken(token) != MarkupNode::element) return wrong(index, "no start tag in the text");
  if (token.length() != element.startTagLength()) return wrong(index, "start tag's length");
  const bool unended = element.hasFlag(ElemPos::unendedFlag);
  if (unended || token.isEmptyElement()) {
    if (unended && token.isEmptyElement()) return wrong(index, "empty and yet unended");
    if (element.endTagLength() != 0) return wrong(index, "an end tag where there can be none");
    return element.isTagOnly() || wrong(index, "longer than its only tag");
  }
  token.end = element.contentEnd();
  if (nextToken(token) != TokenKind::endTag) return wrong(index, "no end tag in the text");
  if (token.length() != element.endTagLength()) return wrong(index, "end tag's length");
  return closesTagAt(text_, element.start + 1, token.name(), ignoreCase_) ||
         wrong(index, "the end tag has another name");
}

bool IndexCheck::freeList(int elements) {
  int count = 0;
  for (int index = index_.freeHead(); index != 0; index = index_[index].next) {
    if (index < 0 || index >= index_.usedCount()) return wrong(index, "free, never handed out");
    if (seen_[static_cast<std::size_t>(index)]) return wrong(index, "free, but linked");
    if (++count > index_.freeCount()) return wrong(index, "more free records than are counted");
  }
  if (count != index_.freeCount()) return wrong(0, "fewer free records than are counted");
  if (elements + count + 1 != index_.usedCount()) return wrong(0, "records are lost");
  return true;
}

bool IndexCheck::place(int parent, int main, int child) {
  if (!inUse(parent)) return wrong(parent, "parent position is not in use");
  if (!inUse(main)) return wrong(main, "main position is not in use");
  if (!inUse(child)) return wrong(child, "child position is not in use");
  if (main != 0 && index_[main].parent != parent) {
    return wrong(main, "main position is no child of the parent position");
  }
  if (child == 0) return true;
  if (main == 0 && parent != 0) return wrong(child, "child position without a main position");
  return index_[child].parent == main ||
         wrong(child, "child position is no child of the main position");
}

bool IndexCheck::node(int parent, int main, int type, int offset, int length) {
  if (type == 0 || type == MarkupNode::element) {
    if ((type == 0) != (main == 0)) return wrong(main, "node type");
    return (offset == 0 && length == 0) || wrong(main, "node extent with no node");
  }
  if (main != 0) return wrong(main, "node beside a main position");
  const ElemPos& above = index_[parent];
  const int lowest = parent == 0 ? 0 : above.contentStart();
  const int highest = parent == 0 ? above.length : above.contentEnd();
  if (length <= 0 || offset < lowest || length > highest - offset) {
    return wrong(parent, "node outside of its parent");
  }
  TokenPos token{text_.substr(0, static_cast<std::size_t>(highest))};
  token.end = offset;
  const int kind = nextToken(token);
  if (kind != (type == MarkupNode::loneEndTag ? TokenKind::endTag : type)) {
    return wrong(parent, "node of another type in the text");
  }
  return token.length() == length || wrong(parent, "node's length");
}

bool IndexCheck::precedes(int parent, int element, int offset) {
  if (!inUse(element) || element == 0 || index_[element].parent != parent) {
    return wrong(element, "remembered before a node of another parent");
  }
  return index_[element].end() <= offset || wrong(element, "remembered before a node behind it");
}

}  // namespace kpx::detail
