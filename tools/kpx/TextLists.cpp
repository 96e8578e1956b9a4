#include "tools/kpx/TextLists.h"

#include <algorithm>
#include <limits>
#include <utility>

#include "kpx/support/TextTable.h"
#include "kpx/text/CaseFold.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/Input.h"

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
  if (!result.isWhole) {
    read.problems.push_back(read.name + ": ends early, behind " +
                            std::to_string(read.list.entries.size()) + " of " +
                            std::to_string(result.announced) + " texts");
  } else if (result.end != bytes.size()) {
    read.problems.push_back(read.name + ": " + std::to_string(bytes.size() - result.end) +
                            " bytes behind the last text are never read");
  }
}

void readTable(std::string_view bytes, ReadTexts& read, std::size_t limit) {
  const Problems<TextTableProblem> problems = readTextTable(bytes, read.list, limit);
  for (const TextTableProblem& problem : problems) {
    read.problems.push_back(placeOf(read.name, {problem.line, 1, shown(problem.message)}));
  }
  read.problemCount = problems.count;
}

template <class Number>
Number numberOf(const Json& json, const char* what) {
  if (!json.is_number_integer()) throw std::invalid_argument(std::string(what) + " is no integer");
  const bool isLarge =
      json.is_number_unsigned() &&
      json.get<std::uint64_t>() > static_cast<std::uint64_t>(std::numeric_limits<Number>::max());
  const bool isSmall =
      !json.is_number_unsigned() &&
      json.get<std::int64_t>() < static_cast<std::int64_t>(std::numeric_limits<Number>::min());
  if (isLarge || isSmall) throw std::invalid_argument(std::string(what) + " has more than 32 bits");
  return json.get<Number>();
}

CString textOf(const Json& json, const char* what) {
  if (!json.is_string()) throw std::invalid_argument(std::string(what) + " is no text");
  return CString::fromUtf8(json.get_ref<const std::string&>());
}

void readJson(std::string_view bytes, ReadTexts& read) {
  try {
    // A list is flat; a file of nothing but brackets would fill the memory.
    constexpr int deepest = 16;
    const auto checkDepth = [](int depth, Json::parse_event_t, const Json&) {
      if (depth > deepest)
        throw std::invalid_argument("it is nested too deeply for a list of texts");
      return true;
    };
    const Json json = Json::parse(bytes, checkDepth);
    if (json.contains("title")) read.list.title = textOf(json["title"], "the title");
    if (json.contains("header")) {
      read.list.header = numberOf<std::uint32_t>(json["header"], "the header");
    }
    if (!json.contains("texts") || !json["texts"].is_array()) {
      throw std::invalid_argument("there is no array \"texts\"");
    }
    for (const Json& entry : json["texts"]) {
      const std::string place = "entry " + std::to_string(read.list.entries.size() + 1);
      if (!entry.contains("id") || !entry.contains("text")) {
        throw std::invalid_argument(place + " has no \"id\" or no \"text\"");
      }
      read.list.entries.push_back({numberOf<std::int32_t>(entry["id"], (place + ": id").c_str()),
                                   textOf(entry["text"], (place + ": text").c_str())});
    }
  } catch (const std::bad_alloc&) {
    throw;
  } catch (const std::exception& error) {
    read.problems.push_back(read.name + ": " + error.what());
  }
}

std::string jsonTextOf(const CString& text, const std::string& what) {
  std::string bytes = shown(text);
  if (CString::fromUtf8(bytes) != text) {
    throw Failure(Exit::input,
                  what +
                      " holds half of a character, which JSON cannot carry; the tab-separated "
                      "form can");
  }
  return bytes;
}

}  // namespace

ReadTexts readTexts(const std::string& path, std::size_t limit) {
  ReadTexts read;
  if (path.empty()) {
    read.name = "built-in texts";
    read.list = builtInTexts();
    return read;
  }
  const Input input = readInput(path);
  read.name = input.name;
  if (isLanguageFile(path)) {
    readBinary(input.bytes(), read);
  } else if (isJson(input.bytes())) {
    readJson(input.bytes(), read);
  } else {
    readTable(input.bytes(), read, limit);
  }
  read.problemCount = std::max(read.problemCount, read.problems.size());
  return read;
}

TextList requireTexts(const std::string& path) {
  ReadTexts read = readTexts(path);
  if (!read.problems.empty()) {
    std::string message = read.problems.front();
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
