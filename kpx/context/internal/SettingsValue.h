#pragma once

#include "kpx/platform/Registry.h"
#include "kpx/text/CString.h"

namespace kpx::detail {

/// The key below which the suite keeps what belongs to the installation and the user.
inline constexpr std::u16string_view settingsKey = u"Software\\KPX\\Settings";
inline constexpr std::u16string_view installSubkey = u"Install";

/// Where a value was found.
struct SettingsValue {
  CString text;  // numbers as decimal text; empty: not found
  RegistryRoot root = RegistryRoot::currentUser;
  /// Why it could not be looked up; `notFound` also for a value that is empty.
  RegistryStatus status = RegistryStatus::notFound;

  bool isFound() const noexcept { return !text.IsEmpty(); }
};

/// A value of the settings key, or of a key below it: the user's own, else the machine's. A value
/// that is empty counts as none.
SettingsValue readSettingsValue(std::u16string_view subkey, const CString& name);

}  // namespace kpx::detail
