#include "kpx/settings/document/internal/DefaultColumns.h"

namespace kpx::detail {

DefaultColumns::OfClass& DefaultColumns::of(const SettingsClass& settingsClass) {
  const auto [at, isNew] = classes_.try_emplace(&settingsClass);
  if (isNew) at->second.object = settingsClass.create();
  return at->second;
}

const CFGConfig* DefaultColumns::objectOf(const SettingsClass& settingsClass) {
  return of(settingsClass).object.get();
}

const CFGCol* DefaultColumns::find(const SettingsClass& settingsClass, const CString& key) {
  OfClass& known = of(settingsClass);
  if (const CFGCol* const own = known.object ? known.object->Class.find(key.view()) : nullptr) {
    return own;
  }
  for (const SettingAccess& access : settingsClass.settings) {
    if (access.key() != key.view()) continue;
    const auto [at, isNew] = known.created.try_emplace(&access);
    if (isNew) at->second = columnCreatedBy(settingsClass, access);
    if (at->second && at->second->Name == key) return &*at->second;
  }
  return nullptr;
}

}  // namespace kpx::detail
