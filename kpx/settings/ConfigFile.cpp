#include "kpx/settings/ConfigFile.h"

#include <map>
#include <string_view>
#include <utility>

#include "kpx/report/Error.h"
#include "kpx/settings/internal/ConfigWalk.h"

namespace kpx {
namespace {

DocumentConfiguration configurationAt(CMarkup& document) {
  DocumentConfiguration found;
  int begin = 0;
  int end = 0;
  found.elementName = document.ReadTagName();
  found.name = detail::valueOf(document.ReadAttribs(), u"Name");
  found.settingsClass = findSettingsClassByElement(found.elementName);
  if (document.GetOffsets(begin, end)) {
    found.offset = begin;
    found.length = end - begin;
  }
  document.ResetChildPos();
  found.hasClass = document.FindChildElem(u"CFGClass");
  detail::visitColumns(document, [&](bool hasValue) {
    found.settings.push_back(detail::settingAt(document, hasValue));
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

}  // namespace

std::vector<DocumentConfiguration> findConfigurations(CMarkup& document) {
  std::vector<DocumentConfiguration> found;
  detail::visitConfigurations(document, [&] {
    found.push_back(configurationAt(document));
    found.back().number = static_cast<int>(found.size());
    return true;
  });
  document.ResetPos();
  return found;
}

bool ConfigurationChoice::includes(const DocumentConfiguration& configuration) const noexcept {
  if (number != 0 && configuration.number != number) return false;
  return name.IsEmpty() || configuration.elementName == name ||
         (configuration.settingsClass && configuration.settingsClass->name == name.view());
}

std::unique_ptr<CFGConfig> loadConfiguration(const CMarkup& document,
                                             const DocumentConfiguration& configuration) {
  if (!configuration.settingsClass) return nullptr;
  const GuardWatch watch;
  CMarkup part(document.GetDocFlags());
  part.SetDoc(document.GetDoc().Mid(configuration.offset, configuration.length));
  part.FindChildElem();
  std::unique_ptr<CFGConfig> object = configuration.settingsClass->create();
  if (object && object->loadByXML(&part) != 1) object.reset();
  watch.passOn();
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

}  // namespace kpx
