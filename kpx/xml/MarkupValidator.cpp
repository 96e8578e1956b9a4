#include "kpx/xml/MarkupValidator.h"

#include <vector>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/IndexCheck.h"

namespace kpx {
namespace {

using detail::ElementIndex;
using detail::IndexCheck;

// The record that follows in document order, 0 behind the last.
int following(const ElementIndex& index, int element) {
  if (index[element].firstChild != 0) return index[element].firstChild;
  while (element != 0 && index[element].next == 0) element = index[element].parent;
  return element == 0 ? 0 : index[element].next;
}

std::string compare(const ElementIndex& edited, const ElementIndex& parsed) {
  // The order and the levels of the elements fix the tree.
  int left = 0;
  int right = 0;
  do {
    const ElemPos& a = edited[left];
    const ElemPos& b = parsed[right];
    if (a.start != b.start || a.length != b.length || a.tagLengths != b.tagLengths ||
        ((a.levelAndFlags ^ b.levelAndFlags) & ~(ElemPos::callerFlags | ElemPos::noTextFlag)) !=
            0) {
      return "record " + std::to_string(left) + " differs from what a parse of the text makes";
    }
    left = following(edited, left);
    right = following(parsed, right);
  } while (left != 0 && right != 0);
  if (left != right) return "a parse of the text makes another number of elements";
  return {};
}

}  // namespace

std::string MarkupValidator::check(const CMarkup& document) {
  IndexCheck check(document.doc_, document.docFlags_, document.index_);
  if (!check.tree()) return check.problem();

  const auto place = [&](int parent, int main, int child, int type, int offset, int length,
                         int previousElem) {
    return check.place(parent, main, child) && check.node(parent, main, type, offset, length) &&
           (previousElem == 0 || check.precedes(parent, previousElem, offset));
  };
  if (!place(document.parentPos_, document.mainPos_, document.childPos_, document.nodeType_,
             document.nodeOffset_, document.nodeLength_, document.nodePreviousElem_)) {
    return check.problem();
  }
  for (const auto& [name, saved] : document.savedPositions_) {
    if (!place(saved.parent, saved.main, saved.child, saved.node.type, saved.node.offset,
               saved.node.length, saved.node.previousElem)) {
      return "saved position: " + check.problem();
    }
  }

  if (!document.IsWellFormed()) return {};
  CMarkup again(document.docFlags_);
  if (!again.SetDoc(document.doc_)) return "the text is not well formed any more";
  return compare(document.index_, again.index_);
}

}  // namespace kpx
