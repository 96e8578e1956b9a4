#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/settings/Catalogue.h"
#include "kpx/text/CString.h"
#include "kpx/xml/AttributeReader.h"
#include "kpx/xml/CMarkup.h"

namespace kpx {

/// Where an element stands in the text of its document, in UTF-16 units. Of an element without an
/// end tag the content is empty and lies behind it.
struct ConfigElement {
  int begin = 0;
  int contentBegin = 0;
  int contentEnd = 0;
  int end = 0;

  bool exists() const noexcept { return end > begin; }
};

/// A "CFGCol" and its "CFGValue", if it has one.
struct ConfigColumn {
  ConfigElement column;
  ConfigElement value;
};

/// What stands inside a configuration although the suite neither writes nor reads it there: text,
/// a comment, another element, or one that stands a second time where writing makes one.
struct ForeignMarkup {
  int offset = 0;
  int nodeType = 0;  // of `MarkupNode`
};

/// One configuration of a document.
struct ViewedConfiguration {
  int number = 0;  // among those of the document, from 1
  std::u16string_view elementName;
  const SettingsClass* settingsClass = nullptr;  // nullptr: the catalogue does not know it
  ConfigElement element;
  ConfigElement keyedClass;            // its first "CFGClass"
  std::vector<ConfigColumn> columns;   // in the document's order, of all its "CFGClass" elements
  std::size_t ownColumns = 0;          // how many of them stand in the first, as those written do
  std::vector<ForeignMarkup> foreign;  // in the document's order
};

/// Which configurations of a document are meant.
struct ConfigurationChoice {
  CString name;    // of the class or of the element; empty: any
  int number = 0;  // `ViewedConfiguration::number`; 0: any

  KPX_API bool includes(const ViewedConfiguration& configuration) const noexcept;
};

/// All configurations of a document, at any depth, in its order: elements whose name begins with
/// "CFGConfig" and that the catalogue knows or that have a "CFGClass" child. What lies inside a
/// configuration is not searched for others.
///
/// Made by one walk over the document. Holds offsets alone and copies nothing, so it is valid until
/// the document is changed, moved or destroyed.
class KPX_API ConfigView {
 public:
  /// Views nothing.
  ConfigView() = default;
  /// Leaves the position of the document at its start.
  explicit ConfigView(CMarkup& document);

  const std::vector<ViewedConfiguration>& configurations() const noexcept { return all_; }
  int count() const noexcept { return static_cast<int>(all_.size()); }
  const ViewedConfiguration& at(int index) const noexcept {
    return all_[static_cast<std::size_t>(index)];
  }

  /// The whole text of the document.
  std::u16string_view text() const noexcept { return text_; }
  std::u16string_view markupOf(const ConfigElement& element) const noexcept;
  /// The attributes of an element's start tag; none where there is no element.
  AttributeReader attributesOf(const ConfigElement& element) const noexcept;
  /// One of them; empty if it is missing.
  CString attributeOf(const ConfigElement& element, std::u16string_view name) const;
  /// Where the value of one of them begins in the text; -1 if it is missing.
  int attributeOffset(const ConfigElement& element, std::u16string_view name) const noexcept;

  /// The configuration's own name.
  CString nameOf(const ViewedConfiguration& configuration) const {
    return attributeOf(configuration.element, u"Name");
  }
  CString keyOf(const ConfigColumn& column) const { return attributeOf(column.column, u"Name"); }
  /// As reading takes it: without a value it is empty.
  CString valueOf(const ConfigColumn& column) const { return attributeOf(column.value, u"Value"); }
  bool hasValue(const ConfigColumn& column) const noexcept {
    return attributeOffset(column.value, u"Value") >= 0;
  }

  /// What is foreign, for a message: "the element 'x'", "a comment".
  CString describe(const ForeignMarkup& foreign) const;

 private:
  friend class ConfigWalk;

  std::u16string_view text_;
  std::vector<ViewedConfiguration> all_;
};

/// Whether the document's main element is a configuration.
KPX_API bool isConfiguration(CMarkup& document);

}  // namespace kpx
