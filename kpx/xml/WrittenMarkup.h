#pragma once

#include <string>
#include <string_view>

#include "kpx/report/Export.h"

namespace kpx {

class CMarkup;

/// For objects that write themselves as one piece of markup, which is quicker than to set attribute
/// by attribute. The document takes the piece as it is, so the object answers for it: names that
/// are names of XML, values in quotes and escaped, no references but those of `appendValue`.
class KPX_API WrittenMarkup {
 public:
  /// Whether elements and attributes can have this name.
  static bool isName(std::u16string_view name) noexcept;
  /// Appends the value of an attribute, or a text between tags, with what has to be escaped.
  static void appendValue(std::u16string& out, std::u16string_view value);
  static void appendData(std::u16string& out, std::u16string_view data);

  /// The line break that the document has, or a new one gets.
  static std::u16string_view lineBreakOf(CMarkup& document) noexcept;

  /// Adds the element that `markup` consists of, as `AddSubDoc` and `AddChildSubDoc` do. What they
  /// would report as an unexpected failure is thrown: the object reports it under its own number.
  static bool add(CMarkup& document, std::u16string_view markup);
  static bool addChild(CMarkup& document, std::u16string_view markup);
};

}  // namespace kpx
