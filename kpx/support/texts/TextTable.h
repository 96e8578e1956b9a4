#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/support/Problems.h"
#include "kpx/support/texts/LanguageFile.h"
#include "kpx/text/CString.h"

namespace kpx {

// Lists of texts as people write them, in UTF-8: a line for each text, with the id, a tab and the
// text. In a text \n, \r, \t and \\ are line feed, carriage return, tab and backslash, and \uXXXX
// is the UTF-16 unit with that hexadecimal number. Blank lines and lines that begin with # do not
// count, but for
//
//     # title<tab>the title
//     # header<tab>the first word of the language file, a decimal number
//
// The built-in texts are such a list.

/// What can be wrong with a line of a list.
enum class TextTableProblemKind : std::uint8_t {
  notUtf8,
  strayTab,  // in a text
  controlCharacter,
  badEscape,
  missingTab,  // between id and text
  badId,
  badHeader,
};

/// A word for programs that stays the same: "not-utf8".
KPX_API std::u16string_view kindName(TextTableProblemKind kind) noexcept;

/// What is wrong with a line of a list.
struct TextTableProblem {
  TextTableProblemKind kind;
  int line = 0;  // from 1
  CString message;
};

/// Reads a list of texts. What is wrong is told line by line; the other lines are read. A text may
/// be empty. The time grows with the length of the list alone.
KPX_API Problems<TextTableProblem> readTextTable(std::string_view bytes, TextList& list,
                                                 std::size_t limit = usualProblemLimit);

/// A list of texts as a file. Reading it gives the same list, whatever the texts hold.
KPX_API std::string textTableBytes(const TextList& list);

/// A text on one line, with the escapes of a list.
KPX_API CString escapedText(const CString& text);

/// The German texts that are built into the library, in their order.
KPX_API TextList builtInTexts();

}  // namespace kpx
