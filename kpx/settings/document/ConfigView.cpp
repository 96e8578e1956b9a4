#include "kpx/settings/document/ConfigView.h"

namespace kpx {

/// Walks over a document once and notes what the view holds.
class ConfigWalk {
 public:
  ConfigWalk(CMarkup& document, ConfigView& view) : document_(document), view_(view) {}

  void run() {
    int depth = 0;
    document_.ResetPos();
    for (;;) {
      if (document_.FindElem()) {
        if (isConfiguration(document_)) {
          note();
        } else {
          document_.ResetChildPos();
          document_.IntoElem();
          ++depth;
        }
      } else if (depth > 0) {
        document_.OutOfElem();
        --depth;
      } else {
        break;
      }
    }
    document_.ResetPos();
  }

 private:
  ConfigElement elementHere() const {
    ConfigElement element;
    document_.GetOffsets(element.begin, element.end);
    document_.GetContentOffsets(element.contentBegin, element.contentEnd);
    return element;
  }

  void note() {
    const std::u16string_view name = document_.ReadTagName();
    ViewedConfiguration& found = view_.all_.emplace_back();
    found.number = static_cast<int>(view_.all_.size());
    found.elementName = name;
    found.settingsClass = findSettingsClassByElement(name);
    found.element = elementHere();
    walk(found, [&] {
      if (document_.ReadTagName() != u"CFGClass") return false;
      const bool isFirst = !found.keyedClass.exists();
      if (isFirst) found.keyedClass = elementHere();
      noteColumns(found, isFirst);
      if (isFirst) found.ownColumns = found.columns.size();
      // Reading takes the columns of another one, too, which writing puts into the first.
      return isFirst;
    });
  }

  void noteColumns(ViewedConfiguration& found, bool isFirst) {
    walk(found, isFirst, [&] {
      if (document_.ReadTagName() != u"CFGCol") return false;
      ConfigColumn column{elementHere(), {}};
      walk(found, isFirst, [&] {
        if (column.value.exists() || document_.ReadTagName() != u"CFGValue") return false;
        column.value = elementHere();
        walk(found, isFirst, [] { return false; });
        return true;
      });
      found.columns.push_back(column);
      return true;
    });
  }

  /// Calls `take` with each child of the main element as the main element. What it does not take is
  /// foreign, and so is all that is neither an element nor white space; it is noted where `notes`
  /// says so: what lies in a foreign element is foreign with it.
  template <class Take>
  void walk(ViewedConfiguration& found, bool notes, Take take) {
    document_.ResetChildPos();
    if (!document_.IntoElem()) return;
    while (const int kind = document_.FindNode()) {
      if (kind == MarkupNode::whitespace) continue;
      int begin = 0;
      int end = 0;
      document_.GetOffsets(begin, end);
      if (kind == MarkupNode::element && take()) continue;
      if (notes) found.foreign.push_back({begin, kind});
    }
    document_.OutOfElem();
  }
  template <class Take>
  void walk(ViewedConfiguration& found, Take take) {
    walk(found, true, take);
  }

  CMarkup& document_;
  ConfigView& view_;
};

ConfigView::ConfigView(CMarkup& document) : text_(document.GetDoc()) {
  ConfigWalk(document, *this).run();
}

std::u16string_view ConfigView::markupOf(const ConfigElement& element) const noexcept {
  return text_.substr(static_cast<std::size_t>(element.begin),
                      static_cast<std::size_t>(element.end - element.begin));
}

AttributeReader ConfigView::attributesOf(const ConfigElement& element) const noexcept {
  if (!element.exists()) return {};
  return AttributeReader(
      text_.substr(static_cast<std::size_t>(element.begin),
                   static_cast<std::size_t>(element.contentBegin - element.begin)));
}

CString ConfigView::attributeOf(const ConfigElement& element, std::u16string_view name) const {
  CString value;
  attributesOf(element).read(name, value);
  return value;
}

int ConfigView::attributeOffset(const ConfigElement& element,
                                std::u16string_view name) const noexcept {
  AttributeReader attributes = attributesOf(element);
  return attributes.find(name) ? element.begin + attributes.valueBegin() : -1;
}

CString ConfigView::describe(const ForeignMarkup& foreign) const {
  switch (foreign.nodeType) {
    case MarkupNode::element: {
      const std::u16string_view rest = text_.substr(static_cast<std::size_t>(foreign.offset) + 1);
      return u"the element '" + CString(rest.substr(0, rest.find_first_of(u" \t\r\n/>"))) + u"'";
    }
    case MarkupNode::comment:
      return u"a comment";
    case MarkupNode::processingInstruction:
      return u"a processing instruction";
    default:
      return u"text";
  }
}

bool ConfigurationChoice::includes(const ViewedConfiguration& configuration) const noexcept {
  if (number != 0 && configuration.number != number) return false;
  return name.IsEmpty() || configuration.elementName == name.view() ||
         (configuration.settingsClass && configuration.settingsClass->name == name.view());
}

bool isConfiguration(CMarkup& document) {
  const std::u16string_view name = document.ReadTagName();
  if (!name.starts_with(u"CFGConfig")) return false;
  if (findSettingsClassByElement(name)) return true;
  document.ResetChildPos();
  return document.FindChildElem(u"CFGClass");
}

}  // namespace kpx
