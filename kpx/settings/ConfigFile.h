#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <vector>

#include "kpx/config/CFGConfig.h"
#include "kpx/report/Export.h"
#include "kpx/settings/Catalogue.h"
#include "kpx/settings/ValueCheck.h"
#include "kpx/support/Problems.h"
#include "kpx/text/CString.h"
#include "kpx/xml/CMarkup.h"

namespace kpx {

// Configurations in a document, as a person who looks after files needs them: find, compare,
// check, change one value. Offsets count UTF-16 units of the document's text. All operations move
// the position of the document to its start.

// --- finding
// --------------------------------------------------------------------------------------

/// One setting as it stands in a document.
struct DocumentSetting {
  CString key;
  CString value;
  int offset = 0;        // of its element
  int valueOffset = -1;  // of the value's text; -1 if it has none
};

/// One configuration as it stands in a document.
struct DocumentConfiguration {
  int number = 0;  // among those of the document, from 1
  CString elementName;
  CString name;                                  // the configuration's name
  const SettingsClass* settingsClass = nullptr;  // nullptr: the catalogue does not know it
  int offset = 0;                                // of its element
  int length = 0;
  bool hasClass = false;                  // it has the "CFGClass" that columns stand in
  std::vector<DocumentSetting> settings;  // in the document's order, unknown ones included
};

/// All configurations of a document, at any depth, in its order: elements whose name begins with
/// "CFGConfig" and that the catalogue knows or that have a "CFGClass" child. What lies inside a
/// configuration is not searched for others.
KPX_API std::vector<DocumentConfiguration> findConfigurations(CMarkup& document);

/// Which configurations of a document are meant.
struct ConfigurationChoice {
  CString name;    // of the class or of the element; empty: any
  int number = 0;  // `DocumentConfiguration::number`; 0: any

  KPX_API bool includes(const DocumentConfiguration& configuration) const noexcept;
};

/// A new object of the configuration's class with the document, which must not have been changed
/// since, read over its defaults; nullptr when the class is unknown or it could not be read.
KPX_API std::unique_ptr<CFGConfig> loadConfiguration(const CMarkup& document,
                                                     const DocumentConfiguration& configuration);

// --- comparing
// ------------------------------------------------------------------------------------

struct KeyAndValue {
  CString key;
  CString value;
};
struct ChangedValue {
  CString key;
  CString valueA;
  CString valueB;
};

/// How the values of two configurations differ; each list in the order of A, for onlyInB of B.
struct ConfigDifference {
  std::vector<KeyAndValue> onlyInA;
  std::vector<KeyAndValue> onlyInB;
  std::vector<ChangedValue> changed;

  bool none() const noexcept { return onlyInA.empty() && onlyInB.empty() && changed.empty(); }
};

/// Compares values only, not captions or headers. Numbers of a class that the catalogue knows are
/// compared as numbers: "0.020" equals "0.02". Of a key that a document has twice the last counts,
/// as it does in reading.
KPX_API ConfigDifference compareConfigurations(const DocumentConfiguration& a,
                                               const DocumentConfiguration& b);
KPX_API ConfigDifference compareConfigurations(const CFGConfig& a, const CFGConfig& b);
/// The defaults of the class as A against the document as B; keys that the document lacks are
/// only in A. Nothing when the class is unknown.
KPX_API ConfigDifference changedFromDefaults(const DocumentConfiguration& configuration);

// --- checking
// -------------------------------------------------------------------------------------

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
KPX_API Problems<ConfigFinding> validateConfigurations(CMarkup& document,
                                                       const ValidationOptions& options = {});

/// A finding as a sentence without its subject, which is the class and the key: "has a value that
/// is not a whole number: "4.5" is read as 4". Texts of the document stand in it as they are.
KPX_API CString describe(const ConfigFinding& finding);
/// A word for programs that stays the same: "unknown-key".
KPX_API std::u16string_view kindName(FindingKind kind) noexcept;

// --- changing values
// ------------------------------------------------------------------------------

enum class EditOutcome : std::uint8_t {
  changed,
  added,              // the class knows the key and the document had no value under it
  unchanged,          // the value was there already
  noConfiguration,    // the document has none that is meant
  unknownClass,       // it has, but the catalogue does not know it, so no value can be checked
  unknownKey,         // the class does not know the key
  notInFile,          // it does, but the document has no value under it
  severalCandidates,  // more than one value would be meant
  badValue,           // see `check`
  refused,            // the document did not take it
};

struct EditResult {
  EditOutcome outcome;
  ValueCheck check;
  CString oldValue;
  CString newValue;  // as it is stored: reals with the decimals of their setting
  int number = 0;    // of the configuration that was changed
};

/// What becomes of a key that the class knows and the document lacks.
enum class MissingKey : std::uint8_t {
  refuse,
  add,  // behind the others, with the caption, group and type that a new object gives it
};

/// Changes one value of one configuration, and no other unit of the document. Where a column stands
/// without a value, adding gives it one; what is added has the line ends of the document. A key is
/// not added under an older name that only reading knows.
KPX_API EditResult setValueInDocument(CMarkup& document, const ConfigurationChoice& choice,
                                      const CString& key, const CString& text,
                                      MissingKey missingKey = MissingKey::refuse);

/// What one configuration of a document shall hold.
struct ConfigurationValues {
  int number = 0;  // `DocumentConfiguration::number`
  std::vector<KeyAndValue> values;
};

/// Changes many values as `setValueInDocument` would one after the other with `MissingKey::add`,
/// but in time linear in the document. Requires what that would accept: keys of the class that do
/// not stand twice, each once, and values as setters store them. Saved positions are lost, and how
/// a file was stored is forgotten, as by `SetDoc`. Answers false, with the document as it was, when
/// the document does not take them.
KPX_API bool setValuesInDocument(CMarkup& document, const std::vector<ConfigurationValues>& all);

/// Adds a configuration with the line ends of the document: as the root of one that has none, else
/// as the last child of the root. Answers false, with the document as it was, when the root is a
/// configuration itself, which holds no others, or when the document does not take it.
KPX_API bool addConfiguration(CMarkup& document, const CFGConfig& config);

/// An outcome as a sentence without its subject: "is not known to this class".
KPX_API const char* describe(EditOutcome outcome) noexcept;

}  // namespace kpx
