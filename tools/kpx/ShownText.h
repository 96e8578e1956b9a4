#pragma once

#include <string>
#include <string_view>

#include "kpx/text/CString.h"

namespace kpx::tool {

// Files hold texts of anybody, and a terminal takes some characters for commands: to clear the
// screen, to write over a line, to turn the direction of reading. Such characters stand as escapes
// in whatever a person reads: "\n", "\t", or "\x1b" for each byte of their UTF-8.

/// A text as data: UTF-8, with lone surrogates replaced, so that what is printed is always valid.
std::string asUtf8(const CString& text);

/// A text in a report, on one line; a backslash that would look like the beginning of an escape is
/// doubled, so that the two can be told apart.
std::string shownOnOneLine(const CString& text);
/// The same for paths, whose backslashes are never doubled.
std::string shownPath(const CString& path);
/// A name of a file's content in a message: the same as a path, but cut when it is too long for a
/// sentence.
std::string shownName(const CString& name);

/// A sentence with texts in it that nobody has looked at, on one line, and short enough for a
/// person: of a very long one the middle is left out.
std::string onOneLine(std::string_view sentence);
/// Lines as a terminal may have them: line ends and tabs stay. Bytes that are no text become
/// U+FFFD.
std::string forTerminal(std::string_view lines);
/// JSON that says the same without such characters, of which it forbids only some.
std::string harmlessJson(std::string_view json);

/// An argument of the command line as text. Raises a Failure (wrong usage) if it is no UTF-8.
CString fromArgument(const std::string& argument);

}  // namespace kpx::tool
