#pragma once

#include <string>
#include <vector>

#include "kpx/settings/ConfigFile.h"
#include "tools/kpx/Input.h"

namespace kpx::tool {

/// The configurations of a file, or the defaults of a class.
struct Configurations {
  std::string source;  // as messages name it
  CMarkup document;
  std::vector<DocumentConfiguration> list;
};

/// Reads what a name stands for: a class of the catalogue, "-", or a file. Raises a Failure when
/// the file is unreadable, ill-formed or holds no configuration.
Configurations readConfigurations(const std::string& fileOrClass);
Configurations configurationsOf(const Input& input);

/// The XML of a new object of the class, as a document of its own.
CString defaultsAsXml(const SettingsClass& settingsClass);

/// How a configuration is called in output: its class, or its element if the class is unknown.
std::string nameOf(const DocumentConfiguration& configuration);

}  // namespace kpx::tool
