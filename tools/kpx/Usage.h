#pragma once

#include <CLI/CLI.hpp>
#include <cstdint>
#include <initializer_list>
#include <string>

namespace kpx::tool {

// --- values of options and arguments ------------------------------------------------------------

/// Lets an option take whole numbers of a range only, in decimal digits.
void takesWholeNumber(CLI::Option& option, std::int32_t least, std::int32_t most);
/// Lets an option take some words only.
CLI::Validator oneOf(std::initializer_list<const char*> words);

// --- the whole command line ---------------------------------------------------------------------

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
