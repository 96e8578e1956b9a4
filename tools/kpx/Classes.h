#pragma once

#include <string>

#include "kpx/settings/Catalogue.h"

namespace kpx::tool {

/// The class of that name. Raises a Failure (wrong usage) if there is none.
const SettingsClass& requireClass(const std::string& name);

}  // namespace kpx::tool
