#include "tools/kpx/ErrorSentence.h"

#include <cstddef>

namespace kpx::tool {
namespace {

/// What operations work on, by a part of their name; the first entry that fits counts.
struct Thing {
  std::string_view part;
  std::string_view name;
  bool isPlural = false;
};

constexpr Thing things[] = {
    {"CFGRange::", "a range of a setting"},
    {"CFGCodedValue::", "a coded value of a setting"},
    {"CFGCommand::", "a command of a setting"},
    {"CFGHeader::", "the header of a configuration"},
    {"CFGTable::", "a table of settings"},
    {"CFGRow::", "a row of a table of settings"},
    {"CFGConfig::", "a configuration"},
    {"CFGClass::", "the settings of a configuration", true},
    {"CFGCol::", "a setting"},
    {"CFGValue::", "the value of a setting"},
    {"CJob::", "a job"},
    {"CProject::", "a project"},
    {"CUser::", "a user"},
    {"FileTime", "the times of a file", true},
    {"CKpxBaseObjectsUtil::", "a date or time"},
    {"CFCFieldInfos::", "a list of field information"},
    {"CAaaAreaCalcResultCache::", "the results of area calculations", true},
    {"CAaaPunktortUUID::", "the identifier of a point location"},
    {"CNAS_Punktobjekt::", "a point of the cadastral exchange format"},
    {"POIDs", "the identifiers of a point", true},
    {"CMarkup::", "an XML document"},
    {"CIniEx::", "an INI file"},
    {"CHiFreqTimer::", "a timer"},
    {"CTimerFactory::", "the timers", true},
    {"CRegistry::", "the registry"},
    {"Registry", "a setting of the registry"},
    {"CUtf16StdioFile::", "a text file"},
    {"utlDoubleAsText", "a number"},
    {"Uuid", "a new unique identifier"},
    {"Unzip", "an archive"},
    {"MLT", "the texts in the user's language", true},
    {"anguage", "the texts in the user's language", true},
    {"ording", "the texts in the user's language", true},
    {"Observer", "the observers of a subject", true},
    {"ShowKPX", "a switch of the suite"},
    {"Message", "a message to the user"},
    {"GS", "the list of status codes"},
    {"rac", "the trace of the library"},
    {"WindowTitle", "the title of a window"},
    {"Wnd", "a window of the program"},
    {"Path", "a folder of the suite"},
    {"Folder", "a folder of the suite"},
    {"File", "a file"},
    {"kpx_c_text", "a text of the suite"},
    {"kpx_c_start_texts", "the texts in the user's language", true},
    {"kpx_c_class", "the list of classes"},
    {"kpx_c_open", "a document with configurations"},
    {"kpx_c_save", "a document with configurations"},
    {"kpx_c_close", "a document with configurations"},
    {"kpx_c_count", "a document with configurations"},
    {"kpx_c_find", "a configuration of a document"},
    {"kpx_c_configuration", "a configuration of a document"},
    {"kpx_c_new", "a configuration of a document"},
    {"kpx_c_add", "a configuration of a document"},
    {"kpx_c_", "a setting"},
    {"KPXSetting", "a switch of the suite"},
    {"Computer", "the name of the computer"},
    {"User", "the current user"},
    {"PrjSettings", "the settings of the current project", true},
    {"Project", "the current project"},
    {"Job", "the current job"},
    {"Settings", "the current settings", true},
    {"AppName", "the name of the program"},
    {"AutoSave", "the automatic saving"},
    {"", "a switch of the suite"},
};

/// What they do to it, by the beginning of their name behind class and prefix. "%" stands for the
/// thing with its "was" or "were", "@" for the thing alone.
struct Doing {
  std::string_view begin;
  std::string_view clause;
};

constexpr Doing doings[] = {
    {"serializeXML", "% being written to XML"},
    {"loadByXML", "% being read from XML"},
    {"GetElementName", "% being written to XML"},
    {"ResetPos", "% being put in order"},
    {"x_ParseDoc", "% being parsed"},
    {"DetectUTF8", "% being read"},
    {"operator=", "% being copied"},
    {"Copy", "% being copied"},
    {"GetAsText", "% being turned into text"},
    {"text", "% being looked up"},
    {"utlDoubleAsText", "% being turned into text"},
    {"utlMessageBox", "% being shown"},
    {"ShowConnecting", "% being looked up"},
    {"ShowKPX", "% being looked up"},
    {"Show", "% being shown"},
    {"dump", "% being written to a report"},
    {"Unzip", "% being unpacked"},
    {"InitMLT", "% being loaded"},
    {"start_", "% being loaded"},
    {"Init", "% being filled"},
    {"Make", "% being made"},
    {"new", "% being made"},
    {"CreateKey", "something was being added to @"},
    {"Open", "% being opened"},
    {"open", "% being opened"},
    {"Close", "% being closed"},
    {"close", "% being closed"},
    {"Load", "% being read"},
    {"Read", "% being read"},
    {"Save", "% being saved"},
    {"save", "% being saved"},
    {"Write", "% being written"},
    {"stop", "% being stopped"},
    {"notify", "% being told of a change"},
    {"RemoveAll", "% being emptied"},
    {"removeAll", "% being emptied"},
    {"Clear", "% being emptied"},
    {"Remove", "something was being removed from @"},
    {"remove", "something was being removed from @"},
    {"Delete", "something was being removed from @"},
    {"Add", "something was being added to @"},
    {"add", "something was being added to @"},
    {"Insert", "something was being added to @"},
    {"Coord", "% being changed"},
    {"Set", "% being changed"},
    {"set", "% being changed"},
    {"use", "% being changed"},
    {"Update", "% being changed"},
    {"GetKeyData", "% being read"},
    {"GetSection", "% being read"},
    {"GetData", "% being read"},
    {"", "% being looked up"},
};

/// "CJob::CJob" and the like.
bool isConstructor(std::string_view operation) {
  const std::size_t colons = operation.find("::");
  return colons != operation.npos && operation.substr(0, colons) == operation.substr(colons + 2);
}

/// The name without class and prefix.
std::string_view methodOf(std::string_view operation) {
  const std::size_t colons = operation.find("::");
  std::string_view method = colons == operation.npos ? operation : operation.substr(colons + 2);
  for (const std::string_view prefix : {"kpx_c_", "kpx", "sonstigeEigenschaften"}) {
    if (method.starts_with(prefix)) method.remove_prefix(prefix.size());
  }
  return method;
}

}  // namespace

std::string errorSentence(std::string_view operation) {
  // The last entry of either table fits every name.
  const Thing* thing = things;
  while (operation.find(thing->part) == operation.npos) ++thing;
  const Doing* doing = doings;
  const std::string_view method = methodOf(operation);
  while (!method.starts_with(doing->begin)) ++doing;
  std::string sentence;
  for (const char each : isConstructor(operation) ? "% being made" : doing->clause) {
    if (each != '%' && each != '@') {
      sentence += each;
      continue;
    }
    sentence += thing->name;
    if (each == '%') sentence += thing->isPlural ? " were" : " was";
  }
  return sentence;
}

}  // namespace kpx::tool
