#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kpx/text/CString.h"

namespace kpx {

/// Fails unless the bytes are those of the golden file, and shows where they begin to differ.
/// Where the environment variable KPX_GOLDEN_WRITE names a folder, writes the file there instead
/// and skips the test, since nothing was compared.
void expectGolden(const std::string& file, std::string_view bytes);

/// Lines of a golden file.
class GoldenLines {
 public:
  /// A line as the print family formats it.
  template <class... Args>
  void add(std::u16string_view format, const Args&... args) {
    append(format, args...);
    text_ += u'\n';
  }
  /// A part of a line.
  template <class... Args>
  void append(std::u16string_view format, const Args&... args) {
    text_.AppendFormat(format, args...);
  }
  /// The lines as UTF-8.
  std::string bytes() const { return text_.utf8(); }

 private:
  CString text_;
};

/// Sums up what is too much for a golden file.
class GoldenSum {
 public:
  /// Each unit as two bytes, and an end, so that no unit can wander to the next text.
  void add(const CString& text);
  std::uint32_t crc() const;

 private:
  std::string bytes_;
};

std::uint32_t crcOf(std::string_view bytes);

}  // namespace kpx
