#pragma once

#include <string>

#include "kpx/report/Export.h"

namespace kpx {

class CMarkup;

/// Checks that the records of a document agree with each other and with its text; for tests,
/// fuzzing and the diagnosis of a damaged document. Linear in the document.
class KPX_API MarkupValidator {
 public:
  /// The first disagreement in words, as UTF-8, or empty when all is right. Checked are the sibling
  /// rings, parents, levels and flags, that elements lie inside their parents in order, that the
  /// tag lengths match the tags in the text, the used and free counts, and that the position, the
  /// node and the saved positions are ones that the document has. A well-formed document must
  /// also give the same elements when its text is parsed again.
  static std::string check(const CMarkup& document);
};

}  // namespace kpx
