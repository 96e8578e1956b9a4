#pragma once

#include <string>

namespace kpx::tool {

/// An error number and the operation behind it.
struct ErrorName {
  int number = 0;
  std::string operation;      // "CFGCol::serializeXML"
  std::string doing;          // "a setting was being written to XML"
  std::string settingsClass;  // of settings only
  std::string accessor;
  std::string key;
};

/// The operation of a number, of settings, too; empty for numbers of modules and unknown ones.
std::string operationName(int number);

}  // namespace kpx::tool
