#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/config/CFGConfig.h"
#include "kpx/config/KeyedCollection.h"
#include "kpx/platform/FileOrigin.h"
#include "kpx/report/Export.h"
#include "kpx/settings/Catalogue.h"
#include "kpx/settings/document/ConfigEdit.h"
#include "kpx/settings/document/ConfigView.h"
#include "kpx/settings/ValueCheck.h"
#include "kpx/text/CString.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"

namespace kpx {

/// What became of an operation on a `ConfigDocument`.
enum class DocumentOutcome : std::uint8_t {
  ok,
  notRead,         // the file cannot be read
  notText,         // its bytes are no text in their encoding
  illFormed,       // the document is not well formed
  notWritten,      // the file cannot be written; an old one is as it was
  notEncodable,    // the encoding cannot carry all of the document; likewise
  changed,         // another program has changed the file since it was read; it was not written
  locked,          // another program is changing the file and did not finish in time; likewise
  refused,         // the document does not take it
  unknownKey,      // the class does not know the key
  wrongType,       // the setting is not of this type
  badValue,        // the setting does not take this value
  badStoredValue,  // the stored value is none of its type
  severalColumns,  // the key stands twice: it is not clear which to change
  // Of changes that look for their configuration:
  noConfiguration,  // the document has none that is meant
  unknownClass,     // it has, but the catalogue does not know it, so no value can be checked
  notStored,        // the class knows the key, but the document has no value under it
};

struct DocumentResult {
  DocumentOutcome outcome = DocumentOutcome::ok;
  ValueProblem problem = ValueProblem::none;  // of a bad value
  int line = 0;                               // where the document is wrong, from 1; else 0
  int column = 0;
  CString detail = {};  // of files and documents: why, as the end of a sentence

  bool ok() const noexcept { return outcome == DocumentOutcome::ok; }
};

/// The outcome as the end of a sentence, with its detail: "is not a whole number".
KPX_API CString describe(const DocumentResult& result);

/// What becomes of a key that the class knows and the document lacks.
enum class MissingKey : std::uint8_t {
  refuse,
  add,  // behind the others, with the caption, group and type that a new object gives it
};

/// What `ConfigDocument::change` has done.
struct DocumentChange {
  int configuration = -1;  // the one that was meant, counted from 0; -1 without any
  bool isAdded = false;    // the document had no value under the key
  bool isChanged = false;  // it has another one now
  CString oldValue;
  CString newValue;  // as it is stored: reals with the decimals of their setting
};

/// A document whose settings are read and changed by configuration and key, for programs that know
/// them only by name. Whatever else stands in the document stays as it is, unit by unit, and so
/// does its encoding.
///
/// Configurations are counted from 0 in the document's order; every function requires a number
/// that there is, and those of settings one of a known class. Keys are those of the class; an older
/// key means the setting that took its place. A getter answers what an object answers that has
/// loaded the configuration: of a key that the document lacks the default, of one that stands twice
/// the last. That holds for the few keys, too, that a new object lacks and reading passes over:
/// what stands in the document under them counts for nobody.
///
/// Reading from several threads is safe while nobody changes the document.
class ConfigDocument {
 public:
  /// Without a root: the first configuration becomes it, and stays the only one.
  KPX_API ConfigDocument();
  ConfigDocument(ConfigDocument&&) noexcept = default;
  ConfigDocument& operator=(ConfigDocument&&) noexcept = default;
  ~ConfigDocument() = default;

  // --- whole documents ------------------------------------------------------------------------

  /// Gives a document without a root one; false when the name cannot be one.
  KPX_API bool addRoot(const CString& name);
  /// Replaces the content by that of a file, or by bytes as of a file; a failure leaves it as it
  /// was. Other than `CMarkup::Load`, takes nothing that could not be written back.
  KPX_API DocumentResult load(const CString& path);
  KPX_API DocumentResult read(std::string_view bytes);
  /// Writes the document whole or not at all. The file that was loaded or saved last is not
  /// overwritten when another program has changed it since.
  KPX_API DocumentResult save(const CString& path, SaveMode mode = SaveMode::unlessChanged);
  /// Loads a file, lets `change` change it and saves it, so that of several programs that do this
  /// at the same time none undoes what another one did: they wait for each other for up to
  /// `patience`, then the answer is `locked`. Nothing is saved when `change` answers another
  /// outcome than `ok`, which becomes the answer, or changes nothing.
  KPX_API static DocumentResult changeFile(
      const CString& path, const std::function<DocumentResult(ConfigDocument&)>& change,
      std::chrono::milliseconds patience = changePatience);
  /// The same into bytes, which stay as they are after a failure.
  KPX_API DocumentResult write(std::string& bytes);

  /// The document as it was read or written last, without later changes, and its configurations:
  /// for what else a program wants to know of it.
  const CString& text() const noexcept { return content_->document.GetDoc(); }
  const ConfigView& view() const noexcept { return content_->view; }
  /// How its bytes are stored.
  const MarkupEncoding& storage() const noexcept { return storage_; }

  // --- configurations -------------------------------------------------------------------------

  int count() const noexcept { return static_cast<int>(held_.size()); }
  /// nullptr: the catalogue does not know it.
  KPX_API const SettingsClass* classOf(int configuration) const noexcept;
  /// The configuration's own name in the document.
  KPX_API const CString& nameOf(int configuration) const noexcept;
  /// The `index`th configuration of a class, from 0; -1 if there are not so many.
  KPX_API int find(const SettingsClass& settingsClass, int index) const noexcept;
  /// Adds a new object of the class as the last configuration; the class has to be that of
  /// configurations.
  KPX_API DocumentResult add(const SettingsClass& settingsClass);
  /// A new object of the configuration's class that has read the document as it was read or written
  /// last; nullptr if the class is unknown, or the configuration was added since.
  KPX_API std::unique_ptr<CFGConfig> object(int configuration) const;

  // --- settings -------------------------------------------------------------------------------

  /// How many keys the class has; each counts once.
  KPX_API int keyCount(int configuration) const noexcept;
  /// The setting of a key, in the order of the class. Requires a number from 0 below `keyCount`.
  KPX_API const SettingDef& settingAt(int configuration, int number) const noexcept;
  /// nullptr if the class does not know the key.
  KPX_API const SettingDef* findSetting(int configuration, std::u16string_view key) const noexcept;
  /// Whether the document has a value under the key, or will have when it is written.
  KPX_API bool isStored(int configuration, std::u16string_view key) const noexcept;

  /// Of integers, flags and enumerations. Of `badStoredValue` the value is what it reads as.
  KPX_API DocumentResult getInteger(int configuration, std::u16string_view key,
                                    std::int32_t& value) const;
  /// Of reals and all of these.
  KPX_API DocumentResult getReal(int configuration, std::u16string_view key, double& value) const;
  /// Of all types: texts and numbers as they are stored.
  KPX_API DocumentResult getText(int configuration, std::u16string_view key, CString& value) const;

  // What is stored is what the setter of the class stores, and only that value is changed in the
  // document; a key that it lacks is added with the caption, group and type of the class.

  /// Into integers, flags (0 and 1), enumerations and reals.
  KPX_API DocumentResult setInteger(int configuration, std::u16string_view key, std::int32_t value);
  /// Into reals, with the decimals of the setting.
  KPX_API DocumentResult setReal(int configuration, std::u16string_view key, double value);
  /// Into all types; of numbers the whole text has to be one, see `checkValueText`.
  KPX_API DocumentResult setText(int configuration, std::u16string_view key,
                                 std::u16string_view value);

  /// Changes one value of the only configuration that can be meant. An older key is that column of
  /// the document here, and is not added. `done` tells of what was meant also after a failure.
  KPX_API DocumentResult change(const ConfigurationChoice& choice, const CString& key,
                                const CString& text, MissingKey missingKey, DocumentChange& done);

 private:
  /// A class of which the document has configurations, once for all of them.
  struct Known {
    const SettingsClass* settingsClass = nullptr;
    std::unique_ptr<CFGConfig> defaults;
    std::vector<const SettingDef*> settings;  // of each key
    KeyedCollection<int> numbers;             // of the keys, in this order; then of the older keys
  };
  /// The columns that the document has under a key of the class.
  struct Stored {
    int number = 0;        // of the key, see `Known`
    int last = 0;          // of the columns: what reading takes
    int columns = 0;       // with a value
    int emptyColumns = 0;  // and without one
  };
  struct Held {
    CString name;
    const Known* known = nullptr;  // nullptr: its class is not known
    std::vector<Stored> stored;    // by number
  };
  struct Candidates;
  using Classes = std::map<const SettingsClass*, std::unique_ptr<Known>>;

  const Held& at(int configuration) const noexcept {
    return held_[static_cast<std::size_t>(configuration)];
  }
  static const Known& knownClass(Classes& classes, const SettingsClass& settingsClass);
  static std::vector<Held> heldOf(Classes& classes, const ConfigView& view);
  static Held heldOf(Classes& classes, const ConfigView& view,
                     const ViewedConfiguration& configuration);
  const Stored* findStored(int configuration, std::u16string_view key) const noexcept;
  bool isAdded(int configuration) const noexcept { return configuration >= view().count(); }
  bool hasText(int configuration, const SettingDef& setting, CString& text) const;
  DocumentResult checkStored(const SettingDef& setting, const CString* text) const;
  DocumentResult store(int configuration, const CString& key, ValueCheck&& check);
  Candidates lookFor(const ConfigurationChoice& choice, const CString& key) const;
  bool writeChanges();

  struct Content {
    CMarkup document;
    ConfigView view;
  };
  std::unique_ptr<Content> content_;
  MarkupEncoding storage_;
  FileOrigin origin_;
  std::size_t respelled_ = 0;  // bytes that cannot be written back
  Classes classes_;
  std::vector<Held> held_;
  ConfigEdit edit_;
};

}  // namespace kpx
