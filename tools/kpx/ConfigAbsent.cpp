#include "tools/kpx/ConfigAbsent.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "kpx/text/CaseFold.h"

namespace kpx::tool {
namespace {

/// Whether two names are the same but for case and one character added, left out, changed or
/// swapped with its neighbour.
bool isNear(std::u16string_view a, std::u16string_view b) {
  if (a.size() > b.size()) std::swap(a, b);
  if (b.size() - a.size() > 1) return false;
  const auto same = [](char16_t left, char16_t right) { return foldCase(left) == foldCase(right); };
  const auto first = std::ranges::mismatch(a, b, same);
  std::u16string_view restA(first.in1, a.end());
  std::u16string_view restB(first.in2, b.end());
  if (restB.empty()) return true;
  restB.remove_prefix(1);
  if (a.size() < b.size()) return std::ranges::equal(restA, restB, same);
  restA.remove_prefix(1);
  if (std::ranges::equal(restA, restB, same)) return true;
  return !restA.empty() && same(restA[0], *first.in2) && same(restB[0], *first.in1) &&
         std::ranges::equal(restA.substr(1), restB.substr(1), same);
}

std::string question(std::u16string_view name) {
  return "; did you mean '" + shownOnOneLine(CString(name)) + "'?";
}

/// The key that is meant perhaps, of the file or of a class; one that differs in case only first.
std::string nearKey(const Configurations& configurations, const CString& key) {
  std::u16string_view edited;
  const auto take = [&](std::u16string_view known) {
    const bool isCase = compareTextNoCase(key, known) == 0;
    if (isCase || (edited.empty() && isNear(key, known))) edited = known;
    return isCase;
  };
  for (const DocumentConfiguration& configuration : configurations.list) {
    for (const DocumentSetting& setting : configuration.settings) {
      if (take(setting.key)) return question(edited);
    }
    if (!configuration.settingsClass) continue;
    for (const SettingAccess& access : configuration.settingsClass->settings) {
      if (take(access.key())) return question(edited);
    }
  }
  return edited.empty() ? std::string() : question(edited);
}

/// The names of the selected configurations, each once.
std::string ownerNames(const Configurations& configurations) {
  constexpr std::size_t mostNames = 5;
  std::set<std::string> known;
  std::string names;
  for (const DocumentConfiguration& each : configurations.list) {
    std::string name = nameOf(each);
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
  for (const SettingsClass* const each : settingsClasses()) {
    if (isNear(text, each->name)) return question(each->name);
  }
  return {};
}

bool isOfUnknownClass(const Configurations& configurations, const CString& key) {
  return std::ranges::any_of(configurations.list, [&](const DocumentConfiguration& each) {
    return !each.settingsClass &&
           std::ranges::find(each.settings, key, &DocumentSetting::key) != each.settings.end();
  });
}

std::string whyAbsent(const Configurations& configurations, const CString& key) {
  for (const DocumentConfiguration& each : configurations.list) {
    const SettingAccess* const access =
        each.settingsClass ? each.settingsClass->findKey(key) : nullptr;
    if (!access) continue;
    if (access->key() != key.view()) {
      return "is an older name of '" + shown(access->key()) + "' and is not in this file";
    }
    return "is a setting of " + nameOf(each) +
           " but is not in this file, and its default counts; kpx config set --add writes it";
  }
  return "is neither in this file nor a setting of " + ownerNames(configurations) +
         nearKey(configurations, key);
}

}  // namespace kpx::tool
