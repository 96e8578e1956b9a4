#pragma once

#include <functional>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "tools/kpx/Exit.h"
#include "tools/kpx/Input.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {

// Every answer in JSON is an object that begins with "form", the version of its shape, and names
// its file, or has one object for each file in "files". docs/json.md describes them all.

/// An answer that is about no file.
Json newAnswer();
/// One about a file, named as messages name it.
Json answerAbout(const std::string& file);

/// A word of the library: the kind of a problem, for example.
std::string wordOf(std::u16string_view word);
/// "kind", "line", "column" and "message" of a problem, and "warning" if it is one.
Json jsonOf(const ProblemLine& problem);

/// Fills the object of one file, which has its name already. May name it otherwise.
using FileAnswer = std::function<Exit(const std::string& file, Json& answer)>;

/// The answer about several files. Each is looked at; one that ends with a Failure, which is told,
/// has its message as "error". The worst exit code counts.
Exit answerForEach(const std::vector<std::string>& files, Json& answer, const FileAnswer& body);

}  // namespace kpx::tool
