#include <algorithm>
#include <chrono>
#include <memory>
#include <vector>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"
#include "kpx/xml/MarkupFormat.h"
#include "tools/kpx/Input.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::vector<std::string> files;
  bool json = false;
  bool all = false;
};

// --- check ----------------------------------------------------------------------------------

Exit checkFile(const std::string& file, const Arguments& arguments, Json& report) {
  Json entry;
  entry["file"] = file;
  std::vector<ProblemLine> problems;
  std::size_t leftOut = 0;
  std::string name = file;
  Exit exit = Exit::success;
  try {
    const Input input = readInput(file);
    name = input.name;
    ReadDocument read = checkInput(input, arguments.all ? noProblemLimit : usualProblemLimit);
    problems = std::move(read.problems);
    leftOut = read.problemCount - problems.size();
    entry["encoding"] = read.encoding;
    if (!read.readable) {
      exit = Exit::input;
    } else if (read.errorCount > 0) {
      exit = Exit::no;
    }
  } catch (const Failure& failure) {
    if (!arguments.json) complain(failure.what());
    entry["error"] = failure.what();
    exit = failure.code();
  }
  entry["well_formed"] = exit == Exit::success;
  Json list = Json::array();
  for (const ProblemLine& problem : problems) {
    if (arguments.json) {
      list.push_back(
          {{"line", problem.line}, {"column", problem.column}, {"message", problem.sentence}});
      if (problem.isWarning) list.back()["warning"] = true;
    } else {
      print(placeOf(name, problem) + "\n");
    }
  }
  entry["problems"] = std::move(list);
  if (leftOut > 0) entry["left_out"] = leftOut;
  if (!arguments.json && leftOut > 0) print(leftOutLine(name, leftOut) + "\n");
  if (!arguments.json && exit == Exit::success) print(name + ": well-formed\n");
  report.push_back(std::move(entry));
  return exit;
}

Exit check(const Arguments& arguments) {
  Json report = Json::array();
  Exit exit = Exit::success;
  for (const std::string& file : arguments.files) {
    exit = std::max(exit, checkFile(file, arguments, report));
  }
  if (arguments.json) printJson(report);
  return exit;
}

// --- stats ----------------------------------------------------------------------------------

struct Shape {
  int elements = 0;
  int depth = 0;
  long long attributes = 0;
};

Shape shapeOf(CMarkup& document) {
  Shape shape;
  int depth = 1;
  document.ResetPos();
  for (;;) {
    if (document.FindElem()) {
      ++shape.elements;
      shape.depth = std::max(shape.depth, depth);
      for (AttributeReader attribute = document.ReadAttribs(); attribute.next();) {
        ++shape.attributes;
      }
      document.ResetChildPos();
      document.IntoElem();
      ++depth;
    } else if (depth > 1) {
      document.OutOfElem();
      --depth;
    } else {
      return shape;
    }
  }
}

/// Seconds that reading the bytes into a document takes: the median of the runs that fit into a
/// short while.
double parseSeconds(const Input& input, int& runs) {
  using Clock = std::chrono::steady_clock;
  constexpr auto budget = std::chrono::milliseconds(400);
  std::vector<double> seconds;
  const auto begin = Clock::now();
  do {
    const auto start = Clock::now();
    CMarkup document;
    document.SetParseResult(false);
    document.SetDoc(decodeMarkupBytes(input.bytes()).text);
    seconds.push_back(std::chrono::duration<double>(Clock::now() - start).count());
  } while (Clock::now() - begin < budget);
  runs = static_cast<int>(seconds.size());
  std::nth_element(seconds.begin(), seconds.begin() + runs / 2, seconds.end());
  return seconds[static_cast<std::size_t>(runs / 2)];
}

Exit statsOfFile(const std::string& file, const Arguments& arguments, Json& report) {
  const Input input = readInput(file);
  ReadDocument read = parseInput(input);
  if (!read.readable) {
    throw Failure(Exit::input, placeOf(input.name, read.problems.front()));
  }
  const bool wellFormed = read.document.IsWellFormed();
  const Shape shape = shapeOf(read.document);
  // Its memory is needed for the next.
  read.document = CMarkup();
  int runs = 0;
  const double seconds = parseSeconds(input, runs);
  const double megabytes = static_cast<double>(input.bytes().size()) / 1e6;

  if (arguments.json) {
    report.push_back({{"file", file},
                      {"bytes", input.bytes().size()},
                      {"encoding", read.encoding},
                      {"elements", shape.elements},
                      {"attributes", shape.attributes},
                      {"depth", shape.depth},
                      {"well_formed", wellFormed},
                      {"milliseconds", seconds * 1e3},
                      {"mb_per_second", seconds > 0 ? megabytes / seconds : 0.0},
                      {"runs", runs}});
  } else {
    CString text;
    text.Format(u"%s\n  %-12s %.3f MB, %s\n  %-12s %d\n  %-12s %lld\n  %-12s %d\n  %-12s %s\n",
                CString::fromUtf8(input.name), u"size", megabytes, CString::fromUtf8(read.encoding),
                u"elements", shape.elements, u"attributes", shape.attributes, u"depth", shape.depth,
                u"well-formed", wellFormed ? u"yes" : u"no");
    text.AppendFormat(u"  %-12s %.0f MB/s, decoding and parsing in %.3f ms (median of %d)\n",
                      u"speed", seconds > 0 ? megabytes / seconds : 0.0, seconds * 1e3, runs);
    print(shown(text));
  }
  if (!wellFormed) {
    complain(placeOf(input.name, read.problems.front()));
  }
  return wellFormed ? Exit::success : Exit::input;
}

Exit stats(const Arguments& arguments) {
  Json report = Json::array();
  Exit exit = Exit::success;
  for (const std::string& file : arguments.files) {
    try {
      exit = std::max(exit, statsOfFile(file, arguments, report));
    } catch (const Failure& failure) {
      complain(failure.what());
      exit = std::max(exit, failure.code());
    }
  }
  if (arguments.json) printJson(report);
  return exit;
}

// --- format ---------------------------------------------------------------------------------

Exit format(const Arguments& arguments) {
  const Input input = readInput(arguments.files.front());
  ReadDocument read = requireWellFormed(input);
  const CString text = formatMarkup(read.document);
  if (arguments.json) {
    printJson(Json{{"file", input.name}, {"text", shown(text)}});
  } else {
    const EncodedText encoded = encodeMarkupText(text, read.storage);
    if (!encoded.usable || encoded.losses > 0) {
      throw Failure(Exit::notWritten,
                    input.name + ": cannot be written in the encoding " + read.encoding);
    }
    print(encoded.bytes);
  }
  return Exit::success;
}

}  // namespace

void addXmlVerbs(CLI::App& app, Action& chosen) {
  CLI::App* xml = app.add_subcommand("xml", "Check, measure and format XML files");
  requireVerb(*xml);

  const auto add = [&](const char* name, const char* description, const char* fileHelp,
                       Exit (*verb)(const Arguments&), bool severalFiles) {
    const auto added = addVerb(*xml, chosen, name, description, verb);
    const auto& [command, arguments] = added;
    CLI::Option* files = command->add_option("FILE", arguments->files, fileHelp)->required();
    if (!severalFiles) files->expected(1);
    command->add_flag("--json", arguments->json, "Print JSON");
    return added;
  };
  const auto checker = add("check", "Print what other programs would refuse, with line and column",
                           "XML files, or - for standard input", &check, true);
  checker.first->add_flag("--all", checker.second->all, "Print more than the first 1000");
  add("stats", "Print size, elements, depth, well-formedness and parsing speed",
      "XML files, or - for standard input", &stats, true);
  add("format", "Print the document with one element a line, indented, in its own encoding",
      "XML file, or - for standard input", &format, false);
}

}  // namespace kpx::tool
