#pragma once

#include <functional>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/platform/FileBytes.h"
#include "kpx/platform/FileVersion.h"
#include "kpx/support/Problems.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"
#include "kpx/xml/MarkupProblem.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {

/// The bytes of a file or of standard input, with the name that messages give them.
struct Input {
  std::string name;
  FileBytes file;
  std::string piped;

  std::string_view bytes() const noexcept { return piped.empty() ? file.view() : piped; }
};

/// A file as messages and answers name it.
std::string nameOfInput(const std::string& path);

/// Reads a file, or standard input for "-". Raises a Failure that says why when it cannot.
/// Standard input can be read only once.
/// `version` receives what the file was then. A missing file is empty where that may be.
Input readInput(const std::string& path, FileVersion* version = nullptr, bool mayBeMissing = false);

/// What a verb answers for several files: the worst of the answers for each. One that ends with a
/// Failure is told, and the others are looked at all the same.
Exit forEachFile(const std::vector<std::string>& files,
                 const std::function<Exit(const std::string& file)>& body);

/// A problem with its place, as it follows a file's name: "line:column: sentence".
struct ProblemLine {
  int line = 0;
  int column = 0;
  std::string sentence;
  bool isWarning = false;
  std::string kind = {};  // a word for programs
};

/// Tells that more problems were found than are printed.
std::string leftOutLine(const std::string& name, std::size_t count);

/// The line and column, from 1, of a byte; columns count bytes.
ProblemLine atByte(std::string_view bytes, std::size_t offset, std::string sentence);

/// A document that was read, with everything that is wrong with it.
struct ReadDocument {
  CMarkup document;
  std::string encoding;
  MarkupEncoding storage;             // how to write it back the same way
  bool readable = false;              // false: the bytes are no text; problems tell why
  std::vector<ProblemLine> problems;  // the first ones
  std::size_t problemCount = 0;       // of all
  std::size_t errorCount = 0;         // of all, but the warnings
};
ReadDocument parseInput(const Input& input);
/// The same with what other XML programs would refuse, although the library reads it.
ReadDocument checkInput(const Input& input, std::size_t limit);

/// A problem behind the name of its file: "name:line:column: sentence".
std::string placeOf(const std::string& name, const ProblemLine& problem);

/// Parses an input that has to be well formed. Raises a Failure with file, line and column of
/// the first problem when it is not.
ReadDocument requireWellFormed(const Input& input);

}  // namespace kpx::tool
