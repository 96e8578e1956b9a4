#include "tools/kpx/TextLists.h"

#include <algorithm>
#include <limits>
#include <new>
#include <nlohmann/json.hpp>
#include <utility>

#include "kpx/support/texts/TextTable.h"
#include "kpx/text/CaseFold.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/StrictJson.h"

namespace kpx::tool {
namespace {

bool isLanguageFile(const std::string& path) {
  const CString name = CString::fromUtf8(path);
  return name.Right(4).CompareNoCase(u".LNG") == 0;
}

bool isJson(std::string_view bytes) {
  const std::size_t first = bytes.find_first_not_of(" \t\r\n");
  return first != bytes.npos && bytes[first] == '{';
}

void readBinary(std::string_view bytes, ReadTexts& read) {
  const LanguageFileResult result = readLanguageFile(bytes, read.list);
  if (result.hasFailed) throw std::bad_alloc();
  if (!result.isWhole) {
    read.problems.push_back({0, 0,
                             "ends early, behind " + std::to_string(read.list.entries.size()) +
                                 " of " + std::to_string(result.announced) + " texts",
                             false, "ends-early"});
  } else if (result.end != bytes.size()) {
    read.problems.push_back(
        {0, 0,
         std::to_string(bytes.size() - result.end) + " bytes behind the last text are never read",
         false, "surplus-bytes"});
  }
}

void readTable(std::string_view bytes, ReadTexts& read, std::size_t limit) {
  const Problems<TextTableProblem> problems = readTextTable(bytes, read.list, limit);
  for (const TextTableProblem& problem : problems) {
    read.problems.push_back(
        {problem.line, 1, asUtf8(problem.message), false, asUtf8(CString(kindName(problem.kind)))});
  }
  read.problemCount = problems.count;
}

/// A list of texts as `texts dump --json` prints it.
class JsonList {
 public:
  explicit JsonList(const Input& input) : json_(input.bytes(), input.name) {}

  void read(TextList& list) {
    const Json& root = json_.root();
    if (root.contains("title")) list.title = text(root["title"], "/title");
    if (root.contains("header")) list.header = number<std::uint32_t>(root["header"], "/header");
    if (!root.contains("texts") || !root["texts"].is_array()) {
      json_.fail("", "lacks the array \"texts\"");
    }
    for (const Json& entry : root["texts"]) {
      const std::string at = "/texts/" + std::to_string(list.entries.size());
      if (!entry.is_object() || !entry.contains("id") || !entry.contains("text")) {
        json_.fail(at, "must be an object with \"id\" and \"text\"");
      }
      list.entries.push_back(
          {number<std::int32_t>(entry["id"], at + "/id"), text(entry["text"], at + "/text")});
    }
  }

 private:
  template <class Number>
  Number number(const Json& node, const std::string& at) const {
    using Limits = std::numeric_limits<Number>;
    const bool isLarge = node.is_number_unsigned() && node.get<std::uint64_t>() > Limits::max();
    const bool isSmall = node.is_number_integer() && !node.is_number_unsigned() &&
                         node.get<std::int64_t>() < std::int64_t{Limits::min()};
    if (!node.is_number_integer() || isLarge || isSmall) {
      json_.fail(at, "must be a whole number of 32 bits, from " + std::to_string(Limits::min()) +
                         " to " + std::to_string(Limits::max()));
    }
    return node.get<Number>();
  }
  CString text(const Json& node, const std::string& at) const {
    if (!node.is_string()) json_.fail(at, "must be a text in quotes");
    return CString::fromUtf8(node.get_ref<const std::string&>());
  }

  StrictJson json_;
};

void readJson(const Input& input, ReadTexts& read) {
  try {
    JsonList(input).read(read.list);
  } catch (const JsonFailure& failure) {
    read.problems.push_back(failure.place());
  }
}

std::string jsonTextOf(const CString& text, const std::string& what) {
  std::string bytes = asUtf8(text);
  if (CString::fromUtf8(bytes) != text) {
    throw Failure(Exit::input,
                  what +
                      " holds half of a character, which JSON cannot carry; the tab-separated "
                      "form can");
  }
  return bytes;
}

}  // namespace

std::string nameOfList(const std::string& path) {
  return path.empty() ? "built-in texts" : nameOfInput(path);
}

std::string lineOf(const ReadTexts& read, const ProblemLine& problem) {
  return problem.line == 0 ? read.name + ": " + problem.sentence : placeOf(read.name, problem);
}

ReadTexts readTexts(const std::string& path, std::size_t limit) {
  ReadTexts read;
  if (path.empty()) {
    read.name = nameOfList(path);
    read.list = builtInTexts();
    return read;
  }
  const Input input = readInput(path);
  read.name = input.name;
  if (isLanguageFile(path)) {
    readBinary(input.bytes(), read);
  } else if (isJson(input.bytes())) {
    readJson(input, read);
  } else {
    readTable(input.bytes(), read, limit);
  }
  read.problemCount = std::max(read.problemCount, read.problems.size());
  return read;
}

TextList requireTexts(const std::string& path) {
  ReadTexts read = readTexts(path);
  if (!read.problems.empty()) {
    std::string message = lineOf(read, read.problems.front());
    if (read.problemCount > 1) {
      message += " (and " + std::to_string(read.problemCount - 1) + " more)";
    }
    throw Failure(Exit::input, message);
  }
  return std::move(read.list);
}

Json jsonOf(const TextList& list) {
  Json texts = Json::array();
  for (const TextEntry& entry : list.entries) {
    texts.push_back({{"id", entry.id},
                     {"text", jsonTextOf(entry.text, "the text " + std::to_string(entry.id))}});
  }
  return {{"title", jsonTextOf(list.title, "the title")},
          {"header", list.header},
          {"texts", std::move(texts)}};
}

}  // namespace kpx::tool
