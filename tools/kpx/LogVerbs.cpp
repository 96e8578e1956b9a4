#include <algorithm>
#include <charconv>
#include <chrono>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "kpx/context/ErrorLog.h"
#include "kpx/context/TextStart.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/support/files/CKpxBaseObjectsUtil.h"
#include "kpx/text/CKpxCalendar.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/ErrorNames.h"
#include "tools/kpx/Input.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

/// A reader at the beginning of a log, which understands every language that lies beside the
/// program.
ErrorLogReader newReader() {
  static const ErrorLogReader polyglot = [] {
    ErrorLogReader reader;
    reader.addLanguages(textFolder());
    return reader;
  }();
  return polyglot;
}

struct Options {
  std::vector<std::string> files;
  std::vector<std::int32_t> numbers;
  std::string user;
  std::string project;
  std::string from;
  std::string to;
  std::int32_t seconds = 0;
  bool json = false;
};

// --- filters --------------------------------------------------------------------------------

/// "DD.MM.YYYY" or "YYYY-MM-DD", with "-hh:mm:ss" or not. A day alone begins or ends with it.
double timeArgument(const std::string& argument, bool isEnd) {
  if (argument.empty()) return 0.0;
  std::string date = argument.substr(0, 10);
  const std::string rest = argument.size() > 10 ? argument.substr(10) : std::string();
  TIME time = CKpxBaseObjectsUtil::Str2Date(fromArgument(date));
  bool isGood = rest.empty();
  if (isGood) {
    time.time = isEnd ? 235959 : 0;
  } else if (rest.size() == 9 && (rest[0] == '-' || rest[0] == 'T' || rest[0] == ' ')) {
    const CString clock = fromArgument(rest.substr(1));
    time.time = CKpxBaseObjectsUtil::Str2Time(clock).time;
    isGood = CKpxBaseObjectsUtil::Time2Str(time) == clock;
  }
  if (!isGood || !CKpxCalendar::isValid(unpackTime(time))) {
    throw Failure(Exit::usage, "'" + argument +
                                   "' is no time; write DD.MM.YYYY or YYYY-MM-DD, with -hh:mm:ss "
                                   "behind it for a time of day");
  }
  return CKpxBaseObjectsUtil::Time2Double(time);
}

ErrorLogFilter filterOf(const Options& options) {
  ErrorLogFilter filter;
  filter.numbers = options.numbers;
  filter.user = fromArgument(options.user);
  filter.project = fromArgument(options.project);
  filter.from = timeArgument(options.from, false);
  filter.to = timeArgument(options.to, true);
  return filter;
}

// --- output ---------------------------------------------------------------------------------

std::string timeText(const TIME& time) {
  return asUtf8(CKpxBaseObjectsUtil::TimeDouble2Str(CKpxBaseObjectsUtil::Time2Double(time)));
}

Json jsonOf(const ErrorLogEntry& entry) {
  Json json{{"line", entry.line}};
  if (entry.kind == ErrorLogEntry::Kind::broken) {
    json["broken"] = asUtf8(entry.text);
    return json;
  }
  json["time"] = timeText(entry.time);
  if (entry.kind == ErrorLogEntry::Kind::number) {
    json["number"] = entry.number;
    json["operation"] = operationName(entry.number);
  } else {
    json["text"] = asUtf8(entry.text);
  }
  json["project"] = asUtf8(entry.project);
  json["job"] = asUtf8(entry.job);
  json["user"] = asUtf8(entry.user);
  json["machine"] = asUtf8(entry.machine);
  return json;
}

std::string lineOf(const Options& options, const std::string& file, const ErrorLogEntry& entry) {
  // Of several logs, each line says whose it is.
  const std::string begin = options.files.size() > 1
                                ? onOneLine(file) + ":" + std::to_string(entry.line) + ": "
                                : std::string();
  if (entry.kind == ErrorLogEntry::Kind::broken) {
    return begin + "line " + std::to_string(entry.line) +
           " is broken: " + shownOnOneLine(entry.text) + "\n";
  }
  std::string line = begin + timeText(entry.time) + "  ";
  if (entry.kind == ErrorLogEntry::Kind::number) {
    line += std::to_string(entry.number);
    if (const std::string name = operationName(entry.number); !name.empty()) line += " " + name;
  } else {
    line += shownOnOneLine(entry.text);
  }
  line += "  project: " + shownOnOneLine(entry.project);
  line += "  job: " + shownOnOneLine(entry.job);
  return line + "  user: " + shownOnOneLine(entry.user) + "\n";
}

/// Calls `take` for each wanted entry of each file.
template <class Take>
void forEachEntry(const Options& options, Take take) {
  const ErrorLogFilter filter = filterOf(options);
  for (const std::string& file : options.files) {
    const Input input = readInput(file);
    newReader().readAll(input.bytes(), true, [&](ErrorLogEntry&& entry) {
      if (filter.wants(entry)) take(input.name, entry);
    });
  }
}

Exit show(const Options& options) {
  const ErrorLogFilter filter = filterOf(options);
  Json answer;
  bool isAny = false;
  const Exit exit = answerForEach(options.files, answer, [&](const std::string& file, Json& each) {
    const Input input = readInput(file);
    Json list = Json::array();
    newReader().readAll(input.bytes(), true, [&](ErrorLogEntry&& entry) {
      if (!filter.wants(entry)) return;
      isAny = true;
      if (options.json) {
        list.push_back(jsonOf(entry));
      } else {
        print(lineOf(options, input.name, entry));
      }
    });
    each["entries"] = std::move(list);
    return Exit::success;
  });
  if (options.json) printJson(answer);
  return exit == Exit::success && !isAny ? Exit::no : exit;
}

// --- stats ----------------------------------------------------------------------------------

using Counts = std::map<std::string, std::size_t>;

std::vector<std::pair<std::string, std::size_t>> mostFirst(const Counts& counts) {
  std::vector<std::pair<std::string, std::size_t>> list(counts.begin(), counts.end());
  std::stable_sort(list.begin(), list.end(),
                   [](const auto& a, const auto& b) { return a.second > b.second; });
  return list;
}

std::string describeNumber(const std::string& number) {
  const std::string name = operationName(std::stoi(number));
  return name.empty() ? number : number + " " + name;
}

struct Statistics {
  Counts numbers;
  Counts users;
  Counts projects;
  Counts days;
  std::size_t texts = 0;
  std::size_t broken = 0;
  std::size_t total = 0;
  double first = 0.0;
  double last = 0.0;

  void add(const ErrorLogEntry& entry) {
    ++total;
    if (entry.kind == ErrorLogEntry::Kind::broken) {
      ++broken;
      return;
    }
    if (entry.kind == ErrorLogEntry::Kind::number) {
      ++numbers[std::to_string(entry.number)];
    } else {
      ++texts;
    }
    ++users[asUtf8(entry.user)];
    ++projects[asUtf8(entry.project)];
    const double time = CKpxBaseObjectsUtil::Time2Double(entry.time);
    first = first == 0.0 ? time : std::min(first, time);
    last = std::max(last, time);
    ++days[std::to_string(entry.time.date)];
  }
};

std::string timeOrNothing(double time) {
  return time == 0.0 ? "" : asUtf8(CKpxBaseObjectsUtil::TimeDouble2Str(time));
}

Json answerOf(const Statistics& all, const std::vector<std::string>& files) {
  Json json = newAnswer();
  for (const std::string& file : files) json["files"].push_back({{"file", nameOfInput(file)}});
  json.update({{"lines", all.total},
               {"texts", all.texts},
               {"broken", all.broken},
               {"first", timeOrNothing(all.first)},
               {"last", timeOrNothing(all.last)}});
  json["numbers"] = Json::array();
  for (const auto& [number, count] : mostFirst(all.numbers)) {
    json["numbers"].push_back({{"number", std::stoi(number)},
                               {"operation", operationName(std::stoi(number))},
                               {"count", count}});
  }
  json["users"] = all.users;
  json["projects"] = all.projects;
  json["days"] = all.days;
  return json;
}

std::string textOf(const Statistics& all) {
  std::string text = std::to_string(all.total) + " lines, " + std::to_string(all.texts) +
                     " free texts, " + std::to_string(all.broken) + " broken\n";
  if (all.first != 0.0) {
    text += "from " + timeOrNothing(all.first) + " to " + timeOrNothing(all.last) + "\n";
  }
  const auto section = [&](const char* title, const Counts& counts, auto describe) {
    if (counts.empty()) return;
    text += std::string("\n") + title + "\n";
    for (const auto& [name, count] : mostFirst(counts)) {
      const std::string digits = std::to_string(count);
      text += std::string(digits.size() < 8 ? 8 - digits.size() : 0, ' ') + digits + "  " +
              describe(name) + "\n";
    }
  };
  const auto asItIs = [](const std::string& name) {
    return name.empty() ? "(none)" : shownOnOneLine(CString::fromUtf8(name));
  };
  section("Errors", all.numbers, describeNumber);
  section("Users", all.users, asItIs);
  section("Projects", all.projects, asItIs);
  return text;
}

Exit stats(const Options& options) {
  Statistics all;
  forEachEntry(options, [&](const std::string&, const ErrorLogEntry& entry) { all.add(entry); });
  if (options.json) {
    printJson(answerOf(all, options.files));
  } else {
    print(textOf(all));
  }
  return all.total == 0 ? Exit::no : Exit::success;
}

// --- follow ---------------------------------------------------------------------------------

/// One log that is being watched. It may not exist yet, be emptied, or be replaced by a shorter
/// one.
struct Watched {
  std::string name;
  std::uint64_t done = 0;  // bytes that were read
  ErrorLogReader reader = newReader();
  bool wasThere = false;

  /// New whole lines since the last call.
  template <class Take>
  void read(Take take) {
    std::unique_ptr<InputFile> file;
    if (!fileSystem().openInput(fromArgument(name), file)) return;
    wasThere = true;
    if (file->size() < done) {
      done = 0;
      reader = newReader();
    }
    std::string bytes(static_cast<std::size_t>(file->size() - done), '\0');
    std::size_t count = 0;
    if (!file->readAt(done, bytes.data(), bytes.size(), count)) return;
    bytes.resize(count);
    done += reader.readAll(bytes, false, take);
  }
};

Exit follow(const Options& options) {
  const ErrorLogFilter filter = filterOf(options);
  std::vector<Watched> logs;
  for (const std::string& file : options.files) {
    if (file == "-") throw Failure(Exit::usage, "standard input cannot be followed");
    logs.push_back({file});
    logs.back().read([](ErrorLogEntry&&) {});  // what is there already is for kpx log show
    FileInfo info;
    const bool exists = static_cast<bool>(fileSystem().info(fromArgument(file), info));
    if (exists && !logs.back().wasThere) {
      throw Failure(Exit::input, file + ": this cannot be read as a log");
    }
    if (!exists) complain(file + ": is not there yet; waiting for it");
  }
  const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(options.seconds);
  while (options.seconds == 0 || std::chrono::steady_clock::now() < end) {
    for (Watched& log : logs) {
      log.read([&](ErrorLogEntry&& entry) {
        if (!filter.wants(entry)) return;
        if (!options.json) {
          print(lineOf(options, log.name, entry));
          return;
        }
        Json answer = answerAbout(log.name);
        answer.update(jsonOf(entry));
        print(compactJson(answer) + "\n");
      });
    }
    finishOutput();
    std::this_thread::sleep_for(std::chrono::milliseconds(100));
  }
  return Exit::success;
}

}  // namespace

void addLogVerbs(VerbGroup& program) {
  VerbGroup log = program.group("log", "The error logs of the suite");
  const auto add = [&](const char* name, const char* description, Exit (*verb)(const Options&)) {
    return log.verb(name, description, verb)
        .needs("FILE", &Options::files, "Error logs")
        .takes("--number", &Options::numbers, "Only this error number; may be repeated",
               WholeNumbers())
        .takes("--user", &Options::user, "Only this user (* and ? as wildcards)")
        .takes("--project", &Options::project, "Only this project (* and ? as wildcards)")
        .takes("--from", &Options::from, "Not before: DD.MM.YYYY[-hh:mm:ss] or YYYY-MM-DD")
        .takes("--to", &Options::to, "Not after; a day counts whole");
  };
  add("show", "Print the lines that match, with the operations' names", &show)
      .takes("--json", &Options::json, "Print JSON");
  add("stats", "Count errors, users and projects", &stats)
      .takes("--json", &Options::json, "Print JSON");
  add("follow", "Print new lines as they are written", &follow)
      .takes("--seconds", &Options::seconds, "End after this time; 0: never",
             WholeNumbers{.least = 0})
      .takes("--json", &Options::json, "Print JSON, an object a line");
}

}  // namespace kpx::tool
