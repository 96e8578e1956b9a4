#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <utility>

#include "kpx/text/CString.h"

namespace kpx::tool {

/// JSON with its members in the order they were added.
using Json = nlohmann::ordered_json;

/// A text for JSON and for the terminal: UTF-8, with lone surrogates replaced, so that what
/// is printed is always valid.
std::string shown(const CString& text);

/// The same on one line: line breaks, tabs and other control characters as escapes; a backslash
/// that would look like the beginning of one is doubled, so that the two can be told apart.
std::string shownOnOneLine(const CString& text);
/// The same for paths, whose backslashes are never doubled.
std::string shownPath(const CString& path);

/// An argument of the command line as text. Raises a Failure (wrong usage) if it is no UTF-8.
CString given(const std::string& argument);

/// Writes data to standard output. Raises a Failure when standard output cannot take it.
void print(std::string_view data);
void printJson(const Json& json);

/// Writes a file whole or not at all. Raises a Failure when that is not possible.
void replaceOrFail(const std::string& path, std::string_view bytes);

/// Makes sure that everything printed has arrived.
void finishOutput();

/// Lines and columns, from 1, of ascending offsets into a text; columns count UTF-16 units.
class PlaceCounter {
 public:
  explicit PlaceCounter(const CString& text) : text_(text) {}
  /// Requires an offset not smaller than the one before.
  std::pair<int, int> at(int offset);

 private:
  const CString& text_;
  int counted_ = 0;
  int line_ = 1;
  int lineStart_ = 0;
};

/// Writes "kpx: message" to standard error.
void complain(std::string_view message);

}  // namespace kpx::tool
