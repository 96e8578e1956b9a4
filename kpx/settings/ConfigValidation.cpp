#include <algorithm>
#include <map>
#include <memory>
#include <set>
#include <string_view>

#include "kpx/settings/ConfigFile.h"

namespace kpx {
namespace {

/// The keys that a new object of each class has, made once for a document.
class DefaultKeys {
 public:
  const std::vector<CString>& of(const SettingsClass& settingsClass) {
    const auto [at, isNew] = keys_.try_emplace(&settingsClass);
    if (isNew && settingsClass.isConfiguration()) {
      const std::unique_ptr<CFGConfig> defaults = settingsClass.create();
      for (const auto& entry : defaults->Class.Cols) at->second.push_back(entry.key);
    }
    return at->second;
  }

 private:
  std::map<const SettingsClass*, std::vector<CString>> keys_;
};

class Validator {
 public:
  Validator(const DocumentConfiguration& configuration, DefaultKeys& defaultKeys,
            std::vector<ConfigFinding>& findings)
      : configuration_(configuration),
        class_(configuration.settingsClass),
        className_(class_ ? CString(class_->name) : configuration.elementName),
        defaultKeys_(defaultKeys),
        findings_(findings) {}

  void run() {
    if (!class_) {
      add(FindingKind::unknownClass, {}, {}, configuration_.offset);
      return;
    }
    std::set<std::u16string_view> keys;
    for (const DocumentSetting& setting : configuration_.settings) {
      if (!keys.insert(setting.key).second) {
        add(FindingKind::duplicateKey, setting.key, setting.value, setting.offset);
      }
      checkSetting(setting);
    }
    for (const CString& key : defaultKeys_.of(*class_)) {
      if (!keys.contains(key)) add(FindingKind::missingKey, key, {}, configuration_.offset);
    }
  }

 private:
  void checkSetting(const DocumentSetting& setting) {
    const SettingAccess* const access = class_->findKey(setting.key);
    if (!access) {
      add(FindingKind::unknownKey, setting.key, setting.value, setting.offset);
      return;
    }
    if (setting.valueOffset < 0) {
      add(FindingKind::missingValue, setting.key, {}, setting.offset);
      return;
    }
    const ValueCheck check = checkValueText(access->setting->kind, setting.value);
    if (!check.valid()) {
      add(check.problem == ValueProblem::thousandsMark ? FindingKind::thousandsMark
                                                       : FindingKind::badValue,
          setting.key, setting.value, setting.valueOffset, check.problem);
    } else if (setting.value.FindOneOf(u"\r\n") >= 0) {
      add(FindingKind::lineBreak, setting.key, setting.value, setting.valueOffset);
    }
  }

  void add(FindingKind kind, const CString& key, const CString& value, int offset,
           ValueProblem problem = ValueProblem::none) {
    findings_.push_back({kind, className_, key, value, offset, problem});
  }

  const DocumentConfiguration& configuration_;
  const SettingsClass* class_;
  CString className_;
  DefaultKeys& defaultKeys_;
  std::vector<ConfigFinding>& findings_;
};

}  // namespace

std::vector<ConfigFinding> validateConfigurations(CMarkup& document, std::size_t enough) {
  std::vector<ConfigFinding> findings;
  DefaultKeys defaultKeys;
  for (const DocumentConfiguration& configuration : findConfigurations(document)) {
    if (findings.size() >= enough) break;
    Validator(configuration, defaultKeys, findings).run();
  }
  std::ranges::stable_sort(findings, {}, &ConfigFinding::offset);
  return findings;
}

const char* describe(FindingKind kind) noexcept {
  switch (kind) {
    case FindingKind::unknownClass:
      return "is a configuration of an unknown class";
    case FindingKind::unknownKey:
      return "is not known to this class, and is passed over in reading";
    case FindingKind::missingKey:
      return "is missing, and keeps its default in reading";
    case FindingKind::duplicateKey:
      return "stands here a second time, and the last counts";
    case FindingKind::missingValue:
      return "has no value, and is emptied in reading";
    case FindingKind::badValue:
      return "has a value that does not read as its type";
    case FindingKind::thousandsMark:
      return "has a thousands mark, and is read as another number";
    case FindingKind::lineBreak:
      return "has a line break in its value, which other programs turn into a blank";
  }
  return "is not as it should be";
}

}  // namespace kpx
