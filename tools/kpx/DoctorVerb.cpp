#include <algorithm>
#include <string>
#include <vector>

#include "kpx/context/Diagnosis.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  bool json = false;
};

/// What this program was built from and with; the rest comes from the library.
std::vector<DiagnosisLine> wholeReport() {
  std::vector<DiagnosisLine> lines{
      {u"program", u"version", CString::fromUtf8(KPX_VERSION), u"built in", {}},
      {u"program", u"compiler", CString::fromUtf8(KPX_COMPILER), u"built in", {}}};
  for (DiagnosisLine& line : diagnose()) lines.push_back(std::move(line));
  return lines;
}

Exit doctor(const Arguments& arguments) {
  const std::vector<DiagnosisLine> lines = wholeReport();
  const auto problems = std::count_if(lines.begin(), lines.end(), [](const DiagnosisLine& line) {
    return !line.problem.IsEmpty();
  });
  if (arguments.json) {
    Json report = Json::array();
    for (const DiagnosisLine& line : lines) {
      report.push_back({{"topic", asUtf8(line.topic)},
                        {"name", asUtf8(line.name)},
                        {"value", asUtf8(line.value)},
                        {"source", asUtf8(line.source)},
                        {"problem", asUtf8(line.problem)}});
    }
    Json answer = newAnswer();
    answer["facts"] = std::move(report);
    printJson(answer);
  } else {
    std::string text;
    CString topic;
    for (const DiagnosisLine& line : lines) {
      if (line.topic != topic) {
        topic = line.topic;
        text += (text.empty() ? "" : "\n") + asUtf8(topic) + "\n";
      }
      text += "  " + asUtf8(line.name) + ": ";
      text += line.value.IsEmpty() ? "none" : shownPath(line.value);
      text += "  [" + shownPath(line.source) + "]";
      if (!line.problem.IsEmpty()) text += "\n    ! " + shownPath(line.problem);
      text += "\n";
    }
    text += "\n" +
            (problems == 0   ? std::string("No problems found")
             : problems == 1 ? "1 problem found"
                             : std::to_string(problems) + " problems found") +
            "\n";
    print(text);
  }
  return problems == 0 ? Exit::success : Exit::no;
}

}  // namespace

void addDoctorVerb(VerbGroup& program) {
  program
      .verb("doctor", "Folders, switches, language and logs in one report for a support request",
            &doctor)
      .takes("--json", &Arguments::json, "Print JSON");
}

}  // namespace kpx::tool
