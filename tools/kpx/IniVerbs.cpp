#include <algorithm>
#include <string>
#include <vector>

#include "kpx/support/ini/CIniEx.h"
#include "kpx/support/ini/IniCheck.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/FileChange.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::string file;
  std::vector<std::string> files;  // of verbs that take several
  std::string section;
  std::string key;
  std::string value;
  ChangeWait wait;
  bool json = false;
  bool all = false;
};

CIniEx parse(const Input& input) {
  CIniEx ini;
  if (ini.readBytes(input.bytes()) == 0) {
    throw Failure(Exit::input, input.name + ": is larger than an INI file can be");
  }
  return ini;
}

[[noreturn]] void failMissing(const CIniEx& ini, const Input& input, const Arguments& arguments) {
  CSection* section = nullptr;
  if (ini.GetSection(fromArgument(arguments.section), section) == 0) {
    throw Failure(Exit::no, input.name + ": there is no section '" + arguments.section + "'");
  }
  throw Failure(Exit::no, input.name + ": there is no key '" + arguments.key + "' in section '" +
                              arguments.section + "'");
}

// --- get, set, del --------------------------------------------------------------------------

Exit get(const Arguments& arguments) {
  const Input input = readInput(arguments.file);
  const CIniEx ini = parse(input);
  CString value;
  if (ini.GetKeyData(fromArgument(arguments.section), fromArgument(arguments.key), value) == 0) {
    failMissing(ini, input, arguments);
  }
  if (arguments.json) {
    Json answer = answerAbout(arguments.file);
    answer.update(
        {{"section", arguments.section}, {"key", arguments.key}, {"value", asUtf8(value)}});
    printJson(answer);
  } else {
    print(asUtf8(value) + "\n");
  }
  return Exit::success;
}

Exit set(const Arguments& arguments) {
  const CString section = fromArgument(arguments.section);
  const CString key = fromArgument(arguments.key);
  const CString value = fromArgument(arguments.value);
  FileChange change(arguments.file, arguments.wait, FileChange::Missing::isEmpty);
  CIniEx ini = parse(change.input());
  ini.AddNewSection(section);
  const bool changed = ini.GetKeyData(section, key) != 0 ? ini.UpdateKey(section, key, value) != 0
                                                         : ini.AddNewKey(section, key, value) != 0;
  if (!changed) {
    throw Failure(Exit::usage, change.input().name + ": '" + arguments.key + "' in section '" +
                                   arguments.section +
                                   "' cannot be written so that it is read back as the same");
  }
  CString read;
  ini.GetKeyData(section, key, read);
  change.write(ini.fileBytes());
  // A mistyped name of a file is not to go unnoticed.
  if (change.isNew()) complain(change.input().name + ": is a new file");
  if (value.Find(u"\\n") > 0 && read != value) {
    complain(R"(the characters \n in a value are read as a line break)");
  }
  return Exit::success;
}

Exit remove(const Arguments& arguments) {
  FileChange change(arguments.file, arguments.wait);
  CIniEx ini = parse(change.input());
  if (ini.DeleteKey(fromArgument(arguments.section), fromArgument(arguments.key)) == 0) {
    failMissing(ini, change.input(), arguments);
  }
  change.write(ini.fileBytes());
  return Exit::success;
}

// --- list -----------------------------------------------------------------------------------

Exit list(const Arguments& arguments) {
  const Input input = readInput(arguments.file);
  const CIniEx ini = parse(input);
  CObArray sections;
  ini.GetSectionAll(sections);
  Json report = Json::array();
  std::string text;
  for (const CSection* const section : sections) {
    if (section != sections.front() || !section->name().IsEmpty()) {
      text += (text.empty() ? "[" : "\n[") + shownOnOneLine(section->name()) + "]\n";
    }
    Json keys = Json::array();
    for (const KEY_STRUCT& key : section->keys()) {
      keys.push_back({{"key", asUtf8(key.key())}, {"value", asUtf8(key.value())}});
      text += shownOnOneLine(key.key()) + "=" + shownOnOneLine(key.value()) + "\n";
    }
    report.push_back({{"section", asUtf8(section->name())}, {"keys", std::move(keys)}});
  }
  if (arguments.json) {
    Json answer = answerAbout(arguments.file);
    answer["sections"] = std::move(report);
    printJson(answer);
  } else {
    print(text);
  }
  return Exit::success;
}

// --- check ----------------------------------------------------------------------------------

Exit checkFile(const std::string& file, const Arguments& arguments, Json& answer) {
  answer["problems"] = Json::array();
  const Input input = readInput(file);
  const Problems<IniProblem> found =
      checkIni(input.bytes(), arguments.all ? noProblemLimit : usualProblemLimit);
  if (!found.empty() && found.first.front().kind == IniProblemKind::tooLarge) {
    throw Failure(Exit::input, input.name + ": " + asUtf8(describe(found.first.front())));
  }
  answer["encoding"] = asUtf8(iniEncodingName(input.bytes()));
  Json list = Json::array();
  for (const IniProblem& problem : found) {
    const ProblemLine line{problem.line, problem.column, shownOnOneLine(describe(problem)), false,
                           wordOf(kindName(problem.kind))};
    if (arguments.json) {
      list.push_back(jsonOf(line));
    } else {
      printLine(placeOf(input.name, line));
    }
  }
  answer["problems"] = std::move(list);
  if (found.leftOut() > 0) {
    answer["left_out"] = found.leftOut();
    if (!arguments.json) printLine(leftOutLine(input.name, found.leftOut()));
  }
  if (!arguments.json && found.empty()) printLine(input.name + ": nothing to object to");
  return found.empty() ? Exit::success : Exit::no;
}

Exit check(const Arguments& arguments) {
  Json answer;
  const Exit exit = answerForEach(
      arguments.files, answer,
      [&](const std::string& file, Json& each) { return checkFile(file, arguments, each); });
  if (arguments.json) printJson(answer);
  return exit;
}

}  // namespace

void addIniVerbs(VerbGroup& program) {
  VerbGroup ini = program.group("ini", "Read, change and check INI files");
  const char* const file = "INI file, or - for standard input";
  const char* const files = "INI files, or - for standard input";
  const char* const section = "Section; \"\" for the keys above the first section";

  ini.verb("get", "Print the value of a key", &get)
      .needs("FILE", &Arguments::file, file)
      .needs("SECTION", &Arguments::section, section)
      .needs("KEY", &Arguments::key, "Key")
      .takes("--json", &Arguments::json, "Print JSON");
  ini.verb("set", "Set the value of a key, which is added where it is missing", &set)
      .needs("FILE", &Arguments::file, file)
      .needs("SECTION", &Arguments::section, section)
      .needs("KEY", &Arguments::key, "Key")
      .needs("VALUE", &Arguments::value, "The new value; -- in front of one that begins with -")
      .with(&Arguments::wait, &addWaitOption);
  ini.verb("del", "Remove a key and the comment above it", &remove)
      .needs("FILE", &Arguments::file, file)
      .needs("SECTION", &Arguments::section, section)
      .needs("KEY", &Arguments::key, "Key")
      .with(&Arguments::wait, &addWaitOption);
  ini.verb("list", "Print all sections, keys and values", &list)
      .needs("FILE", &Arguments::file, file)
      .takes("--json", &Arguments::json, "Print JSON");
  ini.verb("check", "Print what readers trip over, with line and column", &check)
      .needs("FILE", &Arguments::files, files)
      .takes("--json", &Arguments::json, "Print JSON")
      .takes("--all", &Arguments::all, "Print more than the first 1000");
}

}  // namespace kpx::tool
