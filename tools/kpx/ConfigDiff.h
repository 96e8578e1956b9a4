#pragma once

#include <string>

#include "tools/kpx/CommandLine.h"
#include "tools/kpx/Configurations.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {

struct DiffOptions {
  std::string other;   // the file or class B; empty for the defaults
  int otherIndex = 0;  // the number in B; 0: as in A
};

/// Adds B and its options to the verb `diff`.
void addDiffOptions(OptionList& verb, DiffOptions& options);

/// Compares the values of two files or classes, or of one with the defaults.
Exit diffConfigurations(const std::string& file, const Selection& selection,
                        const DiffOptions& options, bool json);

}  // namespace kpx::tool
