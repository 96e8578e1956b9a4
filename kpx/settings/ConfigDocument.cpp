#include "kpx/settings/ConfigDocument.h"

#include <cmath>
#include <new>
#include <utility>

#include "kpx/platform/FileSystem.h"
#include "kpx/report/Error.h"
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
  doubleAsTextInto(check.normal, value, setting.decimals, u'.');
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
      return "stands in this configuration more than once";
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

ConfigDocument::ConfigDocument() {
  document_.SetDoc(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n");
}

bool ConfigDocument::addRoot(const CString& name) {
  document_.ResetPos();
  return document_.GetDocElemCount() == 0 && document_.AddElem(name);
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
  Classes classes;
  std::vector<Held> held;
  for (const DocumentConfiguration& found : findConfigurations(stored.document)) {
    Held& added = held.emplace_back();
    added.name = found.name;
    added.hasClass = found.hasClass;
    if (!found.settingsClass) continue;
    added.known = &knownClass(classes, *found.settingsClass);
    for (const DocumentSetting& each : found.settings) {
      Setting& setting = added.settings.at(each.key);
      setting.value = each.value;
      ++(each.valueOffset < 0 ? setting.emptyColumns : setting.columns);
    }
  }
  watch.passOn();
  document_ = std::move(stored.document);
  storage_ = stored.storage;
  respelled_ = stored.respelled;
  classes_ = std::move(classes);
  held_ = std::move(held);
  origin_ = {};
  return {};
}

DocumentResult ConfigDocument::write(std::string& bytes) {
  if (document_.GetDocElemCount() == 0) {
    return failed(DocumentOutcome::refused, u"it has no root element");
  }
  if (!writeChanges()) return failed(DocumentOutcome::refused);
  CString encoding = encodingName(storage_.codePage);
  if (respelled_ > 0) {
    return failed(DocumentOutcome::notEncodable,
                  encoding + u" has more ways than one to write them, and they would be changed");
  }
  EncodedText encoded = encodeMarkupText(document_.GetDoc(), storage_);
  if (!encoded.usable) return failed(DocumentOutcome::notEncodable, std::move(encoding));
  if (encoded.losses > 0) {
    const auto [line, column] = placeOfUnit(document_.GetDoc(), encoded.firstLoss);
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
  std::vector<ConfigurationValues> changes;
  int number = 0;
  for (const Held& held : held_) {
    ConfigurationValues values{++number, {}};
    for (const auto& [key, setting] : held.settings) {
      if (setting.isChanged) values.values.push_back({key, setting.value});
    }
    if (!values.values.empty()) changes.push_back(std::move(values));
  }
  if (changes.empty()) return true;
  if (!setValuesInDocument(document_, changes)) return false;
  for (const ConfigurationValues& each : changes) {
    Held& held = held_[static_cast<std::size_t>(each.number) - 1];
    for (const KeyAndValue& value : each.values) {
      Setting& setting = *held.settings.find(value.key);
      setting.columns = 1;
      setting.emptyColumns = 0;
      setting.isChanged = false;
    }
  }
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
  Held added;
  added.known = &knownClass(classes_, settingsClass);
  const CFGConfig& object = *added.known->defaults;
  added.name = object.Name;
  added.hasClass = true;
  added.settings.reserve(object.Class.Cols.size());
  for (const auto& column : object.Class.Cols) {
    Setting& setting = added.settings.at(column.key);
    setting.value = column.value.Value.Value;
    setting.columns = 1;
  }
  if (held_.size() == held_.capacity()) held_.reserve(2 * held_.size() + 1);
  if (!addConfiguration(document_, object)) {
    return failed(DocumentOutcome::refused, u"its root element holds no configurations");
  }
  held_.push_back(std::move(added));
  return {};
}

const ConfigDocument::Known& ConfigDocument::knownClass(Classes& classes,
                                                        const SettingsClass& settingsClass) {
  if (const auto found = classes.find(&settingsClass); found != classes.end()) {
    return *found->second;
  }
  auto known = std::make_unique<Known>();
  known->settingsClass = &settingsClass;
  known->defaults = settingsClass.create();
  known->keys.reserve(settingsClass.settings.size());
  for (const SettingAccess& access : settingsClass.settings) {
    if (!known->keys.find(access.key())) known->keys.set(access.key(), access.setting);
  }
  return *classes.emplace(&settingsClass, std::move(known)).first->second;
}

// --- settings ----------------------------------------------------------------------------------

int ConfigDocument::keyCount(int configuration) const noexcept {
  return static_cast<int>(at(configuration).known->keys.size());
}

const SettingDef& ConfigDocument::settingAt(int configuration, int number) const noexcept {
  return *at(configuration).known->keys.entryAt(static_cast<std::size_t>(number)).value;
}

const SettingDef* ConfigDocument::findSetting(int configuration,
                                              std::u16string_view key) const noexcept {
  const KeyedCollection<const SettingDef*>& keys = at(configuration).known->keys;
  if (const SettingDef* const* const found = keys.find(key)) return *found;
  for (const auto& [own, setting] : keys) {
    if (!setting->olderKey.empty() && setting->olderKey.text() == key) return setting;
  }
  return nullptr;
}

bool ConfigDocument::isStored(int configuration, std::u16string_view key) const noexcept {
  const SettingDef* const setting = findSetting(configuration, key);
  const Setting* const own = setting ? at(configuration).settings.find(setting->key) : nullptr;
  return own && (own->isChanged || own->columns > 0);
}

const CString* ConfigDocument::textOf(const Held& held, const SettingDef& setting) noexcept {
  const CFGClass& defaults = held.known->defaults->Class;
  for (const KeyLiteral* const key : {&setting.key, &setting.olderKey}) {
    if (key->empty()) continue;
    if (const Setting* const own = held.settings.find(*key)) return &own->value;
    if (const CFGCol* const column = defaults.find(*key)) return &column->Value.Value;
  }
  return nullptr;
}

DocumentResult ConfigDocument::checkStored(const Held& held, const SettingDef& setting) {
  const CString* const text = textOf(held, setting);
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
  const CString* const text = textOf(at(configuration), *setting);
  value = text ? textAsLong(*text) : setting->missingInteger;
  return checkStored(at(configuration), *setting);
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
  const CString* const text = textOf(at(configuration), *setting);
  value = text ? textAsDouble(*text) : setting->missingReal;
  return checkStored(at(configuration), *setting);
}

DocumentResult ConfigDocument::getText(int configuration, std::u16string_view key,
                                       CString& value) const {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return failed(DocumentOutcome::unknownKey);
  if (const CString* const text = textOf(at(configuration), *setting)) {
    value = *text;
  } else if (setting->kind == ValueKind::real) {
    doubleAsTextInto(value, setting->missingReal, setting->decimals, u'.');
  } else if (setting->kind == ValueKind::text) {
    value.Empty();
  } else {
    longAsTextInto(value, setting->missingInteger);
  }
  return {};
}

DocumentResult ConfigDocument::store(Held& held, const SettingDef& setting, ValueCheck&& check) {
  if (!check.valid()) return {DocumentOutcome::badValue, check.problem};
  const Setting* const own = held.settings.find(setting.key);
  if (own && (own->columns > 0 ? own->columns : own->emptyColumns) > 1) {
    return failed(DocumentOutcome::severalColumns);
  }
  if (!held.hasClass) {
    return failed(DocumentOutcome::refused, u"its configuration has no element CFGClass");
  }
  if (!fitsIntoTag(check.normal)) return failed(DocumentOutcome::refused, u"it is too long");
  Setting& changed = held.settings.at(setting.key.text());
  changed.value = std::move(check.normal);
  changed.isChanged = true;
  return {};
}

DocumentResult ConfigDocument::setInteger(int configuration, std::u16string_view key,
                                          std::int32_t value) {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return failed(DocumentOutcome::unknownKey);
  if (setting->kind == ValueKind::real) return setReal(configuration, key, value);
  if (!isInteger(setting->kind)) return failed(DocumentOutcome::wrongType);
  ValueCheck check;
  longAsTextInto(check.normal, value);
  if (setting->kind == ValueKind::flag && value != 0 && value != 1) {
    check.problem = ValueProblem::notFlag;
  }
  return store(at(configuration), *setting, std::move(check));
}

DocumentResult ConfigDocument::setReal(int configuration, std::u16string_view key, double value) {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return failed(DocumentOutcome::unknownKey);
  if (setting->kind != ValueKind::real) return failed(DocumentOutcome::wrongType);
  return store(at(configuration), *setting, checkReal(*setting, value));
}

DocumentResult ConfigDocument::setText(int configuration, std::u16string_view key,
                                       std::u16string_view value) {
  const SettingDef* const setting = findSetting(configuration, key);
  if (!setting) return failed(DocumentOutcome::unknownKey);
  return store(at(configuration), *setting,
               checkValueText(setting->kind, value, setting->decimals));
}

}  // namespace kpx
