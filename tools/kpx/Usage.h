#pragma once

#include <string>

namespace CLI {
class App;
class ParseError;
}  // namespace CLI

namespace kpx::tool {

/// To be called when all verbs are there: lets the parser hand over what no verb has, so that
/// `usageProblem` can tell of it, and gives each verb the program's footer below its own.
void prepareVerbs(CLI::App& program);

/// What is wrong with a command line that was parsed, as one sentence; empty if nothing is. `error`
/// is what the parser threw, nullptr if it did not. Unknown options and surplus arguments come
/// first, since everything else may follow from them.
std::string usageProblem(const CLI::App& program, const CLI::ParseError* error);

/// The help of all verbs, one after the other.
std::string helpOfAllVerbs(const CLI::App& program);

}  // namespace kpx::tool
