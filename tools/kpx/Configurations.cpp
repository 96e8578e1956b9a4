#include "tools/kpx/Configurations.h"

#include "tools/kpx/Classes.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {

CString defaultsAsXml(const SettingsClass& settingsClass) {
  const std::unique_ptr<CFGConfig> object = settingsClass.create();
  if (!object) {
    throw Failure(Exit::usage, "'" + shown(settingsClass.name) +
                                   "' is a table or a row: its values are not stored as XML");
  }
  CMarkup document;
  document.SetDoc(u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n");
  if (object->serializeXML(&document) == 0) {
    throw Failure(Exit::notWritten, "'" + shown(settingsClass.name) + "' cannot be written");
  }
  return document.TakeDoc();
}

Configurations configurationsOf(const Input& input) {
  Configurations result{input.name, requireWellFormed(input).document, {}};
  result.list = findConfigurations(result.document);
  if (result.list.empty()) throw Failure(Exit::input, input.name + ": holds no configuration");
  return result;
}

Configurations readConfigurations(const std::string& fileOrClass) {
  const SettingsClass* const known = findSettingsClass(CString::fromUtf8(fileOrClass));
  if (!known) return configurationsOf(readInput(fileOrClass));
  Configurations result{fileOrClass, {}, {}};
  result.document.SetDoc(defaultsAsXml(*known));
  result.list = findConfigurations(result.document);
  return result;
}

std::string nameOf(const DocumentConfiguration& configuration) {
  return shown(configuration.settingsClass ? CString(configuration.settingsClass->name)
                                           : configuration.elementName);
}

}  // namespace kpx::tool
