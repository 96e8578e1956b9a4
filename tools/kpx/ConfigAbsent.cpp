#include "tools/kpx/ConfigAbsent.h"

#include <algorithm>
#include <set>

#include "tools/kpx/Nearest.h"

namespace kpx::tool {
namespace {

/// The key that is meant perhaps, of the file or of a class, as a question.
std::string nearKey(const Configurations& configurations, const CString& key) {
  Nearest nearest(key);
  for (const ViewedConfiguration* const each : configurations.list) {
    for (const ConfigColumn& column : each->columns) {
      nearest.offer(configurations.view().keyOf(column));
    }
    if (!each->settingsClass) continue;
    for (const SettingAccess& access : each->settingsClass->settings) {
      nearest.offer(access.key());
    }
  }
  return nearest.question();
}

/// The names of the selected configurations, each once.
std::string ownerNames(const Configurations& configurations) {
  constexpr std::size_t mostNames = 5;
  std::set<std::string> known;
  std::string names;
  for (const ViewedConfiguration* const each : configurations.list) {
    std::string name = labelOf(*each);
    if (!known.insert(name).second) continue;
    if (known.size() > mostNames) return names + ", ...";
    names += (names.empty() ? "" : ", ") + name;
  }
  return names;
}

}  // namespace

std::string nearClass(const std::string& name) {
  const CString text = CString::fromUtf8(name);
  if (findClassOf(name)) return {};
  Nearest nearest(text);
  for (const SettingsClass* const each : settingsClasses()) nearest.offer(each->name);
  return nearest.question();
}

bool isOfUnknownClass(const Configurations& configurations, const CString& key) {
  const auto hasKey = [&](const ConfigColumn& column) {
    return configurations.view().keyOf(column) == key;
  };
  return std::ranges::any_of(configurations.list, [&](const ViewedConfiguration* each) {
    return !each->settingsClass && std::ranges::any_of(each->columns, hasKey);
  });
}

std::string whyAbsent(const Configurations& configurations, const CString& key) {
  for (const ViewedConfiguration* const each : configurations.list) {
    const SettingAccess* const access =
        each->settingsClass ? each->settingsClass->findKey(key) : nullptr;
    if (!access) continue;
    if (access->key() != key.view()) {
      return "is an older name of '" + asUtf8(access->key()) + "' and is not in this file";
    }
    return "is a setting of " + labelOf(*each) +
           " but is not in this file, and its default counts; kpx config set --add writes it";
  }
  return "is neither in this file nor a setting of " + ownerNames(configurations) +
         nearKey(configurations, key);
}

}  // namespace kpx::tool
