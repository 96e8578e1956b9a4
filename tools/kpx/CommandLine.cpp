#include "tools/kpx/CommandLine.h"

#include <algorithm>
#include <charconv>
#include <CLI/CLI.hpp>
#include <string_view>
#include <type_traits>

#include "tools/kpx/ShownText.h"
#include "tools/kpx/Usage.h"

namespace kpx::tool {
namespace {

// --- values -------------------------------------------------------------------------------------

void limit(CLI::Option&, std::monostate) {}

void limit(CLI::Option& option, const WholeNumbers& range) {
  const auto check = [range](std::string& text) -> std::string {
    std::int32_t number = 0;
    const char* const end = text.data() + text.size();
    const auto read = std::from_chars(text.data(), end, number);
    if (read.ec != std::errc() || read.ptr != end || number < range.least || number > range.most) {
      return "'" + text + "' is no whole number from " + std::to_string(range.least) + " to " +
             std::to_string(range.most);
    }
    text = std::to_string(number);  // the parser would take 010 for 8
    return {};
  };
  option.transform(CLI::Validator(check, ""));
}

void limit(CLI::Option& option, const SecondsUpTo& range) {
  option.check(CLI::Range(0, range.most));
}

void limit(CLI::Option& option, const OneOf& allowed) {
  const std::vector<std::string> words(allowed.words.begin(), allowed.words.end());
  std::string list;
  for (const std::string& word : words) list += (list.empty() ? "" : ", ") + word;
  const auto check = [words, list](const std::string& text) {
    return std::ranges::find(words, text) != words.end() ? std::string()
                                                         : "'" + text + "' is none of " + list;
  };
  option.check(CLI::Validator(check, allowed.inHelp ? "{" + list + "}" : ""));
}

CLI::Option& bind(CLI::App& app, const char* names, const Target& target, const char* help) {
  const auto add = [&](auto* to) -> CLI::Option* {
    using Value = std::remove_pointer_t<decltype(to)>;
    if constexpr (std::is_same_v<Value, bool>) {
      return app.add_flag(names, *to, help);
    } else if constexpr (std::is_same_v<Value, std::optional<std::string>>) {
      // The parser would take an empty text for none.
      return app.add_option_function<std::string>(
          names, [to](const std::string& text) { *to = text; }, help);
    } else {
      CLI::Option* const option = app.add_option(names, *to, help);
      if constexpr (std::is_arithmetic_v<Value>) {
        if (*to != 0) option->capture_default_str();
      }
      return option;
    }
  };
  return *std::visit(add, target);
}

CLI::Option& addOption(CLI::App& app, const char* names, const Target& target, const char* help,
                       const Allowed& allowed) {
  CLI::Option& option = bind(app, names, target, help);
  std::visit([&](const auto& values) { limit(option, values); }, allowed);
  return option;
}

}  // namespace

OptionList& OptionList::takes(const char* names, Target target, const char* help,
                              const Allowed& allowed) {
  addOption(*app_, names, target, help, allowed);
  return *this;
}

OptionList& OptionList::needs(const char* names, Target target, const char* help,
                              const Allowed& allowed) {
  addOption(*app_, names, target, help, allowed).required();
  return *this;
}

OptionList& OptionList::excludes(const char* name, std::initializer_list<const char*> others) {
  for (const char* const other : others) {
    app_->get_option(name)->excludes(app_->get_option(other));
  }
  return *this;
}

OptionList& OptionList::footer(const std::string& text) {
  app_->footer(text);
  return *this;
}

// --- verbs --------------------------------------------------------------------------------------

VerbGroup VerbGroup::group(const char* name, const char* description) {
  return {app_->add_subcommand(name, description), chosen_};
}

void VerbGroup::footer(const std::string& text) { app_->footer(text); }

OptionList VerbGroup::addVerb(const char* name, const char* description, Action action) {
  CLI::App* const command = app_->add_subcommand(name, description);
  command->callback([chosen = chosen_, action = std::move(action)] { *chosen = action; });
  return OptionList(*command);
}

// --- the program --------------------------------------------------------------------------------

struct CommandLine::State {
  State(const char* name, const char* description) : app(description, name) {}

  CLI::App app;
  Action chosen;
};

CommandLine::CommandLine(const char* name, const char* description, const char* version,
                         const char* footer)
    : CommandLine(std::make_unique<State>(name, description)) {
  CLI::App& app = state_->app;
  // "/data/job.xml" is a file on every system.
  app.allow_windows_style_options(false);
  app.set_help_flag("-h,--help", "Print this help and exit");
  app.set_version_flag("--version", version, "Print the version and exit");
  app.footer(footer);
}

CommandLine::CommandLine(std::unique_ptr<State> state)
    : VerbGroup(&state->app, &state->chosen), state_(std::move(state)) {}

CommandLine::~CommandLine() = default;

std::variant<Action, std::string> CommandLine::parse(std::vector<std::string> arguments) {
  CLI::App& app = state_->app;
  app.set_help_all_flag("--help-all", "Print the help of all verbs and exit");
  prepareVerbs(app);
  for (const std::string& argument : arguments) fromArgument(argument);
  const auto end = std::ranges::find(arguments, "--");
  // The parser would pass over it.
  if (std::find(arguments.begin(), end, "++") != end) {
    throw Failure(Exit::usage, "'++' needs -- before it");
  }
  std::ranges::reverse(arguments);  // as the parser takes them
  std::string problem;
  try {
    app.parse(std::move(arguments));
    problem = usageProblem(app, nullptr);
  } catch (const CLI::CallForVersion& version) {
    return std::string(version.what()) + "\n";
  } catch (const CLI::CallForAllHelp&) {
    return helpOfAllVerbs(app);
  } catch (const CLI::CallForHelp&) {
    return app.help();
  } catch (const CLI::ParseError& error) {
    problem = usageProblem(app, &error);
  }
  if (!problem.empty()) throw Failure(Exit::usage, problem);
  return state_->chosen;
}

}  // namespace kpx::tool
