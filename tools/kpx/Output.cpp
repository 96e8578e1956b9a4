#include "tools/kpx/Output.h"

#include <cstdio>
#include <new>

#include "kpx/platform/FileSystem.h"
#include "kpx/platform/Terminal.h"
#include "kpx/text/Utf.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {
namespace {

[[noreturn]] void failOutput() {
  throw Failure(Exit::notWritten, "standard output cannot be written");
}

}  // namespace

std::string shown(const CString& text) {
  std::u16string valid;
  valid.reserve(text.view().size());
  for (std::size_t i = 0; i < text.view().size();) {
    const char32_t code = nextCodePoint(text, i);
    const bool surrogate = code >= 0xD800 && code <= 0xDFFF;
    appendCodePoint(valid, surrogate ? replacementCharacter : code);
  }
  return utf8FromUtf16(valid);
}

namespace {

bool isControl(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return code < 0x20 || code == 0x7f;
}

void appendEscaped(std::string& line, char byte) {
  switch (byte) {
    case '\n':
      line += "\\n";
      break;
    case '\r':
      line += "\\r";
      break;
    case '\t':
      line += "\\t";
      break;
    default: {
      static constexpr char digits[] = "0123456789abcdef";
      const auto code = static_cast<unsigned char>(byte);
      line += {'\\', 'x', digits[code >> 4], digits[code & 15]};
    }
  }
}

}  // namespace

std::string shownOnOneLine(const CString& text) {
  constexpr std::string_view escapeLetters = "nrtx\\";
  const std::string bytes = shown(text);
  std::string line;
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    if (isControl(bytes[i])) {
      appendEscaped(line, bytes[i]);
      continue;
    }
    line += bytes[i];
    const bool hasNext = bytes[i] == '\\' && i + 1 < bytes.size();
    if (hasNext &&
        (isControl(bytes[i + 1]) || escapeLetters.find(bytes[i + 1]) != std::string_view::npos))
      line += '\\';
  }
  return line;
}

std::string shownPath(const CString& path) {
  std::string line;
  for (const char byte : shown(path)) {
    if (isControl(byte)) {
      appendEscaped(line, byte);
    } else {
      line += byte;
    }
  }
  return line;
}

CString given(const std::string& argument) {
  std::u16string text;
  if (appendUtf8(text, argument) != std::string::npos) {
    throw Failure(Exit::usage, "'" + argument + "' is not valid UTF-8");
  }
  return CString(std::move(text));
}

void print(std::string_view data) {
  if (std::fwrite(data.data(), 1, data.size(), stdout) != data.size()) failOutput();
}

void printJson(const Json& json) { print(json.dump(2) + "\n"); }

void replaceOrFail(const std::string& path, std::string_view bytes) {
  const FileResult result = fileSystem().replaceFile(CString::fromUtf8(path), bytes);
  if (!result) {
    throw Failure(Exit::notWritten,
                  path + ": " + shown(result.message()) + "; nothing was changed");
  }
}

void finishOutput() {
  if (std::fflush(stdout) != 0 || std::ferror(stdout) != 0) failOutput();
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

void complain(std::string_view message) {
  // Standard error is the last resort: where it is closed too, the exit code must do.
  try {
    writeErrorOutput(CString::fromUtf8("kpx: " + std::string(message) + "\n"));
  } catch (const std::bad_alloc&) {
    std::fputs("kpx: not enough memory\n", stderr);
  }
}

}  // namespace kpx::tool
