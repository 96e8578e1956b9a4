#pragma once

#include <string>

#include "tools/kpx/CommandLine.h"
#include "tools/kpx/Configurations.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {

struct ConvertOptions {
  std::string to;         // json, csv, ini or xml
  std::string output;     // a file; empty for standard output
  std::string separator;  // of CSV: ",", ";", "|" or "tab"
  bool mark = false;      // CSV begins with a byte-order mark
  bool strict = false;    // to XML: refuse what the suite would not write
};

/// Adds the options of `convert` to its verb.
void addConvertOptions(OptionList& verb, ConvertOptions& options);

/// Converts a file with configurations to another format, or JSON back to XML.
Exit convert(const std::string& file, const Selection& selection, const ConvertOptions& options);

}  // namespace kpx::tool
