#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/NameUnits.h"
#include "kpx/xml/internal/Tokenizer.h"
#include "kpx/xml/Operations.h"

namespace kpx {

// --- the elements that an operation is about -----------------------------------------------------

void CMarkup::x_SetNode(const NodePos& node) noexcept {
  x_SetPos(parentPos_, 0, 0);
  nodeType_ = node.type;
  nodeOffset_ = node.offset;
  nodeLength_ = node.length;
  nodePreviousElem_ = node.previousElem;
}

int CMarkup::x_ChildElem() const noexcept {
  if (childPos_ != 0) return childPos_;
  return parentPos_ == 0 && mainPos_ == 0 ? index_[0].firstChild : 0;
}

int CMarkup::x_ChildParent() const noexcept {
  if (mainPos_ != 0) return mainPos_;
  return parentPos_ == 0 ? 0 : -1;
}

// The element before the given one, 0 for a first one.
int CMarkup::x_ElemBefore(int element) const noexcept {
  const ElemPos& record = index_[element];
  return record.hasFlag(ElemPos::firstChildFlag) ? 0 : record.previous;
}

// The next (previous) child of `parent` with this name behind (before) `from`; without `from`,
// the first (last) one.
int CMarkup::x_FindElem(int parent, int from, std::u16string_view name,
                        bool forward) const noexcept {
  int element;
  if (from != 0) {
    element = forward ? index_[from].next : x_ElemBefore(from);
  } else {
    element = index_[parent].firstChild;
    if (!forward && element != 0) element = index_[element].previous;
  }
  const bool ignoreCase = (docFlags_ & MarkupFlag::ignoreCase) != 0;
  while (element != 0 && !name.empty() &&
         !detail::hasTagName(x_StartTag(element), name, ignoreCase)) {
    element = forward ? index_[element].next : x_ElemBefore(element);
  }
  return element;
}

// --- moving --------------------------------------------------------------------------------------

void CMarkup::ResetPos() { x_SetPos(0, 0, 0); }
void CMarkup::ResetMainPos() { x_SetPos(parentPos_, 0, 0); }
void CMarkup::ResetChildPos() { x_SetPos(parentPos_, mainPos_, 0); }

bool CMarkup::FindElem(MCD_CSTR name) {
  const int from = nodeLength_ != 0 ? nodePreviousElem_ : mainPos_;
  const int found = x_FindElem(parentPos_, from, name, true);
  if (found != 0) x_SetPos(parentPos_, found, 0);
  return found != 0;
}

bool CMarkup::FindPrevElem(MCD_CSTR name) {
  int found = 0;
  if (nodeLength_ == 0) {
    found = x_FindElem(parentPos_, mainPos_, name, false);
  } else if (nodePreviousElem_ != 0) {
    const int behind = index_[nodePreviousElem_].next;
    found = x_FindElem(parentPos_, behind, name, false);
  }
  if (found != 0) x_SetPos(parentPos_, found, 0);
  return found != 0;
}

bool CMarkup::FindChildElem(MCD_CSTR name) {
  int parent = x_ChildParent();
  if (parent < 0) parent = index_[parentPos_].firstChild;
  if (parent == 0 && parentPos_ != 0) return false;
  const int found = x_FindElem(parent, childPos_, name, true);
  if (found != 0) x_SetPos(parentPos_, parent, found);
  return found != 0;
}

bool CMarkup::FindPrevChildElem(MCD_CSTR name) {
  int parent = x_ChildParent();
  if (parent < 0) parent = index_[parentPos_].firstChild;
  if (parent == 0 && parentPos_ != 0) return false;
  const int found = x_FindElem(parent, childPos_, name, false);
  if (found != 0) x_SetPos(parentPos_, parent, found);
  return found != 0;
}

bool CMarkup::IntoElem() {
  if (mainPos_ != 0) {
    x_SetPos(mainPos_, childPos_, 0);
    return true;
  }
  const int child = x_ChildElem();
  if (child == 0) return false;
  x_SetPos(0, child, 0);
  return true;
}

bool CMarkup::OutOfElem() {
  if (parentPos_ != 0) {
    x_SetPos(index_[parentPos_].parent, parentPos_, mainPos_);
    return true;
  }
  if (mainPos_ == 0) return false;
  x_SetPos(0, 0, mainPos_);
  return true;
}

bool CMarkup::SavePos(MCD_CSTR name) {
  return Guarded("CMarkup::SavePos"_xml, false, [&] {
    const SavedPos saved{
        parentPos_, mainPos_, childPos_, {nodeType_, nodeOffset_, nodeLength_, nodePreviousElem_}};
    savedPositions_.insert_or_assign(std::u16string(name.view()), saved);
    return true;
  });
}

bool CMarkup::RestorePos(MCD_CSTR name) {
  const auto found = savedPositions_.find(name.view());
  if (found == savedPositions_.end()) return false;
  const SavedPos& saved = found->second;
  x_SetPos(saved.parent, saved.main, saved.child);
  if (saved.node.length != 0) {
    x_SetNode(saved.node);
    childPos_ = saved.child;
  }
  return true;
}

int CMarkup::FindNode(int types) {
  const ElemPos& parent = index_[parentPos_];
  int previous = mainPos_;
  int position = parent.contentStart();
  if (nodeLength_ != 0) {
    previous = nodePreviousElem_;
    position = nodeOffset_ + nodeLength_;
  } else if (mainPos_ != 0) {
    position = index_[mainPos_].end();
  }
  int next = x_FindElem(parentPos_, previous, {}, true);
  detail::TokenPos token;
  token.text = doc_.view();
  while (position < parent.contentEnd()) {
    int kind = MarkupNode::element;
    if (next != 0 && index_[next].start == position) {
      if (types == 0 || (types & kind) != 0) {
        x_SetPos(parentPos_, next, 0);
        return kind;
      }
      position = index_[next].end();
      previous = next;
      next = index_[next].next;
      continue;
    }
    token.end = position;
    kind = detail::nextToken(token);
    if (kind == detail::TokenKind::endTag) kind = MarkupNode::loneEndTag;
    // A start tag without a record is one that the index could not hold.
    if (kind > MarkupNode::element && (types == 0 || (types & kind) != 0)) {
      x_SetNode({kind, token.start, token.length(), previous});
      return kind;
    }
    position = token.end;
  }
  return 0;
}

}  // namespace kpx
