#include <algorithm>
#include <memory>
#include <string>
#include <variant>

#include "kpx/config/CFGTable.h"
#include "kpx/settings/Catalogue.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/Classes.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::string name;
  bool json = false;
};

// --- list -----------------------------------------------------------------------------------

const char* shapeName(ClassShape shape) {
  switch (shape) {
    case ClassShape::configuration:
      return "configuration";
    case ClassShape::row:
      return "row";
    case ClassShape::table:
      return "table";
  }
  return "";
}

/// How many keys a class has: the columns of a new object, or the cells that a row may have.
std::size_t keyCount(const SettingsClass& entry, const CDBObject& object) {
  switch (entry.shape) {
    case ClassShape::configuration:
      return static_cast<const CFGConfig&>(object).Class.Cols.size();
    case ClassShape::row:
      return entry.settings.size();
    case ClassShape::table:
      return static_cast<const CFGTable&>(object).Class.Cols.size();
  }
  return 0;
}

Exit list(const Arguments& arguments) {
  Json report = Json::array();
  CString text;
  for (const SettingsClass* entry : settingsClasses()) {
    const std::unique_ptr<CDBObject> object = entry->make();
    const std::size_t count = keyCount(*entry, *object);
    const CString element = object->GetElementName();
    if (arguments.json) {
      report.push_back({{"class", asUtf8(entry->name)},
                        {"family", asUtf8(entry->family)},
                        {"shape", shapeName(entry->shape)},
                        {"element", asUtf8(element)},
                        {"settings", count}});
    } else {
      text.AppendFormat(u"%-34s %-14s %-14S %5zu  %s\n", entry->name, entry->family,
                        shapeName(entry->shape), count, element);
    }
  }
  if (arguments.json) {
    Json answer = newAnswer();
    answer["classes"] = std::move(report);
    printJson(answer);
  } else {
    CString heading;
    heading.Format(u"%-34s %-14s %-14s %5s  %s\n", u"class", u"family", u"shape", u"keys",
                   u"element");
    print(asUtf8(heading + text));
  }
  return Exit::success;
}

// --- show -----------------------------------------------------------------------------------

const char* kindName(ValueKind kind) {
  switch (kind) {
    case ValueKind::integer:
      return "integer";
    case ValueKind::flag:
      return "flag";
    case ValueKind::enumeration:
      return "enumeration";
    case ValueKind::real:
      return "real";
    case ValueKind::text:
      return "text";
  }
  return "";
}

/// One line of `show`: an accessor pair, or a column without accessors.
struct Shown {
  CString key = {};
  CString getter = {};
  CString setter = {};
  std::string kind = {};
  CString value = {};  // of a new object
  CString caption = {};
  CString group = {};
};

Shown shownSetting(const SettingAccess& access, const CFGCol* column) {
  const SettingDef& setting = *access.setting;
  return {.key = access.key(),
          .getter = access.getter,
          .setter = access.setter,
          .kind = kindName(setting.kind),
          .value = column ? column->Value.Value : CString(),
          .caption = setting.caption.get(),
          .group = setting.group.get()};
}

std::vector<Shown> settingsOf(const SettingsClass& entry, const CDBObject& object) {
  std::vector<Shown> settings;
  if (entry.shape == ClassShape::table) {
    for (const auto& column : static_cast<const CFGTable&>(object).Class.Cols) {
      settings.push_back({.key = column.key,
                          .kind = "column",
                          .caption = column.value.Caption,
                          .group = column.value.Category});
    }
  }
  for (const SettingAccess& access : entry.settings) {
    const CFGCol* column = nullptr;
    if (entry.isConfiguration()) {
      column = static_cast<const CFGConfig&>(object).Class.find(access.key());
    }
    settings.push_back(shownSetting(access, column));
  }
  return settings;
}

Exit show(const Arguments& arguments) {
  const SettingsClass& entry = requireClass(arguments.name);
  const std::unique_ptr<CDBObject> object = entry.make();
  Json settings = Json::array();
  CString text;
  text.Format(u"%-28s %-26s %-26s %-8s %-14s %s\n", u"key", u"getter", u"setter", u"kind",
              u"default", u"caption");
  for (const Shown& each : settingsOf(entry, *object)) {
    if (arguments.json) {
      settings.push_back({{"key", asUtf8(each.key)},
                          {"getter", asUtf8(each.getter)},
                          {"setter", asUtf8(each.setter)},
                          {"kind", each.kind},
                          {"default", asUtf8(each.value)},
                          {"caption", asUtf8(each.caption)},
                          {"group", asUtf8(each.group)}});
    } else {
      text.AppendFormat(u"%-28s %-26s %-26s %-8S %-14s %s\n", each.key, each.getter, each.setter,
                        each.kind.c_str(), each.value, each.caption);
    }
  }
  if (arguments.json) {
    Json answer = newAnswer();
    answer.update({{"class", asUtf8(entry.name)},
                   {"family", asUtf8(entry.family)},
                   {"shape", shapeName(entry.shape)},
                   {"element", asUtf8(object->GetElementName())},
                   {"accessors", std::move(settings)}});
    printJson(answer);
  } else {
    print(asUtf8(text));
  }
  return Exit::success;
}

// --- export ---------------------------------------------------------------------------------

Json describe(const CString& key, const CFGCol& column) {
  return {{"key", asUtf8(key)},
          {"type", column.Type},
          {"caption", asUtf8(column.Caption)},
          {"category", asUtf8(column.Category)},
          {"value", asUtf8(column.Value.Value)},
          {"prec", column.Prec},
          {"param1", column.Param1},
          {"param2", column.Param2},
          {"param3", column.Param3},
          {"param4", column.Param4},
          {"param5", column.Param5},
          {"param6", column.Param6},
          {"length", column.Length},
          {"nullable", column.Nullable},
          {"empty", column.Empty},
          {"unit", column.Unit},
          {"default", asUtf8(column.Default)}};
}

Json textsOf(const std::vector<CString>& texts) {
  Json list = Json::array();
  for (const CString& text : texts) list.push_back(asUtf8(text));
  return list;
}

/// The key order after ResetPos, or null where ResetPos does nothing.
Json resetOrder(CFGConfig& object) {
  const CString untouched(u'\u0001');
  object.Class.KeyOrder.assign(1, untouched);
  object.ResetPos();
  if (object.Class.KeyOrder.size() == 1 && object.Class.KeyOrder[0] == untouched) return nullptr;
  return textsOf(object.Class.KeyOrder);
}

Json typed(const SettingValue& value) {
  if (const auto* integer = std::get_if<std::int32_t>(&value)) return *integer;
  if (const auto* real = std::get_if<double>(&value)) return *real;
  return asUtf8(std::get<CString>(value));
}

bool isNeutral(const SettingValue& value) {
  if (const auto* integer = std::get_if<std::int32_t>(&value)) return *integer == 0;
  if (const auto* real = std::get_if<double>(&value)) return *real == 0.0;
  return std::get<CString>(value).IsEmpty();
}

Json exportClass(const SettingsClass& entry) {
  // Rows and tables carry nothing but their header through XML, so they have no settings here.
  const std::unique_ptr<CDBObject> object = entry.make();
  Json settings = Json::array();
  CString className;
  CString configName;
  Json order = nullptr;
  if (entry.shape == ClassShape::table) {
    className = static_cast<CFGTable&>(*object).Class.Name;
  } else if (entry.isConfiguration()) {
    auto& config = static_cast<CFGConfig&>(*object);
    className = config.Class.Name;
    configName = config.Name;
    for (const CString& key : config.Class.KeyOrder) {
      if (const CFGCol* column = config.Class.find(key)) {
        settings.push_back(describe(key, *column));
      }
    }
    order = resetOrder(config);
  }
  Json result{{"class", asUtf8(entry.name)},       {"name", asUtf8(className)},
              {"config_name", asUtf8(configName)}, {"element", asUtf8(object->GetElementName())},
              {"settings", std::move(settings)},   {"reset_order", std::move(order)}};

  Json setters = Json::object();
  Json missing = Json::object();
  for (const SettingAccess& access : entry.settings) {
    if (const auto column = columnCreatedBy(entry, access)) {
      setters[asUtf8(access.setter)] = {{"key", asUtf8(column->Name)},
                                        {"type", column->Type},
                                        {"caption", asUtf8(column->Caption)},
                                        {"category", asUtf8(column->Category)}};
    }
    if (const auto answer = answerWhenMissing(entry, access); answer && !isNeutral(*answer)) {
      missing[asUtf8(access.getter)] = typed(*answer);
    }
  }
  result["setters"] = std::move(setters);
  result["missing"] = std::move(missing);
  return result;
}

Exit exportAll(const Arguments&) {
  Json report = Json::array();
  for (const SettingsClass* entry : settingsClasses()) report.push_back(exportClass(*entry));
  Json answer = newAnswer();
  answer["classes"] = std::move(report);
  printJson(answer);
  return Exit::success;
}

}  // namespace

const SettingsClass& requireClass(const std::string& name) {
  if (const SettingsClass* found = findSettingsClass(CString::fromUtf8(name))) return *found;
  throw Failure(Exit::usage, "there is no class '" + name + "'; kpx classes list shows them");
}

void addClassesVerbs(VerbGroup& program) {
  VerbGroup classes = program.group("classes", "The catalogue of all settings classes");
  classes.verb("list", "List the classes", &list).takes("--json", &Arguments::json, "Print JSON");
  classes.verb("show", "Show the settings of a class with their accessors", &show)
      .needs("CLASS", &Arguments::name, "Name of the class")
      .takes("--json", &Arguments::json, "Print JSON");
  classes.verb("export", "Print what a new object of every class holds, as JSON", &exportAll)
      .takes("--json", &Arguments::json, "Print JSON (it always does)");
}

}  // namespace kpx::tool
