#include "kpx/xml/internal/MarkupEditor.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <iterator>
#include <limits>

#include "kpx/platform/Memory.h"
#include "kpx/xml/internal/NameUnits.h"
#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {
namespace {

constexpr bool isBlank(char16_t unit) noexcept { return unit == u' ' || unit == u'\t'; }

}  // namespace

// --- text ----------------------------------------------------------------------------------------

// Makes sure that the text can grow without an allocation; false if it would get too long.
bool MarkupEditor::makeRoom(std::size_t added, std::size_t removed) {
  constexpr auto maxSize = static_cast<std::size_t>(std::numeric_limits<int>::max());
  if (index_.capacity() == 0) index_.reset();
  if (added <= removed) return true;
  const std::size_t by = added - removed;
  if (by > maxSize - text_.size()) return false;
  const std::size_t needed = text_.size() + by;
  if (needed <= text_.capacity()) return true;
  // Doubled here, because not every library does so when it is asked for a certain room; in a
  // text of its own, so that large pages are asked for before anything is written.
  std::u16string grown;
  grown.reserve(std::max(needed, 2 * text_.capacity()));
  preferLargePages(grown.data(), grown.capacity() * sizeof(char16_t));
  grown.append(text_);
  text_.swap(grown);
  return true;
}

// A text that lies within the document would move while the document changes.
std::u16string_view MarkupEditor::keepApart(std::u16string_view text, std::u16string& copy) const {
  const std::less<const char16_t*> less;
  if (text.empty() || less(text.data(), text_.data()) ||
      less(text_.data() + text_.size(), text.data())) {
    return text;
  }
  copy = text;
  return copy;
}

// Replaces text behind the element `previous` in `parent` (0: behind its start tag, which counts
// as changed within too) and moves everything that follows. There is room for it.
void MarkupEditor::change(int parent, int previous, int offset, int removed,
                          const TextPieces& pieces) noexcept {
  const auto inserted = static_cast<int>(pieces.length());
  const int by = inserted - removed;
  const auto behind = static_cast<std::size_t>(size() - offset - removed);
  if (by > 0) text_.resize(text_.size() + static_cast<std::size_t>(by));
  char16_t* const at = text_.data() + offset;
  if (by != 0) std::memmove(at + inserted, at + removed, behind * sizeof(char16_t));
  pieces.writeTo(at);
  if (by < 0) text_.resize(text_.size() - static_cast<std::size_t>(-by));
  if (by != 0) moveRecords(parent, previous, by);
  movePositions(offset, removed, inserted);
}

bool MarkupEditor::isLineEnd(int offset) const noexcept {
  return offset < size() && (unitAt(offset) == u'\n' || unitAt(offset) == u'\r');
}

// Behind the line break that follows with only blanks between; else the offset itself.
int MarkupEditor::behindLineEnd(int offset) const noexcept {
  int position = offset;
  while (position < size() && isBlank(unitAt(position))) ++position;
  if (!isLineEnd(position)) return offset;
  const bool isPair =
      unitAt(position) == u'\r' && position + 1 < size() && unitAt(position + 1) == u'\n';
  return position + (isPair ? 2 : 1);
}

// The begin of the line if there are only blanks between; else the offset itself.
int MarkupEditor::lineBeginOf(int offset) const noexcept {
  int position = offset;
  while (position > 0 && isBlank(unitAt(position - 1))) --position;
  return position == 0 || isLineEnd(position - 1) ? position : offset;
}

// --- records -------------------------------------------------------------------------------------

int MarkupEditor::lastChild(int parent) const noexcept {
  const int first = index_[parent].firstChild;
  return first != 0 ? index_[first].previous : 0;
}

// Moves the records of all elements that lie behind `previous` in `parent` (0: of all in it and
// behind it), and makes those longer that the change is in. Costs nothing for what lies before.
void MarkupEditor::moveRecords(int parent, int previous, int by) noexcept {
  for (;;) {
    int element = previous != 0 ? index_[previous].next : index_[parent].firstChild;
    // These siblings and all that is in them, in the order of the document.
    while (element != 0) {
      ElemPos* record = &index_[element];
      record->start += by;
      if (record->firstChild != 0) {
        element = record->firstChild;
        continue;
      }
      while (record->next == 0 && record->parent != parent) record = &index_[record->parent];
      element = record->next;
    }
    // A change near the end mostly has nothing behind it: up to the next ancestor that has.
    do {
      if (parent == 0) {
        index_[0].length = size();
        return;
      }
      ElemPos& record = index_[parent];
      record.length += by;
      previous = parent;
      parent = record.parent;
    } while (index_[previous].next == 0);
  }
}

// Puts a record behind its sibling; the text has been changed before.
void MarkupEditor::linkElement(int element, int parent, int previous) noexcept {
  ElemPos& record = index_[element];
  record.parent = parent;
  record.clearFlag(ElemPos::firstChildFlag);
  const int first = index_[parent].firstChild;
  if (previous != 0) {
    record.previous = previous;
    record.next = index_[previous].next;
    index_[previous].next = element;
    index_[record.next != 0 ? record.next : first].previous = element;
  } else {
    record.setFlag(ElemPos::firstChildFlag);
    record.next = first;
    record.previous = element;
    if (first != 0) {
      record.previous = index_[first].previous;
      index_[first].previous = element;
      index_[first].clearFlag(ElemPos::firstChildFlag);
    }
    index_[parent].firstChild = element;
  }
  forEachNode([&](int nodeParent, CMarkup::NodePos& node) {
    if (nodeParent == parent && node.previousElem == previous && node.offset > record.start) {
      node.previousElem = element;
    }
    return true;
  });
}

void MarkupEditor::unlinkElement(int element) noexcept {
  const ElemPos& record = index_[element];
  const int before = document_.x_ElemBefore(element);
  forEachNode([&](int, CMarkup::NodePos& node) {
    if (node.previousElem == element) node.previousElem = before;
    return true;
  });
  const int next = record.next;
  if (before != 0) {
    index_[before].next = next;
    const int first = index_[record.parent].firstChild;
    index_[next != 0 ? next : first].previous = before;
    return;
  }
  index_[record.parent].firstChild = next;
  if (next != 0) {
    index_[next].setFlag(ElemPos::firstChildFlag);
    index_[next].previous = record.previous;
  }
}

// Releases the records of an element and of all in it, children first.
void MarkupEditor::releaseElements(int top) noexcept {
  for (int element = top;;) {
    while (index_[element].firstChild != 0) {
      const int child = index_[element].firstChild;
      index_[element].firstChild = 0;
      element = child;
    }
    const int next = index_[element].next;
    const int parent = index_[element].parent;
    index_.x_ReleasePos(element);
    if (element == top) return;
    element = next != 0 ? next : parent;
  }
}

// --- positions -----------------------------------------------------------------------------------

// Calls `body(parent, node)` for the current node and for those of saved positions; where it
// answers false, the position is forgotten.
template <class Body>
void MarkupEditor::forEachNode(Body body) noexcept {
  CMarkup& document = document_;
  if (document.nodeLength_ != 0) {
    CMarkup::NodePos node{document.nodeType_, document.nodeOffset_, document.nodeLength_,
                          document.nodePreviousElem_};
    if (!body(document.parentPos_, node)) node = {};
    document.nodeType_ = node.type;
    document.nodeOffset_ = node.offset;
    document.nodeLength_ = node.length;
    document.nodePreviousElem_ = node.previousElem;
  }
  for (auto saved = document.savedPositions_.begin(); saved != document.savedPositions_.end();) {
    CMarkup::NodePos& node = saved->second.node;
    const bool keep = node.length == 0 || body(saved->second.parent, node);
    saved = keep ? std::next(saved) : document.savedPositions_.erase(saved);
  }
}

// Text grows and shrinks with what is put in, joined or taken out beside it: finds the extent and
// the kind of the node anew.
void MarkupEditor::settleNode(CMarkup::NodePos& node) const noexcept {
  constexpr int settledKinds = MarkupNode::text | MarkupNode::whitespace;
  if ((node.type & settledKinds) == 0) return;
  const int end = node.offset;
  while (node.offset > 0 && unitAt(node.offset - 1) != u'>') --node.offset;
  TokenPos token;
  token.text = text_;
  token.end = node.offset;
  const int kind = nextToken(token);
  if ((kind & settledKinds) != 0 && kind > 0) {
    node.type = kind;
    node.length = token.length();
  } else {
    node.offset = end;
  }
}

void MarkupEditor::moveNodes(int offset, int removed, int inserted) noexcept {
  forEachNode([&](int, CMarkup::NodePos& node) {
    const int end = node.offset + node.length;
    if (node.offset == offset && node.length == removed) {
      node.length = inserted;
      return inserted != 0;
    }
    if (node.offset >= offset && node.offset < offset + removed) return false;
    const bool adjoins = node.offset <= offset + removed && end >= offset;
    if (node.offset >= offset + removed) node.offset += inserted - removed;
    if (adjoins) settleNode(node);
    return true;
  });
}

bool MarkupEditor::isWithin(int element, int top) const noexcept {
  while (element != 0 && element != top) element = index_[element].parent;
  return element == top;
}

void MarkupEditor::forgetPositionsIn(int element) noexcept {
  std::erase_if(document_.savedPositions_, [&](const auto& entry) {
    const CMarkup::SavedPos& saved = entry.second;
    return isWithin(saved.parent, element) || isWithin(saved.main, element) ||
           isWithin(saved.child, element);
  });
}

// --- places --------------------------------------------------------------------------------------

// Where the last node of a parent can end. Behind a tag that the document ends in, nothing would
// be read.
int MarkupEditor::contentEnd(int parent) const noexcept {
  if (parent != 0) return index_[parent].contentEnd();
  const int last = lastChild(0);
  TokenPos token;
  token.text = text_;
  token.end = last != 0 ? index_[last].end() : 0;
  for (;;) {
    const int kind = nextToken(token);
    if (kind == TokenKind::endOfText) return size();
    const bool isCut = kind == TokenKind::syntaxError && unitAt(token.end - 1) != u'>';
    if (kind == TokenKind::unterminated || isCut) return token.start;
  }
}

// The node behind the element `place.previous` that ends at a place, or goes on behind it; of
// length 0 if there is none.
CMarkup::NodePos MarkupEditor::nodeEndingAt(EditPlace place) const noexcept {
  TokenPos token;
  token.text = text_;
  token.end =
      place.previous != 0 ? index_[place.previous].end() : index_[place.parent].contentStart();
  CMarkup::NodePos node;
  while (token.end < place.offset) {
    const int kind = nextToken(token);
    if (token.end < place.offset || token.start >= place.offset) continue;
    const int type = kind == TokenKind::endTag ? MarkupNode::loneEndTag : kind;
    if (type > MarkupNode::element) node = {type, token.start, token.length(), place.previous};
  }
  return node;
}

EditPlace MarkupEditor::behind(int element) noexcept {
  const ElemPos& record = index_[element];
  const int end = record.end();
  return {record.parent, element, holdsText(record.parent) ? end : behindLineEnd(end)};
}

EditPlace MarkupEditor::before(int element) noexcept {
  const ElemPos& record = index_[element];
  return {record.parent, document_.x_ElemBefore(element),
          holdsText(record.parent) ? record.start : lineBeginOf(record.start)};
}

EditPlace MarkupEditor::behindNode() noexcept {
  const int parent = document_.parentPos_;
  const int end = document_.nodeOffset_ + document_.nodeLength_;
  return {parent, document_.nodePreviousElem_, holdsText(parent) ? end : behindLineEnd(end)};
}

EditPlace MarkupEditor::beforeNode() noexcept {
  const int parent = document_.parentPos_;
  const int begin = document_.nodeOffset_;
  return {parent, document_.nodePreviousElem_, holdsText(parent) ? begin : lineBeginOf(begin)};
}

EditPlace MarkupEditor::asLast(int parent) noexcept {
  const int end = contentEnd(parent);
  return {parent, lastChild(parent), holdsText(parent) ? end : lineBeginOf(end)};
}

EditPlace MarkupEditor::asFirst(int parent) noexcept {
  const int first = index_[parent].firstChild;
  return first != 0 ? before(first) : asLast(parent);
}

}  // namespace kpx::detail
