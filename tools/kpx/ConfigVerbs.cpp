#include <algorithm>
#include <map>
#include <memory>
#include <string>

#include "kpx/settings/ConfigFile.h"
#include "tools/kpx/Classes.h"
#include "tools/kpx/ConfigSet.h"
#include "tools/kpx/Configurations.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::string file;   // or class
  std::string other;  // the second file or class of diff
  std::string key;
  std::string className;
  bool onlyChanged = false;
  bool json = false;
  SetOptions set;
};

// --- defaults -------------------------------------------------------------------------------

Exit defaults(const Arguments& arguments) {
  const CString text = defaultsAsXml(requireClass(arguments.file));
  if (arguments.json) {
    printJson(Json{{"class", arguments.file}, {"xml", shown(text)}});
  } else {
    print(text.utf8());
  }
  return Exit::success;
}

// --- show -----------------------------------------------------------------------------------

/// The default of each key of a configuration's class; empty for an unknown class.
std::map<CString, CString> defaultsOf(const DocumentConfiguration& configuration) {
  std::map<CString, CString> values;
  if (configuration.settingsClass) {
    if (const std::unique_ptr<CFGConfig> object = configuration.settingsClass->create()) {
      for (const auto& entry : object->Class.Cols) values[entry.key] = entry.value.Value.Value;
    }
  }
  return values;
}

Exit show(const Arguments& arguments) {
  const Configurations configurations = readConfigurations(arguments.file);
  Json report = Json::array();
  CString text;
  for (const DocumentConfiguration& configuration : configurations.list) {
    const std::map<CString, CString> defaultValues = defaultsOf(configuration);
    Json settings = Json::array();
    text.AppendFormat(u"%s[%S]\n", text.IsEmpty() ? u"" : u"\n", nameOf(configuration));
    for (const DocumentSetting& setting : configuration.settings) {
      const auto found = defaultValues.find(setting.key);
      const bool changed = found == defaultValues.end() || found->second != setting.value;
      if (arguments.onlyChanged && !changed) continue;
      Json entry{{"key", shown(setting.key)}, {"value", shown(setting.value)}};
      entry["default"] = found == defaultValues.end() ? Json(nullptr) : Json(shown(found->second));
      settings.push_back(std::move(entry));
      text.AppendFormat(u"%-28s %s", setting.key, CString::fromUtf8(shownOnOneLine(setting.value)));
      if (found == defaultValues.end()) {
        text += configuration.settingsClass ? u"   (unknown key)" : u"";
      } else if (changed) {
        const std::string value = shownOnOneLine(found->second);
        text.AppendFormat(u"   (default %S)", value.empty() ? "\"\"" : value.c_str());
      }
      text += u'\n';
    }
    report.push_back({{"class", nameOf(configuration)},
                      {"element", shown(configuration.elementName)},
                      {"known", configuration.settingsClass != nullptr},
                      {"settings", std::move(settings)}});
  }
  if (arguments.json) {
    printJson(report);
  } else {
    print(shown(text));
  }
  return Exit::success;
}

// --- get ------------------------------------------------------------------------------------

/// What the suite reads under a key: of a repeated one the last.
const DocumentSetting* findSetting(const DocumentConfiguration& configuration, const CString& key) {
  const auto& settings = configuration.settings;
  const auto found = std::find_if(settings.rbegin(), settings.rend(),
                                  [&](const DocumentSetting& each) { return each.key == key; });
  return found == settings.rend() ? nullptr : &*found;
}

Exit get(const Arguments& arguments) {
  const Configurations configurations = readConfigurations(arguments.file);
  const CString key = CString::fromUtf8(arguments.key);
  const DocumentSetting* found = nullptr;
  std::string owner;
  std::string owners;
  int count = 0;
  for (const DocumentConfiguration& configuration : configurations.list) {
    if (!isMeant(configuration, arguments.className)) continue;
    if (const DocumentSetting* setting = findSetting(configuration, key)) {
      found = setting;
      owner = nameOf(configuration);
      owners += (count++ ? ", " : "") + owner;
    }
  }
  if (count == 0) {
    throw Failure(Exit::no, configurations.source + ": there is no setting '" + arguments.key +
                                "'" + inClass(arguments.className));
  }
  if (count > 1) {
    throw Failure(Exit::usage, configurations.source + ": '" + arguments.key + "' stands in " +
                                   owners + "; choose one with --class");
  }
  if (arguments.json) {
    printJson(Json{{"class", owner}, {"key", arguments.key}, {"value", shown(found->value)}});
  } else {
    print(shown(found->value) + "\n");
  }
  return Exit::success;
}

// --- diff -----------------------------------------------------------------------------------

/// Collects the differences of all configurations, as lines and as JSON.
class DifferenceReport {
 public:
  DifferenceReport(std::string a, std::string b) : a_(std::move(a)), b_(std::move(b)) {}

  void add(const std::string& name, const ConfigDifference& difference) {
    for (const ChangedValue& each : difference.changed) {
      add(name, each.key, &each.valueA, &each.valueB);
    }
    for (const KeyAndValue& each : difference.onlyInA) add(name, each.key, &each.value, nullptr);
    for (const KeyAndValue& each : difference.onlyInB) add(name, each.key, nullptr, &each.value);
  }
  void addMissing(const std::string& name, const std::string& where) {
    list_.push_back({{"class", name}, {"only_in", where}});
    lines_ += name + ": only in " + where + "\n";
  }

  Exit finish(bool json) const {
    if (json) {
      printJson(Json{{"a", a_}, {"b", b_}, {"differences", list_}});
    } else {
      print(lines_);
    }
    return list_.empty() ? Exit::success : Exit::no;
  }

 private:
  void add(const std::string& name, const CString& key, const CString* a, const CString* b) {
    const auto json = [](const CString* value) {
      return value ? Json(shown(*value)) : Json(nullptr);
    };
    const auto text = [](const CString* value) {
      return value->IsEmpty() ? std::string("\"\"") : shownOnOneLine(*value);
    };
    list_.push_back({{"class", name}, {"key", shown(key)}, {"a", json(a)}, {"b", json(b)}});
    lines_ += name + ": " + shownOnOneLine(key) + ": ";
    if (a && b) {
      lines_ += text(a) + " -> " + text(b);
    } else {
      lines_ += text(a ? a : b) + " (only in " + (a ? a_ : b_) + ")";
    }
    lines_ += "\n";
  }

  std::string a_;
  std::string b_;
  std::string lines_;
  Json list_ = Json::array();
};

Exit diffFromDefaults(const Arguments& arguments) {
  const Configurations configurations = readConfigurations(arguments.file);
  DifferenceReport report("defaults", configurations.source);
  for (const DocumentConfiguration& configuration : configurations.list) {
    if (configuration.settingsClass) {
      report.add(nameOf(configuration), changedFromDefaults(configuration));
    } else {
      complain(configurations.source + ": " + nameOf(configuration) +
               " is not a known class and has no defaults to compare with");
    }
  }
  return report.finish(arguments.json);
}

/// Pairs the configurations of both sides: the first of an element with the first, and so on.
Exit diff(const Arguments& arguments) {
  if (arguments.other.empty()) return diffFromDefaults(arguments);
  const Configurations a = readConfigurations(arguments.file);
  const Configurations b = readConfigurations(arguments.other);
  DifferenceReport report(a.source, b.source);
  std::vector<const DocumentConfiguration*> unpaired;
  for (const DocumentConfiguration& each : b.list) unpaired.push_back(&each);
  for (const DocumentConfiguration& each : a.list) {
    const auto partner =
        std::ranges::find(unpaired, each.elementName, &DocumentConfiguration::elementName);
    if (partner == unpaired.end()) {
      report.addMissing(nameOf(each), a.source);
    } else {
      report.add(nameOf(each), compareConfigurations(each, **partner));
      unpaired.erase(partner);
    }
  }
  for (const DocumentConfiguration* each : unpaired) report.addMissing(nameOf(*each), b.source);
  return report.finish(arguments.json);
}

// --- validate -------------------------------------------------------------------------------

Exit validate(const Arguments& arguments) {
  Configurations configurations = readConfigurations(arguments.file);
  const std::vector<ConfigFinding> findings = validateConfigurations(configurations.document);
  PlaceCounter places(configurations.document.GetDoc());
  Json report = Json::array();
  std::string lines;
  for (const ConfigFinding& finding : findings) {
    const auto [line, column] = places.at(finding.offset);
    const std::string subject =
        shown(finding.className) + (finding.key.IsEmpty() ? "" : "." + shownOnOneLine(finding.key));
    std::string sentence = subject + " " + describe(finding.kind);
    if (!finding.value.IsEmpty()) sentence += ": \"" + shownOnOneLine(finding.value) + "\"";
    if (finding.problem != ValueProblem::none) {
      sentence += std::string(" ") + describe(finding.problem);
    }
    lines += placeOf(configurations.source, {line, column, sentence}) + "\n";
    report.push_back({{"line", line},
                      {"column", column},
                      {"class", shown(finding.className)},
                      {"key", shown(finding.key)},
                      {"value", shown(finding.value)},
                      {"message", sentence}});
  }
  if (arguments.json) {
    printJson(report);
  } else {
    print(lines);
  }
  return findings.empty() ? Exit::success : Exit::no;
}

Exit set(const Arguments& arguments) {
  return setValue(arguments.file, arguments.key, arguments.className, arguments.set,
                  arguments.json);
}

}  // namespace

void addConfigVerbs(CLI::App& app, Action& chosen) {
  CLI::App* config = app.add_subcommand("config", "Show, change and compare configurations");
  config->require_subcommand(1);
  const auto add = [&](const char* name, const char* description, Exit (*verb)(const Arguments&)) {
    auto arguments = std::make_shared<Arguments>();
    CLI::App* command = config->add_subcommand(name, description);
    command->add_flag("--json", arguments->json, "Print JSON");
    command->callback(
        [&chosen, arguments, verb] { chosen = [arguments, verb] { return verb(*arguments); }; });
    return std::pair{command, arguments};
  };
  const char* const fileOrClass = "A file, - for standard input, or the name of a class";
  const char* const whichClass = "The class, where several in the file have the key";

  {
    const auto [command, arguments] =
        add("defaults", "Print a new object of a class as XML", &defaults);
    command->add_option("CLASS", arguments->file, "Name of the class")->required();
  }
  {
    const auto [command, arguments] = add("show", "Show all settings with their values", &show);
    command->add_option("FILE|CLASS", arguments->file, fileOrClass)->required();
    command->add_flag("--changed", arguments->onlyChanged,
                      "Only those whose text differs from the default");
  }
  {
    const auto [command, arguments] = add("get", "Print the value of one setting", &get);
    command->add_option("FILE", arguments->file, fileOrClass)->required();
    command->add_option("KEY", arguments->key, "Key of the setting")->required();
    command->add_option("--class", arguments->className, whichClass);
  }
  {
    const auto [command, arguments] =
        add("set", "Change one value; every other byte of the file stays as it was", &set);
    command->add_option("FILE", arguments->file, "A file, or - to read standard input and print")
        ->required();
    command->add_option("KEY", arguments->key, "Key of the setting")->required();
    command->add_option("VALUE", arguments->set.value, "Its new value")->required();
    command->add_option("--class", arguments->className, whichClass);
    command->add_flag("--dry-run", arguments->set.dryRun, "Only tell what would be changed");
    command->add_flag("--backup", arguments->set.backup, "Keep the old file as FILE.bak");
  }
  {
    const auto [command, arguments] =
        add("diff", "Compare the values of two files, or of one with the defaults", &diff);
    command->add_option("A", arguments->file, fileOrClass)->required();
    command->add_option("B", arguments->other, "The same; without it, the defaults");
  }
  {
    const auto [command, arguments] =
        add("validate", "Name everything that is not as the suite writes it", &validate);
    command->add_option("FILE", arguments->file, fileOrClass)->required();
  }
}

}  // namespace kpx::tool
