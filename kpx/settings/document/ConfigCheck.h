#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/settings/document/ConfigView.h"
#include "kpx/settings/ValueCheck.h"
#include "kpx/support/Problems.h"
#include "kpx/text/CString.h"

namespace kpx {

enum class FindingKind : std::uint8_t {
  unknownClass,       // a configuration that the catalogue does not know
  missingClass,       // no "CFGClass": reading keeps all defaults
  renamingClass,      // its "CFGClass" has another name, which saving makes the element's
  unknownKey,         // reading passes over it
  missingKey,         // reading keeps the default
  duplicateKey,       // the last one counts
  missingValue,       // a column without a value: reading empties it
  badValue,           // the value does not read as its type
  thousandsMark,      // the value would be read as another number
  notAsWritten,       // the value is read well, and the next setter call writes it otherwise
  lineBreak,          // other XML programs turn it into a blank
  wrongType,          // the type of the column is not the one that its class gives it
  badAttribute,       // what has to be a number or a time is none
  repeatedAttribute,  // the first one counts
  foreignAttribute,   // saving drops it
  foreignMarkup,      // so too another element, a comment or text
};

struct ConfigFinding {
  FindingKind kind;
  CString className;  // of the configuration; its element name when the class is unknown
  CString key;
  CString value;
  int offset = 0;
  ValueProblem problem = ValueProblem::none;  // why a value is bad
  CString detail = {};  // of a value what programs read; else what the finding is about
};

/// Which findings are told, and how many of them are kept.
struct ValidationOptions {
  ConfigurationChoice choice = {};
  std::size_t limit = usualProblemLimit;
  bool (*isMeant)(FindingKind) = nullptr;  // nullptr: all kinds are
};

/// What in a document's configurations is not as the suite writes it, in the order of the document.
/// Attributes that are absent are none: reading keeps what a new object has. Of an unknown class
/// nothing more is said.
KPX_API Problems<ConfigFinding> validateConfigurations(const ConfigView& view,
                                                       const ValidationOptions& options = {});

/// A finding as a sentence without its subject, which is the class and the key: "has a value that
/// is not a whole number: "4.5" is read as 4". Texts of the document stand in it as they are.
KPX_API CString describe(const ConfigFinding& finding);
/// A word for programs that stays the same: "unknown-key".
KPX_API std::u16string_view kindName(FindingKind kind) noexcept;

}  // namespace kpx
