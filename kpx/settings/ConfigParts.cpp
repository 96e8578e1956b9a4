#include "kpx/settings/ConfigParts.h"

#include "kpx/settings/internal/ConfigWalk.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/TimeValue.h"

namespace kpx {
namespace {

ConfigElement elementAt(const CMarkup& document) {
  ConfigElement element;
  int end = 0;
  document.GetOffsets(element.offset, end);
  element.attributes = document.ReadAttribs();
  return element;
}

class PartsReader {
 public:
  PartsReader(CMarkup& document, ConfigParts& parts) : document_(document), parts_(parts) {}

  /// Reads the configuration at the main element.
  void read() {
    int begin = 0;
    int end = 0;
    document_.GetOffsets(begin, end);
    parts_.elementName = document_.GetTagName();
    parts_.length = end - begin;
    parts_.element = elementAt(document_);
    walk([&] {
      if (parts_.keyedClass || document_.GetTagName() != u"CFGClass") return false;
      parts_.keyedClass = elementAt(document_);
      readColumns();
      return true;
    });
  }

 private:
  void readColumns() {
    walk([&] {
      if (document_.GetTagName() != u"CFGCol") return false;
      ConfigColumnParts column;
      column.column = elementAt(document_);
      walk([&] {
        if (column.value || document_.GetTagName() != u"CFGValue") return false;
        column.value = elementAt(document_);
        walk([] { return false; });
        return true;
      });
      parts_.columns.push_back(column);
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
      if (kind != MarkupNode::element || !take()) noteForeign(kind);
    }
    document_.OutOfElem();
  }

  void noteForeign(int kind) {
    ForeignMarkup& foreign = parts_.foreign.emplace_back();
    int end = 0;
    document_.GetOffsets(foreign.offset, end);
    CString& what = foreign.what;
    if (kind == MarkupNode::element) {
      what.Format(u"the element '%s'", document_.GetTagName());
    } else if (kind == MarkupNode::comment) {
      what = u"a comment";
    } else if (kind == MarkupNode::processingInstruction) {
      what = u"a processing instruction";
    } else {
      what = u"text";
    }
  }

  CMarkup& document_;
  ConfigParts& parts_;
};

}  // namespace

bool isAsWritten(AttributeKind kind, const CString& text) {
  if (kind == AttributeKind::integer) return longAsText(utlTextAsLong(text)) == text;
  if (kind == AttributeKind::time) return timeDoubleText(timeDoubleOf(text)) == text;
  return true;
}

std::vector<ConfigParts> configPartsOf(CMarkup& document) {
  std::vector<ConfigParts> all;
  detail::visitConfigurations(document, [&] {
    PartsReader(document, all.emplace_back()).read();
    return true;
  });
  document.ResetPos();
  return all;
}

}  // namespace kpx
