#include "kpx/settings/document/ConfigDifference.h"

#include <map>
#include <memory>
#include <string_view>
#include <utility>

#include "kpx/settings/ValueCheck.h"

namespace kpx {
namespace {

/// The values of one side in their order, and by key; of a repeated key the last.
class Values {
 public:
  Values(const ConfigView& view, const ViewedConfiguration& configuration) {
    for (const ConfigColumn& column : configuration.columns) {
      add(view.keyOf(column), view.valueOf(column));
    }
  }
  explicit Values(const CFGConfig& config) {
    for (const auto& entry : config.Class.Cols) add(entry.key, entry.value.Value.Value);
  }

  const CString* find(const CString& key) const {
    const auto found = index_.find(key);
    return found == index_.end() ? nullptr : &list_[found->second].value;
  }
  auto begin() const noexcept { return list_.begin(); }
  auto end() const noexcept { return list_.end(); }

 private:
  void add(CString key, CString value) {
    const auto [at, isNew] = index_.try_emplace(key, list_.size());
    if (isNew) {
      list_.push_back({std::move(key), std::move(value)});
    } else {
      list_[at->second].value = std::move(value);
    }
  }

  std::vector<KeyAndValue> list_;
  // A tree, because the keys of a document may be chosen to collide in a hash table.
  std::map<CString, std::size_t> index_;
};

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
    const CString* const other = b.find(key);
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

ConfigDifference compareConfigurations(const ConfigView& viewA, const ViewedConfiguration& a,
                                       const ConfigView& viewB, const ViewedConfiguration& b) {
  return compare(Values(viewA, a), Values(viewB, b), a.settingsClass);
}

ConfigDifference compareConfigurations(const CFGConfig& a, const CFGConfig& b) {
  return compare(Values(a), Values(b), findSettingsClassByElement(a.GetElementName()));
}

ConfigDifference changedFromDefaults(const ConfigView& view,
                                     const ViewedConfiguration& configuration) {
  if (!configuration.settingsClass || !configuration.settingsClass->isConfiguration()) return {};
  const std::unique_ptr<CFGConfig> defaults = configuration.settingsClass->create();
  return compare(Values(*defaults), Values(view, configuration), configuration.settingsClass);
}

}  // namespace kpx
