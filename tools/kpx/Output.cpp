#include "tools/kpx/Output.h"

#include <cstdio>
#include <new>
#include <nlohmann/json.hpp>

#include "kpx/platform/FileSystem.h"
#include "kpx/platform/Terminal.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {
namespace {

bool changeMade = false;

std::string textOf(const Json& json, int indent) {
  return harmlessJson(json.dump(indent, ' ', false, Json::error_handler_t::replace));
}

}  // namespace

void print(std::string_view data) {
  static const bool isTerminal = outputIsTerminal();
  const auto write = [](std::string_view bytes) {
    if (std::fwrite(bytes.data(), 1, bytes.size(), stdout) != bytes.size()) throw OutputFailure();
  };
  if (isTerminal) {
    write(forTerminal(data));
  } else {
    write(data);
  }
}

void printLine(std::string_view sentence) { print(onOneLine(sentence) + "\n"); }

void printJson(const Json& json) { print(textOf(json, 2) + "\n"); }

std::string compactJson(const Json& json) { return textOf(json, -1); }

void replaceOrFail(const std::string& path, std::string_view bytes) {
  const FileResult result = fileSystem().replaceFile(CString::fromUtf8(path), bytes);
  if (!result) {
    throw Failure(Exit::notWritten,
                  path + ": " + asUtf8(result.message()) + "; nothing was changed");
  }
  noteChange();
}

void noteChange() noexcept { changeMade = true; }
bool isChangeMade() noexcept { return changeMade; }

void finishOutput() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) throw OutputFailure();
}

std::pair<int, int> PlaceCounter::at(int offset) {
  for (; counted_ < offset; ++counted_) {
    if (text_[counted_] == u'\n') {
      ++line_;
      lineStart_ = counted_ + 1;
    }
  }
  return {line_, offset - lineStart_ + 1};
}

void complain(std::string_view sentence) {
  // Standard error is the last resort: where it is closed too, the exit code must do.
  try {
    writeErrorOutput(CString::fromUtf8("kpx: " + onOneLine(sentence) + "\n"));
  } catch (const std::bad_alloc&) {
    std::fputs("kpx: not enough memory\n", stderr);
  }
}

}  // namespace kpx::tool
