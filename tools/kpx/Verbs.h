#pragma once

#include <CLI/CLI.hpp>
#include <functional>

#include "tools/kpx/Exit.h"

namespace kpx::tool {

/// The verb that the command line chose, with its arguments bound.
using Action = std::function<Exit()>;

/// Makes a group of verbs demand one of them, and name one that it does not have.
void requireVerb(CLI::App& group);

// Each adds one family of verbs to the application; parsing the command line fills the action.
void addConfigVerbs(CLI::App& app, Action& chosen);
void addClassesVerbs(CLI::App& app, Action& chosen);
void addIniVerbs(CLI::App& app, Action& chosen);
void addNasVerbs(CLI::App& app, Action& chosen);
void addRegistryVerbs(CLI::App& app, Action& chosen);
void addTextsVerbs(CLI::App& app, Action& chosen);
void addTimersVerbs(CLI::App& app, Action& chosen);
void addUnzipVerb(CLI::App& app, Action& chosen);
void addErrorsVerbs(CLI::App& app, Action& chosen);
void addLogVerbs(CLI::App& app, Action& chosen);
void addDoctorVerb(CLI::App& app, Action& chosen);
void addXmlVerbs(CLI::App& app, Action& chosen);

}  // namespace kpx::tool
