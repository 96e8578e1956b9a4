#include "kpx/settings/document/ConfigDocument.h"

#include <algorithm>
#include <cmath>
#include <new>
#include <utility>

#include "kpx/platform/FileSystem.h"
#include "kpx/report/Error.h"
#include "kpx/settings/engine/ValueText.h"
#include "kpx/text/NumberText.h"
#include "kpx/xml/StoredMarkup.h"
#include "kpx/xml/WrittenMarkup.h"

namespace kpx {
namespace {

/// Units of an escaped value that fit into a tag, whatever else stands in it.
constexpr int maxValueLength = 2'000'000;

bool fitsIntoTag(const CString& value) {
  constexpr int longestReference = 6;
  if (value.GetLength() <= maxValueLength / longestReference) return true;
  CString escaped;
  WrittenMarkup::appendValue(escaped.units(), value);
  return escaped.GetLength() <= maxValueLength;
}

bool isInteger(ValueKind kind) noexcept {
  return kind == ValueKind::integer || kind == ValueKind::flag || kind == ValueKind::enumeration;
}

DocumentResult failed(DocumentOutcome outcome, CString detail = {}) {
  return {outcome, ValueProblem::none, 0, 0, std::move(detail)};
}

DocumentResult notSaved(const FileResult& file) {
  if (file.status == FileStatus::changed) return failed(DocumentOutcome::changed);
  if (file.status == FileStatus::locked) return failed(DocumentOutcome::locked);
  return failed(DocumentOutcome::notWritten, file.message());
}

ValueCheck checkReal(const SettingDef& setting, double value) {
  ValueCheck check;
  detail::realTextInto(check.normal, value, setting);
  if (!std::isfinite(value) || check.normal == undefinedNumberText) {
    check.problem = ValueProblem::outOfRange;
  }
  return check;
}

const char* sentenceOf(DocumentOutcome outcome) noexcept {
  switch (outcome) {
    case DocumentOutcome::ok:
      return "went well";
    case DocumentOutcome::notRead:
      return "cannot be read";
    case DocumentOutcome::notText:
      return "is no text";
    case DocumentOutcome::illFormed:
      return "is not well-formed";
    case DocumentOutcome::notWritten:
      return "cannot be written";
    case DocumentOutcome::notEncodable:
      return "has characters that its encoding cannot carry";
    case DocumentOutcome::changed:
      return "was changed by another program since it was read";
    case DocumentOutcome::locked:
      return "is being changed by another program";
    case DocumentOutcome::refused:
      return "is not taken by the document";
    case DocumentOutcome::unknownKey:
      return "is not known to this class";
    case DocumentOutcome::wrongType:
      return "is of another type";
    case DocumentOutcome::badValue:
    case DocumentOutcome::badStoredValue:
      return "does not take this value";
    case DocumentOutcome::severalColumns:
      return "stands in this document more than once";
    case DocumentOutcome::noConfiguration:
      return "is in no configuration of this document";
    case DocumentOutcome::unknownClass:
      return "belongs to a configuration of an unknown class";
    case DocumentOutcome::notStored:
      return "has no value in this document";
  }
  return "failed";
}

}  // namespace

CString describe(const DocumentResult& result) {
  CString sentence = CString::fromUtf8(
      result.problem == ValueProblem::none ? sentenceOf(result.outcome) : describe(result.problem));
  if (!result.detail.IsEmpty()) sentence += u": " + result.detail;
  return sentence;
}

// --- whole documents ---------------------------------------------------------------------------

ConfigDocument::ConfigDocument() : content_(std::make_unique<Content>()) {
  content_->document.SetDoc(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n");
  content_->view = ConfigView(content_->document);
}

bool ConfigDocument::addRoot(const CString& name) {
  CMarkup& document = content_->document;
  if (count() > 0 || document.GetDocElemCount() != 0) return false;
  document.ResetPos();
  const bool isAdded = document.AddElem(name);
  content_->view = ConfigView(document);
  return isAdded;
}

DocumentResult ConfigDocument::load(const CString& path) {
  FileOrigin origin;
  FileBytes bytes;
  if (const FileResult result = origin.read(path, bytes); !result) {
    return failed(DocumentOutcome::notRead, result.message());
  }
  DocumentResult result = read(bytes.view());
  if (result.ok()) origin_ = std::move(origin);
  return result;
}

DocumentResult ConfigDocument::read(std::string_view bytes) {
  const GuardWatch watch;
  StoredMarkup stored = readMarkup(bytes);
  if (!stored.usable()) {
    if (stored.problems.empty()) throw std::bad_alloc();
    PlacedProblem& first = stored.problems.first.front();
    return {stored.readable ? DocumentOutcome::illFormed : DocumentOutcome::notText,
            ValueProblem::none, first.line, first.column, std::move(first.sentence)};
  }
  auto content = std::make_unique<Content>();
  content->document = std::move(stored.document);
  content->view = ConfigView(content->document);
  Classes classes;
  std::vector<Held> held = heldOf(classes, content->view);
  watch.passOn();
  content_ = std::move(content);
  edit_.clear();
  storage_ = stored.storage;
  respelled_ = stored.respelled;
  classes_ = std::move(classes);
  held_ = std::move(held);
  origin_ = {};
  return {};
}

DocumentResult ConfigDocument::write(std::string& bytes) {
  if (held_.empty() && content_->document.GetDocElemCount() == 0) {
    return failed(DocumentOutcome::refused, u"it has no root element");
  }
  if (!writeChanges()) return failed(DocumentOutcome::refused);
  CString encoding = encodingName(storage_.codePage);
  if (respelled_ > 0) {
    return failed(DocumentOutcome::notEncodable,
                  encoding + u" has more ways than one to write them, and they would be changed");
  }
  EncodedText encoded = encodeMarkupText(content_->document.GetDoc(), storage_);
  if (!encoded.usable) return failed(DocumentOutcome::notEncodable, std::move(encoding));
  if (encoded.losses > 0) {
    const auto [line, column] = placeOfUnit(content_->document.GetDoc(), encoded.firstLoss);
    encoding.AppendFormat(u", %zu of them, the first in line %d, column %d", encoded.losses, line,
                          column);
    return {DocumentOutcome::notEncodable, ValueProblem::none, line, column, std::move(encoding)};
  }
  bytes = std::move(encoded.bytes);
  return {};
}

DocumentResult ConfigDocument::save(const CString& path, SaveMode mode) {
  std::string bytes;
  if (DocumentResult result = write(bytes); !result.ok()) return result;
  const FileResult written = origin_.replace(
      path, [&](OutputFile& file) { return file.write(bytes); }, mode);
  return written ? DocumentResult{} : notSaved(written);
}

DocumentResult ConfigDocument::changeFile(
    const CString& path, const std::function<DocumentResult(ConfigDocument&)>& change,
    std::chrono::milliseconds patience) {
  DocumentResult result;
  const FileResult file = fileSystem().changeFile(
      path,
      [&](std::string_view old, const FileVersion& version, std::string& now) -> FileResult {
        now = old;
        if (!version.exists) {
          const FileResult missing{FileStatus::notFound, 0};
          result = failed(DocumentOutcome::notRead, missing.message());
          return {};
        }
        ConfigDocument document;
        result = document.read(old);
        if (result.ok()) result = change(document);
        if (result.ok()) result = document.write(now);
        return {};
      },
      patience);
  return file || !result.ok() ? result : notSaved(file);
}

bool ConfigDocument::writeChanges() {
  if (edit_.isEmpty()) return true;
  auto content = std::make_unique<Content>();
  if (!edit_.apply(content_->document, content_->view, content->document)) return false;
  content->view = ConfigView(content->document);
  std::vector<Held> held = heldOf(classes_, content->view);
  content_ = std::move(content);
  held_ = std::move(held);
  edit_.clear();
  return true;
}

// --- configurations ----------------------------------------------------------------------------

const SettingsClass* ConfigDocument::classOf(int configuration) const noexcept {
  const Known* const known = at(configuration).known;
  return known ? known->settingsClass : nullptr;
}

const CString& ConfigDocument::nameOf(int configuration) const noexcept {
  return at(configuration).name;
}

int ConfigDocument::find(const SettingsClass& settingsClass, int index) const noexcept {
  for (int i = 0; i < count(); ++i) {
    if (classOf(i) == &settingsClass && index-- == 0) return i;
  }
  return -1;
}

DocumentResult ConfigDocument::add(const SettingsClass& settingsClass) {
  if (!settingsClass.isConfiguration()) {
    return failed(DocumentOutcome::refused, u"its objects are no configurations");
  }
  CMarkup& document = content_->document;
  document.ResetPos();
  const bool isRoot = document.FindElem() ? isConfiguration(document) : count() > 0;
  document.ResetPos();
  if (isRoot) return failed(DocumentOutcome::refused, u"its root element holds no configurations");
  Held added;
  added.known = &knownClass(classes_, settingsClass);
  added.name = added.known->defaults->Name;
  if (held_.size() == held_.capacity()) held_.reserve(2 * held_.size() + 1);
  edit_.add(settingsClass);
  held_.push_back(std::move(added));
  return {};
}

std::unique_ptr<CFGConfig> ConfigDocument::object(int configuration) const {
  if (isAdded(configuration) || !at(configuration).known) return nullptr;
  const GuardWatch watch;
  CMarkup part;
  part.SetDoc(CString(view().markupOf(view().at(configuration).element)));
  part.FindChildElem();
  std::unique_ptr<CFGConfig> object = at(configuration).known->settingsClass->create();
  if (object && object->loadByXML(&part) != 1) object.reset();
  watch.passOn();
  return object;
}

const ConfigDocument::Known& ConfigDocument::knownClass(Classes& classes,
                                                        const SettingsClass& settingsClass) {
  if (const auto found = classes.find(&settingsClass); found != classes.end()) {
    return *found->second;
  }
  auto known = std::make_unique<Known>();
  known->settingsClass = &settingsClass;
  known->defaults = settingsClass.create();
  known->numbers.reserve(settingsClass.settings.size());
  for (const SettingAccess& access : settingsClass.settings) {
    if (known->numbers.find(access.key())) continue;
    known->numbers.set(access.key(), static_cast<int>(known->settings.size()));
    known->settings.push_back(access.setting);
  }
  for (const SettingAccess& access : settingsClass.settings) {
    const KeyLiteral& older = access.setting->olderKey;
    if (older.empty() || known->numbers.find(older)) continue;
    known->numbers.set(older.text(), static_cast<int>(known->numbers.size()));
  }
  return *classes.emplace(&settingsClass, std::move(known)).first->second;
}

std::vector<ConfigDocument::Held> ConfigDocument::heldOf(Classes& classes, const ConfigView& view) {
  std::vector<Held> held;
  held.reserve(view.configurations().size());
  for (const ViewedConfiguration& each : view.configurations()) {
    held.push_back(heldOf(classes, view, each));
  }
  return held;
}

ConfigDocument::Held ConfigDocument::heldOf(Classes& classes, const ConfigView& view,
                                            const ViewedConfiguration& configuration) {
  Held held;
  held.name = view.nameOf(configuration);
  if (!configuration.settingsClass) return held;
  held.known = &knownClass(classes, *configuration.settingsClass);
  CString key;
  int position = 0;
  for (const ConfigColumn& column : configuration.columns) {
    key.Empty();
    view.attributesOf(column.column).read(u"Name", key);
    if (const int* const number = held.known->numbers.find(key.view())) {
      held.stored.push_back({*number, position, 0, 0});
      ++(view.hasValue(column) ? held.stored.back().columns : held.stored.back().emptyColumns);
    }
    ++position;
  }
  // Those of one key become one, with the last of its columns.
  std::ranges::stable_sort(held.stored, {}, &Stored::number);
  std::size_t kept = 0;
  for (const Stored& each : held.stored) {
    if (kept > 0 && held.stored[kept - 1].number == each.number) {
      Stored& before = held.stored[kept - 1];
      before.last = each.last;
      before.columns += each.columns;
      before.emptyColumns += each.emptyColumns;
    } else {
      held.stored[kept++] = each;
    }
  }
  held.stored.resize(kept);
  return held;
}

// --- settings ----------------------------------------------------------------------------------

int ConfigDocument::keyCount(int configuration) const noexcept {
  return static_cast<int>(at(configuration).known->settings.size());
}

const SettingDef& ConfigDocument::settingAt(int configuration, int number) const noexcept {
  return *at(configuration).known->settings[static_cast<std::size_t>(number)];
}

const SettingDef* ConfigDocument::findSetting(int configuration,
                                              std::u16string_view key) const noexcept {
  const Known& known = *at(configuration).known;
  const int* const number = known.numbers.find(key);
  if (!number) return nullptr;
  if (static_cast<std::size_t>(*number) < known.settings.size()) {
    return known.settings[static_cast<std::size_t>(*number)];
  }
  return known.settingsClass->findKey(key)->setting;
}

const ConfigDocument::Stored* ConfigDocument::findStored(int configuration,
                                                         std::u16string_view key) const noexcept {
  const Held& held = at(configuration);
  const int* const number = held.known ? held.known->numbers.find(key) : nullptr;
  if (!number) return nullptr;
  const auto found = std::ranges::lower_bound(held.stored, *number, {}, &Stored::number);
  return found != held.stored.end() && found->number == *number ? &*found : nullptr;
}

bool ConfigDocument::isStored(int configuration, std::u16string_view key) const noexcept {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return false;
  const std::u16string_view own = setting->key.text();
  if (edit_.find(configuration, own)) return true;
  if (isAdded(configuration)) return at(configuration).known->defaults->Class.find(own) != nullptr;
  const Stored* const stored = findStored(configuration, own);
  return stored && stored->columns > 0;
}

bool ConfigDocument::hasText(int configuration, const SettingDef& setting, CString& text) const {
  for (const KeyLiteral* const key : {&setting.key, &setting.olderKey}) {
    if (key->empty()) continue;
    if (const CString* const changed = edit_.find(configuration, key->text())) {
      text = *changed;
      return true;
    }
    // What a new object lacks, reading passes over.
    const CFGCol* const column = at(configuration).known->defaults->Class.find(key->text());
    if (!column) continue;
    const Stored* const stored = findStored(configuration, key->text());
    if (stored) {
      const auto& columns = view().at(configuration).columns;
      text = view().valueOf(columns[static_cast<std::size_t>(stored->last)]);
    } else {
      text = column->Value.Value;
    }
    return true;
  }
  return false;
}

DocumentResult ConfigDocument::checkStored(const SettingDef& setting, const CString* text) const {
  // Without a text it is no value, which everybody reads as 0: so begin the columns of tables.
  if (!text || text->IsEmpty()) return {};
  const ValueProblem problem = checkValueText(setting.kind, *text).problem;
  if (problem == ValueProblem::none) return {};
  return {DocumentOutcome::badStoredValue, problem, 0, 0, *text};
}

DocumentResult ConfigDocument::getInteger(int configuration, std::u16string_view key,
                                          std::int32_t& value) const {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return failed(DocumentOutcome::unknownKey);
  if (!isInteger(setting->kind)) return failed(DocumentOutcome::wrongType);
  CString text;
  const CString* const stored = hasText(configuration, *setting, text) ? &text : nullptr;
  value = detail::integerOf(stored, *setting);
  return checkStored(*setting, stored);
}

DocumentResult ConfigDocument::getReal(int configuration, std::u16string_view key,
                                       double& value) const {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return failed(DocumentOutcome::unknownKey);
  if (setting->kind != ValueKind::real) {
    std::int32_t integer = 0;
    DocumentResult result = getInteger(configuration, key, integer);
    value = integer;
    return result;
  }
  CString text;
  const CString* const stored = hasText(configuration, *setting, text) ? &text : nullptr;
  value = detail::realOf(stored, *setting);
  return checkStored(*setting, stored);
}

DocumentResult ConfigDocument::getText(int configuration, std::u16string_view key,
                                       CString& value) const {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return failed(DocumentOutcome::unknownKey);
  CString text;
  if (!hasText(configuration, *setting, text)) {
    if (setting->kind == ValueKind::real) {
      detail::realTextInto(text, setting->missingReal, *setting);
    } else if (setting->kind != ValueKind::text) {
      detail::integerTextInto(text, setting->missingInteger);
    }
  }
  value = std::move(text);
  return {};
}

DocumentResult ConfigDocument::store(int configuration, const CString& key, ValueCheck&& check) {
  if (!check.valid()) return {DocumentOutcome::badValue, check.problem};
  const Stored* const stored = findStored(configuration, key);
  if (stored && (stored->columns > 0 ? stored->columns : stored->emptyColumns) > 1) {
    return failed(DocumentOutcome::severalColumns);
  }
  if (!isAdded(configuration) && !view().at(configuration).keyedClass.exists()) {
    return failed(DocumentOutcome::refused, u"its configuration has no element CFGClass");
  }
  if (!fitsIntoTag(check.normal)) return failed(DocumentOutcome::refused, u"it is too long");
  edit_.set(configuration, key, std::move(check.normal));
  return {};
}

DocumentResult ConfigDocument::setInteger(int configuration, std::u16string_view key,
                                          std::int32_t value) {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return failed(DocumentOutcome::unknownKey);
  if (setting->kind == ValueKind::real) return setReal(configuration, key, value);
  if (!isInteger(setting->kind)) return failed(DocumentOutcome::wrongType);
  ValueCheck check;
  detail::integerTextInto(check.normal, value);
  if (setting->kind == ValueKind::flag && value != 0 && value != 1) {
    check.problem = ValueProblem::notFlag;
  }
  return store(configuration, setting->key.text(), std::move(check));
}

DocumentResult ConfigDocument::setReal(int configuration, std::u16string_view key, double value) {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return failed(DocumentOutcome::unknownKey);
  if (setting->kind != ValueKind::real) return failed(DocumentOutcome::wrongType);
  return store(configuration, setting->key.text(), checkReal(*setting, value));
}

DocumentResult ConfigDocument::setText(int configuration, std::u16string_view key,
                                       std::u16string_view value) {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return failed(DocumentOutcome::unknownKey);
  return store(configuration, setting->key.text(),
               checkValueText(setting->kind, value, setting->decimals));
}

// --- changes that look for their configuration
// ----------------------------------------------------

/// What a key means among the configurations that may be meant.
struct ConfigDocument::Candidates {
  int configurations = 0;
  int known = 0;         // of known classes
  int knowTheKey = 0;    // of them, those whose class knows the key
  int columns = 0;       // their columns with this key and a value
  int emptyColumns = 0;  // those without one
  int meant = -1;        // the one with the last column; without any, the first that knows the key

  DocumentOutcome outcome(MissingKey missingKey) const noexcept {
    if (configurations == 0) return DocumentOutcome::noConfiguration;
    if (known == 0) return DocumentOutcome::unknownClass;
    if (knowTheKey == 0) return DocumentOutcome::unknownKey;
    if (columns > 1) return DocumentOutcome::severalColumns;
    if (columns == 1) return DocumentOutcome::ok;
    if (missingKey == MissingKey::refuse) return DocumentOutcome::notStored;
    const int places = emptyColumns > 0 ? emptyColumns : knowTheKey;
    return places == 1 ? DocumentOutcome::ok : DocumentOutcome::severalColumns;
  }
};

ConfigDocument::Candidates ConfigDocument::lookFor(const ConfigurationChoice& choice,
                                                   const CString& key) const {
  Candidates found;
  for (int i = 0; i < view().count(); ++i) {
    if (!choice.includes(view().at(i))) continue;
    ++found.configurations;
    if (!at(i).known) continue;
    ++found.known;
    if (!at(i).known->numbers.find(key.view())) continue;
    ++found.knowTheKey;
    const Stored* const stored = findStored(i, key);
    const bool isBetter = stored && (stored->columns > 0 || found.columns == 0);
    if (isBetter || found.meant < 0) found.meant = i;
    if (!stored) continue;
    found.columns += stored->columns;
    found.emptyColumns += stored->emptyColumns;
  }
  return found;
}

DocumentResult ConfigDocument::change(const ConfigurationChoice& choice, const CString& key,
                                      const CString& text, MissingKey missingKey,
                                      DocumentChange& done) {
  done = {};
  const Candidates found = lookFor(choice, key);
  done.configuration = found.meant;
  const DocumentOutcome outcome = found.outcome(missingKey);
  if (outcome != DocumentOutcome::ok) return failed(outcome);

  const SettingDef& setting = *findSetting(found.meant, key);
  ValueCheck check = checkValueText(setting.kind, text, setting.decimals);
  done.newValue = check.normal;
  const Stored* const stored = findStored(found.meant, key);
  const bool isOlder = setting.key.text() != key.view();
  if (check.valid() && isOlder && !stored) return failed(DocumentOutcome::notStored);
  done.isAdded = found.columns == 0;
  if (!done.isAdded) {
    const auto& columns = view().at(found.meant).columns;
    for (const ConfigColumn& column : columns) {
      if (view().hasValue(column) && view().keyOf(column) == key)
        done.oldValue = view().valueOf(column);
    }
  }
  done.isChanged = done.isAdded || done.oldValue != done.newValue;
  if (check.valid() && !done.isChanged) return {};
  return store(found.meant, key, std::move(check));
}

}  // namespace kpx
