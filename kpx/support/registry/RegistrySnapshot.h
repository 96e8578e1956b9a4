#pragma once

#include <map>
#include <string>
#include <vector>

#include "kpx/platform/Registry.h"
#include "kpx/report/Export.h"
#include "kpx/support/registry/RegistryText.h"

namespace kpx {

/// Keys with their values as they were at one time, for exports and comparisons.
class RegistrySnapshot {
 public:
  /// Adds a key of the registry and everything below it.
  KPX_API RegistryResult add(RegistryRoot root, const CString& path);
  /// Carries out a step on what is there.
  KPX_API void apply(const RegistryStep& step);

  bool isEmpty() const noexcept { return keys_.empty(); }
  /// The steps that create it, keys in front of those below them.
  KPX_API std::vector<RegistryStep> steps() const;
  /// The steps that make this one into the other; empty when both are equal. Differences in the
  /// case of names are none.
  KPX_API std::vector<RegistryStep> stepsTo(const RegistrySnapshot& other) const;

 private:
  struct Value {
    CString name;
    RegistryValue content;
  };
  struct Key {
    RegistryRoot root = RegistryRoot::currentUser;
    CString path;
    std::map<std::u16string, Value> values;  // by name without case
  };
  using Keys = std::map<std::u16string, Key>;  // by root and path without case

  Key& keyAt(RegistryRoot root, const CString& path);
  bool holds(const std::u16string& place) const;

  Keys keys_;
};

}  // namespace kpx
