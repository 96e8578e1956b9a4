#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kpx/text/CString.h"

namespace kpx::detail {

/// What a line of an INI file is.
enum class IniLineKind : unsigned char {
  blank,    // nothing but blanks
  comment,  // begins with ";"
  section,  // a header: [name]
  key,      // key=value
  other,    // no meaning
};

/// One line, and where in it the name and the value stand.
struct IniLine {
  IniLineKind kind = IniLineKind::blank;
  std::u16string_view name;   // of the key, trimmed, perhaps empty, or of the section, as it stands
  std::u16string_view value;  // as it stands
};

/// Lines are read in pieces of at most so many units; what is longer is read as several lines.
inline constexpr std::size_t longestIniLine = 4000;

/// Cuts a text into its lines.
class IniLineReader {
 public:
  explicit IniLineReader(std::u16string_view text) noexcept : rest_(text) {}

  /// The next line or piece of one, with its line end; false behind the last.
  bool next(std::u16string_view& line) noexcept;

 private:
  std::u16string_view rest_;
};

/// The line without its line end (line feed, or carriage return and line feed).
std::u16string_view withoutLineEnd(std::u16string_view line) noexcept;

/// Understands a line without line end.
IniLine parseIniLine(std::u16string_view line) noexcept;

/// The offset of the first delimiter that stands in no pair of double quotes, or npos.
std::size_t findOutsideQuotes(std::u16string_view line, char16_t delimiter) noexcept;

/// The name in a section header: behind blanks, between "[" and the next "]". False when the
/// line is no header.
bool sectionName(std::u16string_view line, std::u16string_view& name) noexcept;

/// The value as it is handed out: each backslash with "n" behind it, but for one at the very
/// beginning, becomes a blank and a line feed.
void decodeIniValue(std::u16string_view stored, CString& value);

/// The value as it is stored, on one line: a line break (with the blank before it that handing
/// out has put there) becomes a backslash and "n". A value that begins with a line break gets a
/// blank in front, because at the beginning the two characters stand for themselves.
std::u16string encodeIniValue(std::u16string_view value);

}  // namespace kpx::detail
