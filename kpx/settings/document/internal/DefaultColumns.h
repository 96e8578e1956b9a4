#pragma once

#include <map>
#include <memory>
#include <optional>

#include "kpx/settings/Catalogue.h"

namespace kpx::detail {

/// The columns that classes give their keys, each made once for a document.
class DefaultColumns {
 public:
  /// A new object of the class; nullptr for rows and tables.
  const CFGConfig* objectOf(const SettingsClass& settingsClass);

  /// The column that the class has under the key: that of a new object, since where two setters
  /// share a key it is what files carry; else the one that a setter creates. nullptr if there is
  /// neither. Valid as long as this object.
  const CFGCol* find(const SettingsClass& settingsClass, const CString& key);

 private:
  struct OfClass {
    std::unique_ptr<CFGConfig> object;
    std::map<const SettingAccess*, std::optional<CFGCol>> created;
  };
  OfClass& of(const SettingsClass& settingsClass);

  std::map<const SettingsClass*, OfClass> classes_;
};

}  // namespace kpx::detail
