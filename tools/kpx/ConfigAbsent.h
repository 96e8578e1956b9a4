#pragma once

#include <string>

#include "tools/kpx/Configurations.h"

namespace kpx::tool {

// What to say of a name that is not there.

/// "; did you mean 'NAME'?" with the class whose name is the same but for case or one edit; empty
/// if there is none.
std::string nearClass(const std::string& name);

/// Whether one of the selected configurations is of an unknown class and has the key.
bool isOfUnknownClass(const Configurations& configurations, const CString& key);

/// Why the selected configurations hold no setting with the key, as a sentence without its
/// subject: a class knows it and its default counts, or none does, perhaps with a name like it.
std::string whyAbsent(const Configurations& configurations, const CString& key);

}  // namespace kpx::tool
