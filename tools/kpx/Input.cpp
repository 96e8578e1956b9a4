#include "tools/kpx/Input.h"

#include <algorithm>
#include <cstdio>
#include <utility>

#include "kpx/platform/FileSystem.h"
#include "kpx/xml/Encoding.h"
#include "kpx/xml/MarkupCheck.h"
#include "kpx/xml/MarkupProblem.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {
namespace {

std::string readStandardInput() {
  std::string bytes;
  char chunk[1 << 16];
  while (const std::size_t count = std::fread(chunk, 1, sizeof chunk, stdin)) {
    bytes.append(chunk, count);
  }
  if (std::ferror(stdin)) throw Failure(Exit::input, "standard input cannot be read");
  return bytes;
}

ProblemLine lineOf(const MarkupProblem& problem) {
  return {problem.line, problem.column, shown(describe(problem))};
}

}  // namespace

ProblemLine atByte(std::string_view bytes, std::size_t offset, std::string sentence) {
  ProblemLine problem{1, 1, std::move(sentence)};
  for (std::size_t i = 0; i < offset && i < bytes.size(); ++i) {
    if (bytes[i] == '\n') {
      ++problem.line;
      problem.column = 1;
    } else {
      ++problem.column;
    }
  }
  return problem;
}

std::string placeOf(const std::string& name, const ProblemLine& problem) {
  return name + ":" + std::to_string(problem.line) + ":" + std::to_string(problem.column) + ": " +
         problem.sentence;
}

Input readInput(const std::string& path) {
  if (path == "-") return {"standard input", {}, readStandardInput()};
  Input input{path, {}, {}};
  if (const FileResult result = fileSystem().read(CString::fromUtf8(path), input.file); !result) {
    throw Failure(Exit::input, path + ": " + shown(result.message()));
  }
  return input;
}

ReadDocument parseInput(const Input& input) {
  ReadDocument read;
  DecodedText decoded = decodeMarkupBytes(input.bytes());
  read.encoding = shown(encodingName(decoded.codePage));
  read.storage = {decoded.codePage, decoded.mark};
  if (decoded.declarationWrong) read.wrongEncoding = shown(decoded.declared);
  const auto refuse = [&](std::size_t offset, std::string sentence) {
    read.problems.push_back(atByte(input.bytes(), offset, std::move(sentence)));
  };
  if (decoded.refusal == DecodingRefusal::tooLarge) {
    refuse(0, "is larger than a document can be");
  } else if (decoded.refusal == DecodingRefusal::binary || decoded.nulls > 0) {
    refuse(input.bytes().find('\0'), "is a binary file, no text");
  } else if (decoded.invalid > 0) {
    refuse(decoded.firstInvalid, std::to_string(decoded.invalid) +
                                     (decoded.invalid == 1 ? " byte that is" : " bytes that are") +
                                     " no text in the encoding " + read.encoding);
  } else {
    read.readable = true;
    read.document.SetProblemSink(
        [&](const MarkupProblem& problem) { read.problems.push_back(lineOf(problem)); });
    read.document.SetDoc(std::move(decoded.text));
    read.document.SetProblemSink({});
  }
  return read;
}

void checkStrictly(ReadDocument& read) {
  if (!read.readable) return;
  if (!read.wrongEncoding.empty()) {
    read.problems.push_back({1, 1,
                             "the declared encoding '" + read.wrongEncoding +
                                 "' is unknown or not that of the bytes; read as " +
                                 read.encoding});
  }
  MarkupCheck::check(read.document.GetDoc(), [&](const MarkupProblem& problem) {
    if (!MarkupCheck::isWarning(problem.kind)) read.problems.push_back(lineOf(problem));
  });
  std::ranges::stable_sort(read.problems, {}, [](const ProblemLine& problem) {
    return std::pair(problem.line, problem.column);
  });
}

ReadDocument requireWellFormed(const Input& input) {
  ReadDocument read = parseInput(input);
  if (read.readable && read.document.IsWellFormed()) return read;
  if (input.bytes().empty()) throw Failure(Exit::input, input.name + ": is empty");
  throw Failure(Exit::input, placeOf(input.name, read.problems.front()));
}

}  // namespace kpx::tool
