#pragma once

#include "kpx/settings/ConfigParts.h"

namespace kpx::detail {

/// Tells a visitor of the parts of a configuration one by one, in the order of the document; see
/// `ConfigParts`. So a document costs no memory for them.
template <class Visitor>
class ConfigPartsWalk {
 public:
  ConfigPartsWalk(CMarkup& document, Visitor& visitor) : document_(document), visitor_(visitor) {}

  /// Requires the configuration as the document's main element, and leaves it so.
  void run() {
    visitor_.configuration(elementAt());
    bool hasClass = false;
    walk([&] {
      if (hasClass || document_.ReadTagName() != u"CFGClass") return false;
      hasClass = true;
      visitor_.keyedClass(elementAt());
      walkColumns();
      return true;
    });
  }

 private:
  ConfigElement elementAt() const {
    ConfigElement element;
    int end = 0;
    document_.GetOffsets(element.offset, end);
    element.attributes = document_.ReadAttribs();
    return element;
  }

  void walkColumns() {
    walk([&] {
      if (document_.ReadTagName() != u"CFGCol") return false;
      ConfigColumnParts column;
      column.column = elementAt();
      walk([&] {
        if (column.value || document_.ReadTagName() != u"CFGValue") return false;
        column.value = elementAt();
        walk([] { return false; });
        return true;
      });
      visitor_.column(column);
      return true;
    });
  }

  /// Calls `take` with each child of the main element as the main element; what it does not take
  /// is foreign, and so is all that is neither an element nor white space.
  template <class Take>
  void walk(Take take) {
    document_.ResetChildPos();
    if (!document_.IntoElem()) return;
    while (const int kind = document_.FindNode()) {
      if (kind == MarkupNode::whitespace) continue;
      if (kind == MarkupNode::element && take()) continue;
      int begin = 0;
      int end = 0;
      document_.GetOffsets(begin, end);
      visitor_.foreign(begin, [&] { return nameOf(kind); });
    }
    document_.OutOfElem();
  }

  CString nameOf(int kind) const {
    if (kind == MarkupNode::element)
      return u"the element '" + CString(document_.ReadTagName()) + u"'";
    if (kind == MarkupNode::comment) return u"a comment";
    return kind == MarkupNode::processingInstruction ? u"a processing instruction" : u"text";
  }

  CMarkup& document_;
  Visitor& visitor_;
};

}  // namespace kpx::detail
