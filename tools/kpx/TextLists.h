#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kpx/support/Problems.h"
#include "kpx/support/texts/LanguageFile.h"
#include "tools/kpx/Input.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {

/// A list of texts that was read, from a language file, a tab-separated list or JSON.
struct ReadTexts {
  std::string name;  // for messages
  TextList list;
  /// What is wrong with the file; the texts that could be read are there all the same. The first
  /// ones, and how many there are. Line 0 is that of a file without lines.
  std::vector<ProblemLine> problems;
  std::size_t problemCount = 0;
};

/// How messages and answers name a list: "" are the built-in texts.
std::string nameOfList(const std::string& path);
/// A problem of a list behind its name, with the place if there is one.
std::string lineOf(const ReadTexts& read, const ProblemLine& problem);

/// Reads a list. A name that ends in ".LNG" is a language file, content that begins with a brace is
/// JSON, everything else is tab-separated. "-" is standard input; "" are the built-in German
/// texts. Raises a Failure for what cannot be read at all.
ReadTexts readTexts(const std::string& path, std::size_t limit = usualProblemLimit);

/// The same. Raises a Failure for a list with anything wrong, which tells what.
TextList requireTexts(const std::string& path);

/// A list as JSON: title, header, and the texts with their ids in their order. Raises a Failure for
/// a text that JSON cannot carry.
Json jsonOf(const TextList& list);

}  // namespace kpx::tool
