#include "tools/kpx/Input.h"

#include <cstdio>
#include <utility>

#include "kpx/platform/FileSystem.h"
#include "kpx/xml/Encoding.h"
#include "kpx/xml/StoredMarkup.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {
namespace {

std::string readStandardInput() {
  static bool isRead = false;
  if (std::exchange(isRead, true)) {
    throw Failure(Exit::usage, "standard input can be read only once, so only one file can be -");
  }
  std::string bytes;
  char chunk[1 << 16];
  while (const std::size_t count = std::fread(chunk, 1, sizeof chunk, stdin)) {
    bytes.append(chunk, count);
  }
  if (std::ferror(stdin)) throw Failure(Exit::input, "standard input cannot be read");
  return bytes;
}

ReadDocument readDocument(StoredMarkup stored) {
  ReadDocument read{std::move(stored.document),
                    asUtf8(encodingName(stored.storage.codePage)),
                    stored.storage,
                    stored.readable,
                    {},
                    stored.problems.count,
                    stored.problems.count - stored.warnings};
  for (const PlacedProblem& problem : stored.problems) {
    read.problems.push_back({problem.line, problem.column, asUtf8(problem.sentence),
                             problem.isWarning, asUtf8(CString(problem.kind))});
  }
  return read;
}

}  // namespace

ProblemLine atByte(std::string_view bytes, std::size_t offset, std::string sentence) {
  const auto [line, column] = placeOfByte(bytes, offset);
  return {line, column, std::move(sentence)};
}

std::string placeOf(const std::string& name, const ProblemLine& problem) {
  return name + ":" + std::to_string(problem.line) + ":" + std::to_string(problem.column) + ": " +
         (problem.isWarning ? "warning: " : "") + problem.sentence;
}

std::string leftOutLine(const std::string& name, std::size_t count) {
  return name + ": " + std::to_string(count) + " more; --all prints them";
}

std::string nameOfInput(const std::string& path) { return path == "-" ? "standard input" : path; }

Input readInput(const std::string& path, FileVersion* version, bool mayBeMissing) {
  if (path == "-") return {nameOfInput(path), {}, readStandardInput()};
  Input input{path, {}, {}};
  const FileResult result =
      fileSystem().read(CString::fromUtf8(path), input.file, FileSystem::maxReadBytes, version);
  if (!result && !(mayBeMissing && result.status == FileStatus::notFound)) {
    throw Failure(Exit::input, path + ": " + asUtf8(result.message()));
  }
  return input;
}

Exit forEachFile(const std::vector<std::string>& files,
                 const std::function<Exit(const std::string& file)>& body) {
  Exit worst = Exit::success;
  for (const std::string& file : files) {
    try {
      worst = std::max(worst, body(file));
    } catch (const Failure& failure) {
      complain(failure.what());
      worst = std::max(worst, failure.code());
    }
  }
  return worst;
}

ReadDocument parseInput(const Input& input) { return readDocument(readMarkup(input.bytes())); }

ReadDocument checkInput(const Input& input, std::size_t limit) {
  return readDocument(checkMarkup(input.bytes(), limit));
}

ReadDocument requireWellFormed(const Input& input) {
  ReadDocument read = parseInput(input);
  if (read.readable && read.document.IsWellFormed()) return read;
  if (input.bytes().empty()) throw Failure(Exit::input, input.name + ": is empty");
  throw Failure(Exit::input, placeOf(input.name, read.problems.front()));
}

}  // namespace kpx::tool
