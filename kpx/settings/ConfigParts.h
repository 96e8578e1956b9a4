#pragma once

#include <optional>
#include <vector>

#include "kpx/config/Field.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/xml/CMarkup.h"

namespace kpx {

// A configuration in a document element by element, with every attribute as it stands there: for
// programs that carry configurations elsewhere whole. `ConfigFile.h` is for their values alone.

/// One element: where it begins, and its attributes in their order. The reader points into the
/// document, so it is valid until the document is changed.
struct ConfigElement {
  int offset = 0;
  AttributeReader attributes;
};

/// A "CFGCol" and its "CFGValue", if it has one.
struct ConfigColumnParts {
  ConfigElement column;
  std::optional<ConfigElement> value;
};

/// What stands inside a configuration although the suite neither writes nor reads it there.
struct ForeignMarkup {
  int offset = 0;
  CString what;  // "the element 'x'", "a comment"
};

/// One configuration. `foreign` is what is no part of the others: text, a comment, another element,
/// or one that stands a second time where reading takes only one.
struct ConfigParts {
  CString elementName;
  int length = 0;  // of its element, in UTF-16 units
  ConfigElement element;
  std::optional<ConfigElement> keyedClass;  // its "CFGClass"
  std::vector<ConfigColumnParts> columns;   // in the document's order
  std::vector<ForeignMarkup> foreign;       // in the document's order
};

/// The parts of all configurations of a document, which are those that `findConfigurations` finds.
/// Moves the position of the document to its start.
KPX_API std::vector<ConfigParts> configPartsOf(CMarkup& document);

/// Whether a text is how the suite writes such an attribute: "7", not "007".
KPX_API bool isAsWritten(AttributeKind kind, const CString& text);

}  // namespace kpx
