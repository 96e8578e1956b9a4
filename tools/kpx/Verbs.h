#pragma once

#include <CLI/CLI.hpp>
#include <functional>
#include <memory>
#include <utility>

#include "tools/kpx/Exit.h"

namespace kpx::tool {

/// The verb that the command line chose, with its arguments bound.
using Action = std::function<Exit()>;

/// Adds a verb to its group. Answers it and the arguments that its options are to fill.
template <class Arguments>
std::pair<CLI::App*, std::shared_ptr<Arguments>> addVerb(CLI::App& group, Action& chosen,
                                                         const char* name, const char* description,
                                                         Exit (*verb)(const Arguments&)) {
  auto arguments = std::make_shared<Arguments>();
  CLI::App* const command = group.add_subcommand(name, description);
  command->callback(
      [&chosen, arguments, verb] { chosen = [arguments, verb] { return verb(*arguments); }; });
  return {command, std::move(arguments)};
}

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
