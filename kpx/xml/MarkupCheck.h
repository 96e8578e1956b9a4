#pragma once

#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/xml/MarkupProblem.h"

namespace kpx {

/// A check by the rules of XML, stricter than what a parse records: those of version 1.0, or of 1.1
/// for a document that declares it.
///
/// A parse reads whatever makes sense, because the suite reads files of many makers. Files that
/// go to other programs should pass this check too: attribute syntax, references, characters,
/// names, what stands outside of the root element, comments and declarations. What the parse has
/// recorded is not told again. Of a document type declaration only the names of entities are read,
/// which a warning tells; not looked at are what else stands in it, and name spaces. Any entity may
/// be meant where declarations may stand in another file or in a parameter entity.
class KPX_API MarkupCheck {
 public:
  /// Tells the sink of every problem in the order of the text, as far as no single token has
  /// thousands of them, and answers how many there were, warnings included. Linear in the text,
  /// sorting the attributes of a tag aside.
  static int check(std::u16string_view text, const MarkupProblemSink& sink);

  /// Whether a problem is no violation, but a place that programs read differently.
  static bool isWarning(MarkupProblemKind kind) noexcept {
    return kind == MarkupProblemKind::lineBreakInValue ||
           kind == MarkupProblemKind::uncheckedDocumentType;
  }
};

}  // namespace kpx
