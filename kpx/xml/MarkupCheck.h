#pragma once

#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/xml/MarkupProblem.h"

namespace kpx {

/// A check by the rules of XML 1.0, stricter than what a parse records.
///
/// A parse reads whatever makes sense, because the suite reads files of many makers. Files that
/// go to other programs should pass this check too: attribute syntax, references, characters,
/// names, what stands outside of the root element, comments and declarations. What the parse has
/// recorded is not told again. Not looked at are what stands in a document type declaration,
/// entities that it declares, and name spaces.
class KPX_API MarkupCheck {
 public:
  /// Tells the sink of every problem in the order of the text and answers how many there were,
  /// warnings included. Linear in the text, sorting the attributes of a tag aside.
  static int check(std::u16string_view text, const MarkupProblemSink& sink);

  /// Whether a problem is no violation, but a place that programs read differently.
  static bool isWarning(MarkupProblemKind kind) noexcept {
    return kind == MarkupProblemKind::lineBreakInValue;
  }
};

}  // namespace kpx
