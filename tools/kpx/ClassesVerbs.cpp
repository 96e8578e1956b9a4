#include <algorithm>
#include <memory>
#include <string>
#include <variant>

#include "kpx/settings/Catalogue.h"
#include "tools/kpx/Classes.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

// --- list -----------------------------------------------------------------------------------

Exit list(bool json) {
  Json report = Json::array();
  CString text;
  for (const SettingsClass* entry : settingsClasses()) {
    const std::unique_ptr<CFGConfig> object = entry->create();
    const std::size_t count = object ? object->Class.Cols.size() : 0;
    if (json) {
      report.push_back({{"class", shown(entry->name)},
                        {"family", shown(entry->family)},
                        {"element", shown(entry->elementName)},
                        {"settings", count}});
    } else {
      text.AppendFormat(u"%-34s %-14s %5zu  %s\n", entry->name, entry->family, count,
                        entry->elementName);
    }
  }
  if (json) {
    printJson(report);
  } else {
    CString heading;
    heading.Format(u"%-34s %-14s %5s  %s\n", u"class", u"family", u"keys", u"element");
    print(shown(heading + text));
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

Exit show(const std::string& name, bool json) {
  const SettingsClass& entry = requireClass(name);
  const std::unique_ptr<CFGConfig> object = entry.create();
  Json settings = Json::array();
  CString text;
  text.Format(u"%-28s %-26s %-26s %-8s %-14s %s\n", u"key", u"getter", u"setter", u"kind",
              u"default", u"caption");
  for (const SettingAccess& access : entry.settings) {
    const CFGCol* const column = object ? object->Class.find(access.key()) : nullptr;
    const CString caption = access.setting->caption.get();
    const CString value = column ? column->Value.Value : CString();
    if (json) {
      settings.push_back({{"key", shown(access.key())},
                          {"getter", shown(access.getter)},
                          {"setter", shown(access.setter)},
                          {"kind", kindName(access.setting->kind)},
                          {"default", shown(value)},
                          {"caption", shown(caption)},
                          {"group", shown(access.setting->group.get())}});
    } else {
      text.AppendFormat(u"%-28s %-26s %-26s %-8S %-14s %s\n", access.key(), access.getter,
                        access.setter, kindName(access.setting->kind), value, caption);
    }
  }
  if (json) {
    printJson(Json{{"class", shown(entry.name)},
                   {"family", shown(entry.family)},
                   {"element", shown(entry.elementName)},
                   {"accessors", std::move(settings)}});
  } else {
    print(shown(text));
  }
  return Exit::success;
}

// --- export ---------------------------------------------------------------------------------

Json describe(const CString& key, const CFGCol& column) {
  return {{"key", shown(key)},
          {"type", column.Type},
          {"caption", shown(column.Caption)},
          {"category", shown(column.Category)},
          {"value", shown(column.Value.Value)},
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
          {"default", shown(column.Default)}};
}

Json textsOf(const std::vector<CString>& texts) {
  Json list = Json::array();
  for (const CString& text : texts) list.push_back(shown(text));
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
  return shown(std::get<CString>(value));
}

bool isNeutral(const SettingValue& value) {
  if (const auto* integer = std::get_if<std::int32_t>(&value)) return *integer == 0;
  if (const auto* real = std::get_if<double>(&value)) return *real == 0.0;
  return std::get<CString>(value).IsEmpty();
}

Json exportClass(const SettingsClass& entry) {
  Json result{{"class", shown(entry.name)}};
  Json settings = Json::array();
  const std::unique_ptr<CFGConfig> object = entry.create();
  if (object) {
    result["name"] = shown(object->Class.Name);
    result["config_name"] = shown(object->Name);
    result["element"] = shown(object->GetElementName());
    for (const CString& key : object->Class.KeyOrder) {
      if (const CFGCol* column = object->Class.find(key)) {
        settings.push_back(describe(key, *column));
      }
    }
  }
  result["settings"] = std::move(settings);
  result["reset_order"] = object ? resetOrder(*object) : Json(nullptr);

  Json setters = Json::object();
  Json missing = Json::object();
  for (const SettingAccess& access : entry.settings) {
    if (const auto column = columnCreatedBy(entry, access)) {
      setters[shown(access.setter)] = {{"key", shown(column->Name)},
                                       {"type", column->Type},
                                       {"caption", shown(column->Caption)},
                                       {"category", shown(column->Category)}};
    }
    if (const auto answer = answerWhenMissing(entry, access); answer && !isNeutral(*answer)) {
      missing[shown(access.getter)] = typed(*answer);
    }
  }
  result["setters"] = std::move(setters);
  result["missing"] = std::move(missing);
  return result;
}

Exit exportAll() {
  Json report = Json::array();
  for (const SettingsClass* entry : settingsClasses()) report.push_back(exportClass(*entry));
  printJson(report);
  return Exit::success;
}

}  // namespace

const SettingsClass& requireClass(const std::string& name) {
  if (const SettingsClass* found = findSettingsClass(CString::fromUtf8(name))) return *found;
  throw Failure(Exit::usage, "there is no class '" + name + "'; kpx classes list shows them");
}

void addClassesVerbs(CLI::App& app, Action& chosen) {
  CLI::App* classes = app.add_subcommand("classes", "The catalogue of all settings classes");
  classes->require_subcommand(1);
  auto json = std::make_shared<bool>(false);
  auto name = std::make_shared<std::string>();

  CLI::App* command = classes->add_subcommand("list", "List the classes");
  command->add_flag("--json", *json, "Print JSON");
  command->callback([&chosen, json] { chosen = [json] { return list(*json); }; });

  command = classes->add_subcommand("show", "Show the settings of a class with their accessors");
  command->add_option("CLASS", *name, "Name of the class")->required();
  command->add_flag("--json", *json, "Print JSON");
  command->callback(
      [&chosen, json, name] { chosen = [json, name] { return show(*name, *json); }; });

  command = classes->add_subcommand(
      "export", "Print what a new object of every class holds, as one JSON array");
  command->add_flag("--json", *json, "Print JSON (it always does)");
  command->callback([&chosen] { chosen = [] { return exportAll(); }; });
}

}  // namespace kpx::tool
