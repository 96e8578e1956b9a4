#pragma once

#include <string>

#include "tools/kpx/Configurations.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {

struct SetOptions {
  std::string value;
  bool dryRun = false;
  bool backup = false;
};

/// Changes one value of a file and nothing else in it.
Exit setValue(const std::string& file, const std::string& key, const std::string& className,
              const SetOptions& options, bool json);

/// Whether a configuration is the one that --class names; without a name, any is.
bool isMeant(const DocumentConfiguration& configuration, const std::string& className);

/// " of the class CLASS" for messages; empty without a class.
std::string inClass(const std::string& className);

}  // namespace kpx::tool
