#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <string_view>

#include "kpx/text/CString.h"

namespace kpx::tool {

/// JSON with its members in the order they were added.
using Json = nlohmann::ordered_json;

/// A text for JSON and for the terminal: UTF-8, with lone surrogates replaced, so that what
/// is printed is always valid.
std::string shown(const CString& text);

/// The same on one line: line breaks, tabs and other control characters as escapes.
std::string shownOnOneLine(const CString& text);

/// Writes data to standard output. Raises a Failure when standard output cannot take it.
void print(std::string_view data);
void print(const Json& json);

/// Makes sure that everything printed has arrived.
void finishOutput();

/// Writes "kpx: message" to standard error.
void complain(std::string_view message);

}  // namespace kpx::tool
