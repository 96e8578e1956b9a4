#include <algorithm>
#include <chrono>
#include <vector>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"
#include "kpx/xml/MarkupFormat.h"
#include "tools/kpx/Answers.h"
#include "tools/kpx/FileChange.h"
#include "tools/kpx/Input.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

struct Arguments {
  std::vector<std::string> files;
  bool json = false;
  bool all = false;
  bool check = false;  // of format
  bool write = false;
  ChangeWait wait;
};

// --- check ----------------------------------------------------------------------------------

Exit checkFile(const std::string& file, const Arguments& arguments, Json& answer) {
  answer["well_formed"] = false;  // what cannot be read is not
  answer["problems"] = Json::array();
  const Input input = readInput(file);
  const ReadDocument read = checkInput(input, arguments.all ? noProblemLimit : usualProblemLimit);
  const Exit exit = !read.readable ? Exit::input : read.errorCount == 0 ? Exit::success : Exit::no;
  answer["encoding"] = read.encoding;
  answer["well_formed"] = exit == Exit::success;
  for (const ProblemLine& problem : read.problems) {
    if (arguments.json) {
      answer["problems"].push_back(jsonOf(problem));
    } else {
      printLine(placeOf(input.name, problem));
    }
  }
  if (const std::size_t leftOut = read.problemCount - read.problems.size(); leftOut > 0) {
    answer["left_out"] = leftOut;
    if (!arguments.json) printLine(leftOutLine(input.name, leftOut));
  }
  if (!arguments.json && exit == Exit::success) printLine(input.name + ": well-formed");
  return exit;
}

Exit check(const Arguments& arguments) {
  Json answer;
  const Exit exit = answerForEach(
      arguments.files, answer,
      [&](const std::string& file, Json& each) { return checkFile(file, arguments, each); });
  if (arguments.json) printJson(answer);
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
  using SteadyClock = std::chrono::steady_clock;
  constexpr auto budget = std::chrono::milliseconds(400);
  std::vector<double> seconds;
  const auto begin = SteadyClock::now();
  do {
    const auto start = SteadyClock::now();
    CMarkup document;
    document.SetParseResult(false);
    document.SetDoc(decodeMarkupBytes(input.bytes()).text);
    seconds.push_back(std::chrono::duration<double>(SteadyClock::now() - start).count());
  } while (SteadyClock::now() - begin < budget);
  runs = static_cast<int>(seconds.size());
  std::nth_element(seconds.begin(), seconds.begin() + runs / 2, seconds.end());
  return seconds[static_cast<std::size_t>(runs / 2)];
}

Exit statsOfFile(const std::string& file, const Arguments& arguments, Json& answer) {
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
    answer.update({{"bytes", input.bytes().size()},
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
                CString::fromUtf8(onOneLine(input.name)), u"size", megabytes,
                CString::fromUtf8(read.encoding), u"elements", shape.elements, u"attributes",
                shape.attributes, u"depth", shape.depth, u"well-formed",
                wellFormed ? u"yes" : u"no");
    text.AppendFormat(u"  %-12s %.0f MB/s, decoding and parsing in %.3f ms (median of %d)\n",
                      u"speed", seconds > 0 ? megabytes / seconds : 0.0, seconds * 1e3, runs);
    print(asUtf8(text));
  }
  if (!wellFormed) {
    complain(placeOf(input.name, read.problems.front()));
  }
  return wellFormed ? Exit::success : Exit::input;
}

Exit stats(const Arguments& arguments) {
  Json answer;
  const Exit exit = answerForEach(
      arguments.files, answer,
      [&](const std::string& file, Json& each) { return statsOfFile(file, arguments, each); });
  if (arguments.json) printJson(answer);
  return exit;
}

// --- format ---------------------------------------------------------------------------------

Exit formatFile(const std::string& file, const Arguments& arguments, Json& answer) {
  FileChange change(file,
                    arguments.write ? std::optional<ChangeWait>(arguments.wait) : std::nullopt);
  const Input& input = change.input();
  ReadDocument read = requireWellFormed(input);
  const CString text = formatMarkup(read.document);
  const EncodedText formatted = encodeMarkupText(text, read.storage);
  if (!formatted.usable || formatted.losses > 0) {
    throw Failure(Exit::input,
                  input.name + ": holds what the encoding " + read.encoding + " cannot");
  }
  const bool isFormatted = formatted.bytes == input.bytes();
  if (arguments.check || arguments.write) {
    answer["formatted"] = isFormatted;
  } else if (arguments.json) {
    answer["text"] = asUtf8(text);
  } else {
    print(formatted.bytes);
  }
  if (arguments.write) change.write(formatted.bytes);
  if (!arguments.check || isFormatted) return Exit::success;
  if (!arguments.json) printLine(input.name + ": is not as xml format writes it");
  return Exit::no;
}

Exit format(const Arguments& arguments) {
  if (arguments.files.size() > 1 && !arguments.check && !arguments.write) {
    throw Failure(Exit::usage, "several files need --check or --write");
  }
  Json answer;
  const Exit exit = answerForEach(
      arguments.files, answer,
      [&](const std::string& file, Json& each) { return formatFile(file, arguments, each); });
  if (arguments.json) printJson(answer);
  return exit;
}

}  // namespace

void addXmlVerbs(VerbGroup& program) {
  VerbGroup xml = program.group("xml", "Check, measure and format XML files");
  const auto add = [&](const char* name, const char* description, Exit (*verb)(const Arguments&)) {
    return xml.verb(name, description, verb)
        .needs("FILE", &Arguments::files, "XML files, or - for standard input")
        .takes("--json", &Arguments::json, "Print JSON");
  };
  add("check", "Print what other programs would refuse, with line and column", &check)
      .takes("--all", &Arguments::all, "Print more than the first 1000");
  add("stats", "Print size, elements, depth, well-formedness and parsing speed", &stats);
  add("format", "Print the document with one element a line, indented, in its own encoding",
      &format)
      .takes("--check", &Arguments::check,
             "Only name the files that are not so; exit code 1 if any is")
      .takes("--write", &Arguments::write, "Write the file again in place of printing it")
      .excludes("--write", {"--check"})
      .with(&Arguments::wait, &addWaitOption);
}

}  // namespace kpx::tool
