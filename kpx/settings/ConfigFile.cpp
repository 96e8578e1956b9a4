#include "kpx/settings/ConfigFile.h"

#include <map>
#include <string_view>
#include <utility>

#include "kpx/settings/internal/ConfigWalk.h"

namespace kpx {
namespace {

DocumentSetting settingAt(const CMarkup& document, bool hasValue) {
  DocumentSetting setting;
  int begin = 0;
  int end = 0;
  setting.key = document.GetAttrib(u"Name");
  if (document.GetOffsets(begin, end)) setting.offset = begin;
  if (hasValue && document.GetChildAttribOffsets(u"Value", begin, end)) {
    setting.value = document.GetChildAttrib(u"Value");
    setting.valueOffset = begin;
  }
  return setting;
}

DocumentConfiguration configurationAt(CMarkup& document) {
  DocumentConfiguration found;
  int begin = 0;
  int end = 0;
  found.elementName = document.GetTagName();
  found.name = document.GetAttrib(u"Name");
  found.settingsClass = findSettingsClassByElement(found.elementName);
  if (document.GetOffsets(begin, end)) {
    found.offset = begin;
    found.length = end - begin;
  }
  detail::visitColumns(document, [&](bool hasValue) {
    found.settings.push_back(settingAt(document, hasValue));
    return true;
  });
  return found;
}

// --- comparing
// ------------------------------------------------------------------------------------

/// The values of one side in their order, and by key; of a repeated key the last.
class Values {
 public:
  void add(std::u16string_view key, std::u16string_view value) {
    const auto [at, isNew] = index_.try_emplace(key, list_.size());
    if (isNew) {
      list_.push_back({key, value});
    } else {
      list_[at->second].second = value;
    }
  }
  const std::u16string_view* find(std::u16string_view key) const {
    const auto found = index_.find(key);
    return found == index_.end() ? nullptr : &list_[found->second].second;
  }
  auto begin() const noexcept { return list_.begin(); }
  auto end() const noexcept { return list_.end(); }

 private:
  std::vector<std::pair<std::u16string_view, std::u16string_view>> list_;
  // A tree, because the keys of a document may be chosen to collide in a hash table.
  std::map<std::u16string_view, std::size_t> index_;
};

Values valuesOf(const DocumentConfiguration& configuration) {
  Values values;
  for (const DocumentSetting& setting : configuration.settings) {
    values.add(setting.key, setting.value);
  }
  return values;
}

Values valuesOf(const CFGConfig& config) {
  Values values;
  for (const auto& entry : config.Class.Cols) values.add(entry.key, entry.value.Value.Value);
  return values;
}

bool sameValue(const SettingsClass* settingsClass, std::u16string_view key, std::u16string_view a,
               std::u16string_view b) {
  if (a == b) return true;
  const SettingAccess* const access = settingsClass ? settingsClass->findKey(key) : nullptr;
  if (!access || access->setting->kind == ValueKind::text) return false;
  const ValueCheck checkA = checkValueText(access->setting->kind, a);
  const ValueCheck checkB = checkValueText(access->setting->kind, b);
  return checkA.valid() && checkB.valid() && checkA.normal == checkB.normal;
}

ConfigDifference compare(const Values& a, const Values& b, const SettingsClass* settingsClass) {
  ConfigDifference difference;
  for (const auto& [key, value] : a) {
    const std::u16string_view* const other = b.find(key);
    if (!other) {
      difference.onlyInA.push_back({key, value});
    } else if (!sameValue(settingsClass, key, value, *other)) {
      difference.changed.push_back({key, value, *other});
    }
  }
  for (const auto& [key, value] : b) {
    if (!a.find(key)) difference.onlyInB.push_back({key, value});
  }
  return difference;
}

// --- changing one value
// ---------------------------------------------------------------------------

bool isMeant(const CMarkup& document, const SettingsClass* settingsClass,
             const CString& configuration) {
  return configuration.IsEmpty() || document.GetTagName() == configuration ||
         (settingsClass && settingsClass->name == configuration.view());
}

/// What a key means in a document.
struct Candidates {
  int configurations = 0;
  int known = 0;       // configurations of known classes
  int knowTheKey = 0;  // of them, those whose class knows the key
  int columns = 0;     // their columns with this key and a value
  const SettingAccess* access = nullptr;
};

/// Looks through what is meant by configuration and key. Stops at the column with this number,
/// from 1, with its value as the document's child; 0 looks through all.
Candidates lookFor(CMarkup& document, const CString& configuration, const CString& key,
                   int stopAt) {
  Candidates found;
  detail::visitConfigurations(document, [&] {
    const SettingsClass* const settingsClass = findSettingsClassByElement(document.GetTagName());
    if (!isMeant(document, settingsClass, configuration)) return true;
    ++found.configurations;
    if (!settingsClass) return true;
    ++found.known;
    const SettingAccess* const access = settingsClass->findKey(key);
    if (!access) return true;
    ++found.knowTheKey;
    bool goOn = true;
    detail::visitColumns(document, [&](bool hasValue) {
      if (hasValue && document.GetAttrib(u"Name") == key && document.HasChildAttrib(u"Value")) {
        found.access = access;
        goOn = ++found.columns != stopAt;
      }
      return goOn;
    });
    return goOn;
  });
  return found;
}

EditOutcome outcomeBefore(const Candidates& found) {
  if (found.configurations == 0) return EditOutcome::noConfiguration;
  if (found.known == 0) return EditOutcome::unknownClass;
  if (found.knowTheKey == 0) return EditOutcome::unknownKey;
  if (found.columns == 0) return EditOutcome::notInFile;
  return found.columns == 1 ? EditOutcome::changed : EditOutcome::severalCandidates;
}

}  // namespace

std::vector<DocumentConfiguration> findConfigurations(CMarkup& document) {
  std::vector<DocumentConfiguration> found;
  detail::visitConfigurations(document, [&] {
    found.push_back(configurationAt(document));
    return true;
  });
  document.ResetPos();
  return found;
}

std::unique_ptr<CFGConfig> loadConfiguration(const CMarkup& document,
                                             const DocumentConfiguration& configuration) {
  if (!configuration.settingsClass) return nullptr;
  CMarkup part(document.GetDocFlags());
  part.SetDoc(document.GetDoc().Mid(configuration.offset, configuration.length));
  part.FindChildElem();
  std::unique_ptr<CFGConfig> object = configuration.settingsClass->create();
  if (object && object->loadByXML(&part) != 1) object.reset();
  return object;
}

ConfigDifference compareConfigurations(const DocumentConfiguration& a,
                                       const DocumentConfiguration& b) {
  return compare(valuesOf(a), valuesOf(b), a.settingsClass);
}

ConfigDifference compareConfigurations(const CFGConfig& a, const CFGConfig& b) {
  return compare(valuesOf(a), valuesOf(b), findSettingsClassByElement(a.GetElementName()));
}

ConfigDifference changedFromDefaults(const DocumentConfiguration& configuration) {
  if (!configuration.settingsClass || !configuration.settingsClass->isConfiguration()) return {};
  const std::unique_ptr<CFGConfig> defaults = configuration.settingsClass->create();
  return compare(valuesOf(*defaults), valuesOf(configuration), configuration.settingsClass);
}

EditResult setValueInDocument(CMarkup& document, const CString& configuration, const CString& key,
                              const CString& text) {
  EditResult result{};
  const Candidates found = lookFor(document, configuration, key, 0);
  result.outcome = outcomeBefore(found);
  if (found.access && result.outcome == EditOutcome::changed) {
    const SettingDef& setting = *found.access->setting;
    result.check = checkValueText(setting.kind, text, setting.decimals);
    if (!result.check.valid()) {
      result.outcome = EditOutcome::badValue;
    } else {
      lookFor(document, configuration, key, 1);
      result.oldValue = document.GetChildAttrib(u"Value");
      result.newValue = result.check.normal;
      if (result.oldValue == result.newValue) {
        result.outcome = EditOutcome::unchanged;
      } else if (!document.SetChildAttrib(u"Value", result.newValue)) {
        result.outcome = EditOutcome::refused;
      }
    }
  }
  document.ResetPos();
  return result;
}

const char* describe(EditOutcome outcome) noexcept {
  switch (outcome) {
    case EditOutcome::changed:
      return "was changed";
    case EditOutcome::unchanged:
      return "has this value already";
    case EditOutcome::noConfiguration:
      return "is in no configuration of this document";
    case EditOutcome::unknownClass:
      return "belongs to a configuration of an unknown class";
    case EditOutcome::unknownKey:
      return "is not known to this class";
    case EditOutcome::notInFile:
      return "has no value in this document";
    case EditOutcome::severalCandidates:
      return "stands in this document more than once";
    case EditOutcome::badValue:
      return "does not take this value";
    case EditOutcome::refused:
      return "could not be changed in this document";
  }
  return "was not changed";
}

}  // namespace kpx
