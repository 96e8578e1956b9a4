#include <algorithm>
#include <string>
#include <vector>

#include "kpx/context/TextStart.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/support/texts/TextCheck.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/support/texts/TextTable.h"
#include "kpx/text/TextTools.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/Input.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/TextLists.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::int32_t id = 0;
  std::vector<std::string> files;
  std::string file;
  std::string other;  // the second list of a comparison
  std::string output;
  std::string german;  // empty: the built-in texts
  std::string language;
  std::string title;
  TextRoom room;
  bool json = false;
  bool all = false;
};

void addRoom(OptionList& verb, TextRoom& room) {
  verb.takes("--room", &room.percent, "Longest line in percent of the German text's",
             WholeNumbers{.least = 1, .most = 10'000});
}

std::string lineOf(std::int32_t id, const CString& text) {
  return std::to_string(id) + "\t" + asUtf8(escapedText(text)) + "\n";
}

// --- get ------------------------------------------------------------------------------------

/// "ENG" and "ENG.LNG" mean what "English [ENG.LNG]" means; "DEU" means German.
CString languageValue(const std::string& argument) {
  CString language = fromArgument(argument);
  if (language.Find(u'[') >= 0) return language;
  if (language.CompareNoCase(u"DEU") == 0) return {};
  if (language.Find(u'.') < 0) language = language.MakeUpper() + CString(u".LNG");
  return CString(u"[") + language + u']';
}

/// The texts as a program of the suite has them. A language that was asked for has to be there.
void useLanguage(const CString& language, bool askedFor) {
  const CString name = languageFileName(language);
  const CString file = languageFilePath(name);
  if (askedFor && !language.IsEmpty()) {
    if (name.IsEmpty()) {
      throw Failure(Exit::input, asUtf8(language) + ": names no file that a language can have");
    }
    if (!fileSystem().exists(file)) {
      throw Failure(Exit::input, asUtf8(file) + ": there is no such language file");
    }
  }
  if (initTexts(language) == 0) {
    throw Failure(Exit::input, asUtf8(file) + ": it or the English one cannot be read to its end");
  }
}

Exit get(const Arguments& arguments) {
  if (!arguments.files.empty()) {
    for (const std::string& file : arguments.files) {
      for (const TextEntry& entry : requireTexts(file).entries) {
        CString text = entry.text;
        text.Replace(u"\r\n", u"\n");
        if (!text.IsEmpty()) AddMLT(entry.id, text);
      }
    }
  } else {
    const bool askedFor = !arguments.language.empty();
    useLanguage(askedFor ? languageValue(arguments.language) : chosenLanguage(), askedFor);
  }
  const CString text = GetMLT(arguments.id);
  if (arguments.json) {
    Json answer = newAnswer();
    answer.update({{"id", arguments.id}, {"text", asUtf8(text)}});
    printJson(answer);
  } else if (!text.IsEmpty()) {
    print(asUtf8(text) + "\n");
  }
  if (!text.IsEmpty()) return Exit::success;
  if (!arguments.json) complain("there is no text " + std::to_string(arguments.id));
  return Exit::no;
}

// --- build, dump ----------------------------------------------------------------------------

Exit build(const Arguments& arguments) {
  TextList list = requireTexts(arguments.file);
  if (!arguments.title.empty()) list.title = fromArgument(arguments.title);
  if (list.entries.empty()) {
    throw Failure(Exit::input, arguments.file + ": holds no texts, so there is nothing to build");
  }
  const std::string bytes = languageFileBytes(list);
  if (arguments.output == "-") {
    print(bytes);
  } else if (fromArgument(arguments.output).Right(4).CompareNoCase(u".LNG") != 0) {
    throw Failure(Exit::usage, arguments.output + ": a language file has a name that ends in .LNG");
  } else {
    replaceOrFail(arguments.output, bytes);
  }
  return Exit::success;
}

Exit dump(const Arguments& arguments) {
  const ReadTexts read = readTexts(arguments.file);
  if (arguments.json) {
    Json answer = newAnswer();
    answer["file"] = read.name;
    answer.update(jsonOf(read.list));
    printJson(answer);
  } else {
    print(textTableBytes(read.list));
  }
  for (const ProblemLine& problem : read.problems) complain(lineOf(read, problem));
  if (read.problemCount > read.problems.size()) {
    complain(read.name + ": " + std::to_string(read.problemCount - read.problems.size()) +
             " more lines of this kind");
  }
  return read.problems.empty() ? Exit::success : Exit::input;
}

// --- check ----------------------------------------------------------------------------------

Exit checkFile(const std::string& file, const TextList* german, const Arguments& arguments,
               Json& answer) {
  answer["findings"] = Json::array();
  const std::size_t limit = arguments.all ? noProblemLimit : usualProblemLimit;
  const ReadTexts read = readTexts(file, limit);
  answer["file"] = read.name;
  Json findings = Json::array();
  for (const ProblemLine& problem : read.problems) {
    if (!arguments.json) printLine(lineOf(read, problem));
    findings.push_back(jsonOf(problem));
  }
  const Problems<TextFinding> found =
      german ? checkTexts(read.list, *german, arguments.room, limit) : checkTexts(read.list, limit);
  for (const TextFinding& finding : found) {
    const std::string message = asUtf8(describe(finding.kind));
    if (!arguments.json) {
      printLine(read.name + ": entry " + std::to_string(finding.index + 1) + ", text " +
                std::to_string(finding.id) + ": " + message);
    }
    findings.push_back({{"kind", wordOf(kindName(finding.kind))},
                        {"entry", finding.index + 1},
                        {"id", finding.id},
                        {"message", message},
                        {"text", asUtf8(read.list.entries[finding.index].text)}});
  }
  answer["findings"] = std::move(findings);
  const std::size_t leftOut = found.leftOut() + read.problemCount - read.problems.size();
  if (leftOut > 0) {
    answer["left_out"] = leftOut;
    if (!arguments.json) printLine(leftOutLine(read.name, leftOut));
  }
  if (!read.problems.empty()) return Exit::input;
  if (!found.empty()) return Exit::no;
  if (!arguments.json) printLine(read.name + ": nothing to object to");
  return Exit::success;
}

Exit check(const Arguments& arguments) {
  const bool isGermanAlone = arguments.files.empty();
  const std::vector<std::string> files =
      isGermanAlone ? std::vector{arguments.german} : arguments.files;
  const TextList german = isGermanAlone ? TextList() : requireTexts(arguments.german);
  Json answer;
  const Exit exit = answerForEach(files, answer, [&](const std::string& file, Json& each) {
    return checkFile(file, isGermanAlone ? nullptr : &german, arguments, each);
  });
  if (arguments.json) printJson(answer);
  return exit;
}

// --- coverage, diff -------------------------------------------------------------------------

Exit coverage(const Arguments& arguments) {
  const TextList german = requireTexts(arguments.german);
  Json answer;
  const auto cover = [&](const std::string& file, Json& each) {
    const TextCoverage found = coverageOf(requireTexts(file), german);
    CString line;
    line.Format(u"%.1f %%, %zu of %zu texts, %zu of them as in German, %zu missing, %zu unknown",
                found.percent(), found.translated, found.germanIds, found.sameAsGerman,
                found.missing.size(), found.unknown.size());
    each["file"] = nameOfList(file);
    if (!arguments.json) printLine(nameOfList(file) + ": " + asUtf8(line));
    each.update({{"percent", found.percent()},
                 {"german", found.germanIds},
                 {"translated", found.translated},
                 {"sameAsGerman", found.sameAsGerman},
                 {"missing", found.missing},
                 {"unknown", found.unknown}});
    return Exit::success;
  };
  const Exit exit = answerForEach(arguments.files, answer, cover);
  if (arguments.json) printJson(answer);
  return exit;
}

Exit diff(const Arguments& arguments) {
  const std::vector<TextDifference> differences =
      differencesOf(requireTexts(arguments.file), requireTexts(arguments.other));
  Json report = Json::array();
  for (const TextDifference& difference : differences) {
    Json entry{{"id", difference.id}, {"before", nullptr}, {"after", nullptr}};
    if (!difference.before.IsEmpty()) entry["before"] = asUtf8(difference.before);
    if (!difference.after.IsEmpty()) entry["after"] = asUtf8(difference.after);
    report.push_back(std::move(entry));
    if (arguments.json) continue;
    if (!difference.before.IsEmpty()) print("- " + lineOf(difference.id, difference.before));
    if (!difference.after.IsEmpty()) print("+ " + lineOf(difference.id, difference.after));
  }
  if (arguments.json) {
    Json answer = newAnswer();
    answer.update({{"a", nameOfList(arguments.file)},
                   {"b", nameOfList(arguments.other)},
                   {"differences", std::move(report)}});
    printJson(answer);
  }
  return differences.empty() ? Exit::success : Exit::no;
}

}  // namespace

void addTextsVerbs(VerbGroup& program) {
  VerbGroup texts = program.group("texts", "Show, build and check the texts and languages");
  const std::string aboutLists =
      "A list of texts is a language file (.LNG), a tab-separated list (id, tab, text; \\n is a\n"
      "line break, \\t a tab, \\\\ a backslash, \\uXXXX a UTF-16 unit), or JSON as dump --json\n"
      "prints it; \"\" is the built-in German list.";
  texts.footer(aboutLists);
  const char* const german = "List of German texts in place of the built-in ones";

  texts.verb("get", "Print a text as the suite shows it to this user", &get)
      .needs("ID", &Arguments::id, "Number of the text", WholeNumbers())
      .takes("FILE", &Arguments::files,
             "Lists to lay over the built-in texts, in place of a language")
      .takes("--language", &Arguments::language,
             "Language in place of the user's: ENG, ENG.LNG, \"English [ENG.LNG]\"; DEU is German")
      .excludes("--language", {"FILE"})
      .takes("--json", &Arguments::json, "Print JSON");
  texts.verb("build", "Make a language file of a list", &build)
      .needs("LIST", &Arguments::file, "List, or - for standard input")
      .needs("LNG", &Arguments::output, "Language file, or - for standard output")
      .takes("--title", &Arguments::title, "Title in place of the list's");
  texts.verb("dump", "Print a list tab-separated, without loss", &dump)
      .takes("FILE", &Arguments::file,
             "List, or - for standard input; without it, the built-in texts")
      .takes("--json", &Arguments::json, "Print JSON");
  texts.verb("check", "Compare the texts that lists hold with the German ones", &check)
      .takes("FILE", &Arguments::files,
             "Lists, or - for standard input; without any, the German texts alone")
      .takes("--german", &Arguments::german, german)
      .with(&Arguments::room, &addRoom)
      .takes("--json", &Arguments::json, "Print JSON")
      .takes("--all", &Arguments::all, "Print more than the first 1000")
      .footer(aboutLists +
              "\n\nTexts that a list lacks are not named, since the suite shows English or German "
              "ones in\ntheir place; kpx texts coverage counts them.");
  texts.verb("coverage", "Print how many of the German texts lists hold", &coverage)
      .needs("FILE", &Arguments::files, "Lists, or - for standard input")
      .takes("--german", &Arguments::german, german)
      .takes("--json", &Arguments::json, "Print JSON");
  texts.verb("diff", "Print what two lists say differently; exit code 1 if they do", &diff)
      .needs("A", &Arguments::file, "List")
      .needs("B", &Arguments::other, "List")
      .takes("--json", &Arguments::json, "Print JSON");
}

}  // namespace kpx::tool
