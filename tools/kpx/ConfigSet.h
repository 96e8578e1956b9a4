#pragma once

#include <string>
#include <string_view>

#include "tools/kpx/CommandLine.h"
#include "tools/kpx/Configurations.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/FileChange.h"

namespace kpx::tool {

struct SetOptions {
  std::string value;
  ChangeWait wait;
  bool dryRun = false;
  bool backup = false;
  bool add = false;  // a key that the class knows and the file lacks
};

/// Adds the value and the options of `set` to its verb.
void addSetOptions(OptionList& verb, SetOptions& options);

/// Changes one value of a file and nothing else in it.
Exit setValue(const std::string& file, const std::string& key, const Selection& selection,
              const SetOptions& options, bool json);

}  // namespace kpx::tool
