#include <algorithm>
#include <string>
#include <vector>

#include "kpx/support/timers/TimerReport.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/Input.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::string file;
  bool json = false;
};

struct Reports {
  std::vector<std::vector<TimerLine>> list;
  Exit exit = Exit::success;  // whether every line was one of a report
};

/// Reads what is whole, and names the lines that are not.
Reports readReports(const std::string& file) {
  const Input input = readInput(file);
  Reports reports;
  const std::vector<int> strange = readTimerCsv(CString::fromUtf8(input.bytes()), reports.list);
  constexpr std::size_t mostNamed = 10;
  const auto tell = [&](int line) {
    return placeOf(input.name, {line, 1, "this is no line of a timer report"});
  };
  if (reports.list.empty()) throw Failure(Exit::input, tell(strange.front()));
  for (std::size_t i = 0; i < strange.size() && i < mostNamed; ++i) complain(tell(strange[i]));
  if (strange.size() > mostNamed) {
    complain(input.name + ": nor are " + std::to_string(strange.size() - mostNamed) + " others");
  }
  if (!strange.empty()) reports.exit = Exit::input;
  for (std::vector<TimerLine>& report : reports.list) {
    std::ranges::stable_sort(report, std::ranges::greater(), &TimerLine::milliseconds);
  }
  return reports;
}

double totalOf(const std::vector<TimerLine>& report) {
  double total = 0;
  for (const TimerLine& timer : report) total += timer.milliseconds;
  return total;
}

Exit show(const Arguments& arguments) {
  const Reports reports = readReports(arguments.file);
  Json json = Json::array();
  CString text;
  int number = 0;
  for (const std::vector<TimerLine>& report : reports.list) {
    ++number;
    if (reports.list.size() > 1) {
      text.AppendFormat(u"%sReport %d of %d\n", number > 1 ? u"\n" : u"", number,
                        static_cast<int>(reports.list.size()));
    }
    int width = 5;
    for (const TimerLine& timer : report) width = std::max(width, timer.name.GetLength());
    width = std::min(width, 60);
    text.AppendFormat(u"%-*s %14s %7s %10s %14s\n", width, u"Timer", u"Time (ms)", u"Share",
                      u"Calls", u"ms per call");
    const double total = totalOf(report);
    Json timers = Json::array();
    for (const TimerLine& timer : report) {
      const double share = total > 0 ? timer.milliseconds / total * 100 : 0.0;
      const double perCall = timer.calls > 0 ? timer.milliseconds / timer.calls : 0.0;
      text.AppendFormat(u"%-*s %14.3f %6.1f%% %10d %14.6f%s\n", width,
                        CString::fromUtf8(shownOnOneLine(timer.name)), timer.milliseconds, share,
                        timer.calls, perCall, timer.running ? u"  running" : u"");
      timers.push_back({{"name", asUtf8(timer.name)},
                        {"milliseconds", timer.milliseconds},
                        {"calls", timer.calls},
                        {"running", timer.running}});
    }
    json.push_back({{"timers", std::move(timers)}});
  }
  if (arguments.json) {
    Json answer = answerAbout(arguments.file);
    answer["reports"] = std::move(json);
    printJson(answer);
  } else {
    print(asUtf8(text));
  }
  return reports.exit;
}

/// One row for each timer, longest first, with a bar as long as its runs together: the report does
/// not tell when they were. Each report of the file is a process of its own.
Exit trace(const Arguments& arguments) {
  const Reports reports = readReports(arguments.file);
  Json events = Json::array();
  int process = 0;
  for (const std::vector<TimerLine>& report : reports.list) {
    ++process;
    events.push_back({{"name", "process_name"},
                      {"ph", "M"},
                      {"pid", process},
                      {"args", {{"name", "Report " + std::to_string(process)}}}});
    int row = 0;
    for (const TimerLine& timer : report) {
      ++row;
      const std::string name = asUtf8(timer.name);
      events.push_back({{"name", "thread_name"},
                        {"ph", "M"},
                        {"pid", process},
                        {"tid", row},
                        {"args", {{"name", name}}}});
      events.push_back({{"name", "thread_sort_index"},
                        {"ph", "M"},
                        {"pid", process},
                        {"tid", row},
                        {"args", {{"sort_index", row}}}});
      constexpr double microsecondsPerMillisecond = 1000.0;
      events.push_back({{"name", name},
                        {"ph", "X"},
                        {"pid", process},
                        {"tid", row},
                        {"ts", 0},
                        {"dur", timer.milliseconds * microsecondsPerMillisecond},
                        {"args", {{"calls", timer.calls}, {"running", timer.running}}}});
    }
  }
  printJson({{"traceEvents", std::move(events)}, {"displayTimeUnit", "ms"}});
  return reports.exit;
}

}  // namespace

void addTimersVerbs(VerbGroup& program) {
  VerbGroup timers = program.group("timers", "Show timer reports in CSV");
  const char* const report = "Timer report, or - for standard input";
  timers.verb("show", "Print a table, longest first", &show)
      .needs("CSV", &Arguments::file, report)
      .takes("--json", &Arguments::json, "Print JSON");
  timers.verb("trace", "Print trace events in JSON for the trace viewer of a browser", &trace)
      .needs("CSV", &Arguments::file, report);
}

}  // namespace kpx::tool
