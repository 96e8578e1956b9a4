#include "tools/kpx/Verbs.h"

#include <CLI/CLI.hpp>

namespace kpx::tool {

void requireVerb(CLI::App& group) {
  // CLI11's own requirement says "A subcommand is required" to a mistyped one, too.
  group.require_subcommand(0, 1);
  group.allow_extras();
  group.callback([&group] {
    if (!group.get_subcommands().empty()) return;
    const std::vector<std::string> given = group.remaining();
    throw CLI::ParseError(given.empty() ? "a verb is missing; --help names them"
                                        : "'" + given.front() + "' is no verb; --help names them",
                          CLI::ExitCodes::RequiredError);
  });
}

}  // namespace kpx::tool
