#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "kpx/settings/document/ConfigCheck.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/ConfigAbsent.h"
#include "tools/kpx/ConfigConvert.h"
#include "tools/kpx/ConfigDiff.h"
#include "tools/kpx/ConfigSet.h"
#include "tools/kpx/Configurations.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::string file;                // or class
  std::vector<std::string> files;  // of verbs that take several
  std::string key;
  Selection selection;
  DiffOptions diff;
  bool onlyChanged = false;
  bool json = false;
  bool all = false;  // findings
  SetOptions set;
  ConvertOptions convert;
};

// --- defaults -------------------------------------------------------------------------------

Exit defaults(const Arguments& arguments) {
  const SettingsClass* const known = findClassOf(arguments.file);
  if (!known) {
    throw Failure(Exit::usage, "there is no class '" + arguments.file + "'" +
                                   nearClass(arguments.file) + "; kpx classes list shows them");
  }
  const ConfigDocument document = documentOfDefaults(*known);
  const CString& text = document.text();
  if (arguments.json) {
    Json answer = newAnswer();
    answer.update({{"class", asUtf8(known->name)}, {"xml", asUtf8(text)}});
    printJson(answer);
  } else {
    print(text.utf8());
  }
  return Exit::success;
}

// --- show -----------------------------------------------------------------------------------

/// The default of each key of a configuration's class; empty for an unknown class.
std::map<CString, CString> defaultsOf(const ViewedConfiguration& configuration) {
  std::map<CString, CString> values;
  if (configuration.settingsClass) {
    if (const std::unique_ptr<CFGConfig> object = configuration.settingsClass->create()) {
      for (const auto& entry : object->Class.Cols) values[entry.key] = entry.value.Value.Value;
    }
  }
  return values;
}

/// Adds one configuration of a file, as lines and as JSON.
void showConfiguration(const ConfigView& view, const ViewedConfiguration& configuration,
                       const Arguments& arguments, CString heading, CString& text, Json& settings) {
  const std::map<CString, CString> defaultValues = defaultsOf(configuration);
  if (!arguments.onlyChanged) text += std::exchange(heading, {});
  for (const ConfigColumn& column : configuration.columns) {
    const CString key = view.keyOf(column);
    const CString value = view.valueOf(column);
    const auto found = defaultValues.find(key);
    const bool changed = found == defaultValues.end() || found->second != value;
    if (arguments.onlyChanged && !changed) continue;
    Json entry{{"key", asUtf8(key)}, {"value", asUtf8(value)}};
    entry["default"] = found == defaultValues.end() ? Json(nullptr) : Json(asUtf8(found->second));
    settings.push_back(std::move(entry));
    text += std::exchange(heading, {});  // only above something
    text.AppendFormat(u"%-28s %s", CString::fromUtf8(shownOnOneLine(key)),
                      CString::fromUtf8(shownOnOneLine(value)));
    if (found == defaultValues.end()) {
      text += configuration.settingsClass ? u"   (unknown key)" : u"";
    } else if (changed) {
      const std::string usual = shownOnOneLine(found->second);
      text.AppendFormat(u"   (default %S)", usual.empty() ? "\"\"" : usual.c_str());
    }
    text += u'\n';
  }
}

void showFile(const std::string& file, const Arguments& arguments, CString& text, Json& answer) {
  const Configurations configurations = readConfigurations(file, arguments.selection);
  const bool isOneOfSeveral = arguments.files.size() > 1;
  PlaceCounter places(configurations.document.text());
  const ConfigView& view = configurations.view();
  Json list = Json::array();
  for (const ViewedConfiguration* const each : configurations.list) {
    const ViewedConfiguration& configuration = *each;
    const int line = places.at(configuration.element.begin).first;
    CString heading(text.IsEmpty() ? u"" : u"\n");
    heading.AppendFormat(u"[%S]", onOneLine(nameOf(configuration)));
    if (isOneOfSeveral) heading.AppendFormat(u"   (%S)", onOneLine(configurations.source));
    if (configurations.count > 1) {
      heading.AppendFormat(u"   (--index %d, line %d)", configuration.number, line);
    }
    Json settings = Json::array();
    showConfiguration(view, configuration, arguments, heading + u'\n', text, settings);
    list.push_back({{"class", nameOf(configuration)},
                    {"index", configuration.number},
                    {"line", line},
                    {"name", asUtf8(view.nameOf(configuration))},
                    {"element", asUtf8(configuration.elementName)},
                    {"known", configuration.settingsClass != nullptr},
                    {"settings", std::move(settings)}});
  }
  answer["configurations"] = std::move(list);
}

Exit show(const Arguments& arguments) {
  Json answer;
  CString text;
  const Exit exit =
      answerForEach(arguments.files, answer, [&](const std::string& file, Json& each) {
        showFile(file, arguments, text, each);
        return Exit::success;
      });
  if (arguments.json) {
    printJson(answer);
  } else {
    print(asUtf8(text));
  }
  return exit;
}

// --- get ------------------------------------------------------------------------------------

/// The columns that a configuration has under a key; programs read the last.
std::vector<const ConfigColumn*> columnsOf(const ConfigView& view,
                                           const ViewedConfiguration& configuration,
                                           const CString& key) {
  std::vector<const ConfigColumn*> columns;
  for (const ConfigColumn& column : configuration.columns) {
    if (view.keyOf(column) == key) columns.push_back(&column);
  }
  return columns;
}

/// Whether programs take what stands under a key of a class into their objects.
bool isRead(const SettingsClass& settingsClass, const CString& key) {
  const std::unique_ptr<CFGConfig> object = settingsClass.create();
  return object && object->Class.find(key.view());
}

Exit get(const Arguments& arguments) {
  const Configurations configurations = readConfigurations(arguments.file, arguments.selection);
  const ConfigView& view = configurations.view();
  const CString key = CString::fromUtf8(arguments.key);
  const std::string subject = configurations.source + ": '" + arguments.key + "' ";
  std::vector<const ConfigColumn*> found;
  const ViewedConfiguration* owner = nullptr;
  CandidateList candidates(configurations.document);
  for (const ViewedConfiguration* const each : configurations.list) {
    std::vector<const ConfigColumn*> columns = columnsOf(view, *each, key);
    if (columns.empty()) continue;
    candidates.add(*each, columns.back()->column.begin);
    found = std::move(columns);
    owner = each;
  }
  if (found.empty()) {
    throw Failure(Exit::no, subject + whyAbsent(configurations, key) +
                                (arguments.selection.none() ? "" : " (in what is selected)"));
  }
  if (candidates.count() > 1) {
    throw Failure(Exit::usage, subject + "stands in " + candidates.sentence());
  }
  if (found.size() > 1) {
    complain(subject + "stands in " + labelOf(*owner) +
             " more than once; this is the last, which programs read");
  }
  const SettingsClass* const known = owner->settingsClass;
  if (known && known->findKey(key) && !isRead(*known, key)) {
    complain(subject + "stands in the file, but programs pass over it in reading");
  }
  const CString value = view.valueOf(*found.back());
  if (arguments.json) {
    Json answer = answerAbout(arguments.file);
    answer.update({{"class", nameOf(*owner)},
                   {"index", owner->number},
                   {"key", arguments.key},
                   {"value", asUtf8(value)}});
    printJson(answer);
  } else {
    print(asUtf8(value) + "\n");
  }
  return Exit::success;
}

// --- diff -----------------------------------------------------------------------------------

Exit diff(const Arguments& arguments) {
  return diffConfigurations(arguments.file, arguments.selection, arguments.diff, arguments.json);
}

// --- validate -------------------------------------------------------------------------------

Exit validateFile(const std::string& file, const Arguments& arguments, Json& answer) {
  const Configurations configurations = readConfigurations(file, arguments.selection);
  PlaceCounter places(configurations.document.text());
  Json list = Json::array();
  Exit exit = Exit::success;
  auto owner = configurations.list.begin();
  const Problems<ConfigFinding> findings = validateConfigurations(
      configurations.view(),
      {choiceOf(arguments.selection), arguments.all ? noProblemLimit : usualProblemLimit, nullptr});
  for (const ConfigFinding& finding : findings) {
    // Findings come in the order of the document, as the configurations do.
    while (owner != configurations.list.end() && finding.offset >= (*owner)->element.end) {
      ++owner;
    }
    if (owner == configurations.list.end()) break;
    if (finding.offset < (*owner)->element.begin) continue;
    exit = Exit::no;
    const auto [line, column] = places.at(finding.offset);
    const std::string subject = labelOf(configurations, **owner) +
                                (finding.key.IsEmpty() ? "" : "." + shownName(finding.key));
    const std::string sentence = subject + " " + asUtf8(describe(finding));
    const ProblemLine problem{line, column, sentence, false, wordOf(kindName(finding.kind))};
    if (!arguments.json) printLine(placeOf(configurations.source, problem));
    Json entry = jsonOf(problem);
    entry.update({{"class", asUtf8(finding.className)},
                  {"index", (*owner)->number},
                  {"key", asUtf8(finding.key)},
                  {"value", asUtf8(finding.value)}});
    list.push_back(std::move(entry));
  }
  answer["findings"] = std::move(list);
  if (const std::size_t leftOut = findings.leftOut(); leftOut > 0) {
    answer["left_out"] = leftOut;
    if (!arguments.json) printLine(leftOutLine(configurations.source, leftOut));
  }
  return exit;
}

Exit validate(const Arguments& arguments) {
  Json answer;
  const Exit exit = answerForEach(
      arguments.files, answer,
      [&](const std::string& file, Json& each) { return validateFile(file, arguments, each); });
  if (arguments.json) printJson(answer);
  return exit;
}

Exit set(const Arguments& arguments) {
  return setValue(arguments.file, arguments.key, arguments.selection, arguments.set,
                  arguments.json);
}

Exit convertFile(const Arguments& arguments) {
  return convert(arguments.file, arguments.selection, arguments.convert);
}

}  // namespace

void addConfigVerbs(VerbGroup& program) {
  VerbGroup config = program.group("config", "Show, change and compare configurations");
  const auto add = [&](const char* name, const char* description, Exit (*verb)(const Arguments&)) {
    return config.verb(name, description, verb).takes("--json", &Arguments::json, "Print JSON");
  };
  const char* const filesOrClasses = "Files, - for standard input, or names of classes";
  const char* const fileOrClass = "A file, - for standard input, or the name of a class";

  add("defaults", "Print a new object of a class as XML", &defaults)
      .needs("CLASS", &Arguments::file, "Name of the class");
  add("show", "Show all settings with their values", &show)
      .needs("FILE|CLASS", &Arguments::files, filesOrClasses)
      .with(&Arguments::selection, &addSelection)
      .takes("--changed", &Arguments::onlyChanged,
             "Only those whose text differs from the default");
  add("get", "Print the value of one setting", &get)
      .needs("FILE|CLASS", &Arguments::file, fileOrClass)
      .needs("KEY", &Arguments::key, "Key of the setting")
      .with(&Arguments::selection, &addSelection);
  add("set", "Change one value; every other byte of the file stays as it was", &set)
      .needs("FILE", &Arguments::file, "A file, or - to read standard input and print")
      .needs("KEY", &Arguments::key, "Key of the setting")
      .with(&Arguments::selection, &addSelection)
      .with(&Arguments::set, &addSetOptions);
  add("diff", "Compare the values of two files, or of one with the defaults", &diff)
      .needs("A", &Arguments::file, fileOrClass)
      .with(&Arguments::selection, &addSelection)
      .with(&Arguments::diff, &addDiffOptions);
  add("validate", "Name everything that is not as the suite writes it", &validate)
      .needs("FILE|CLASS", &Arguments::files, filesOrClasses)
      .with(&Arguments::selection, &addSelection)
      .takes("--all", &Arguments::all, "Print more than the first 1000");
  config.verb("convert", "Convert to JSON, CSV or INI, and JSON back to XML", &convertFile)
      .needs("FILE|CLASS", &Arguments::file, fileOrClass)
      .with(&Arguments::convert, &addConvertOptions)
      .with(&Arguments::selection, &addSelection);
}

}  // namespace kpx::tool
