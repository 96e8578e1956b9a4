#include "tools/kpx/Usage.h"

#include <algorithm>
#include <CLI/CLI.hpp>
#include <string_view>
#include <vector>

#include "tools/kpx/Nearest.h"

namespace kpx::tool {
namespace {

using Words = std::vector<std::string>;

/// An application of the parser is the program, a group of verbs or a verb; `path` is how a person
/// calls it: "kpx config set".
struct Place {
  const CLI::App& app;
  std::string path;

  bool isGroup() const { return !app.get_subcommands({}).empty(); }
};

bool isOption(std::string_view word) {
  const bool isNumber = word.size() > 1 && word[1] >= '0' && word[1] <= '9';
  return word.size() > 1 && word.front() == '-' && !isNumber;
}

/// The name that is meant: the only one that begins so, or one that is near.
std::string question(const std::string& wanted, const Words& names) {
  const CString text = CString::fromUtf8(wanted);
  constexpr std::size_t leastBeginning = 3;
  const auto beginsSo = [&](const std::string& name) { return name.starts_with(wanted); };
  Nearest nearest(text);
  if (wanted.size() >= leastBeginning && std::ranges::count_if(names, beginsSo) == 1) {
    nearest.offer(CString::fromUtf8(*std::ranges::find_if(names, beginsSo)), text);
  }
  for (const std::string& name : names) nearest.offer(CString::fromUtf8(name));
  return nearest.question();
}

Words optionNames(const CLI::App& app) {
  Words names;
  for (const CLI::Option* const option : app.get_options()) {
    for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
    for (const std::string& name : option->get_snames()) names.push_back("-" + name);
  }
  return names;
}

Words verbNames(const CLI::App& app) {
  Words names;
  for (const CLI::App* const verb : app.get_subcommands({})) names.push_back(verb->get_name());
  return names;
}

/// The arguments of a verb as its usage line has them: "kpx config get [OPTIONS] FILE KEY".
std::string synopsis(const Place& place) {
  std::string line = place.path + " [OPTIONS]";
  for (const CLI::Option* const option : place.app.get_options()) {
    if (!option->get_positional()) continue;
    const std::string name = option->get_name(true, false);
    const bool isOptional = !option->get_required();
    line += (isOptional ? " [" : " ") + name;
    if (option->get_expected_max() > 1) line += "...";
    if (isOptional) line += "]";
  }
  return line;
}

// --- what is left over --------------------------------------------------------------------------

std::string unknownOption(const Place& place, const std::string& word) {
  const std::string name = word.substr(0, word.find('='));
  const std::string sentence = "'" + name + "' is no option of " + place.path;
  std::string meant = question(name, optionNames(place.app));
  if (!meant.empty()) return sentence + meant;
  const bool takesValues = std::ranges::any_of(place.app.get_options(), [](const auto* option) {
    return option->get_positional() && option->get_name(true, false) == "VALUE";
  });
  return sentence + "; " + place.path + " --help names them" +
         (takesValues ? ", and a value that begins with - needs -- before it" : "");
}

std::string unknownVerb(const Place& place, const std::string& word) {
  const std::string meant = question(word, verbNames(place.app));
  return "'" + word + "' is no verb" +
         (meant.empty() ? "; " + place.path + " --help names them" : meant);
}

/// What the parser found no place for, without the marks "--".
Words leftOver(const CLI::App& app) {
  Words words = app.remaining();
  std::erase(words, "--");
  return words;
}

/// The sentence about what is left over at a place on the way to the one that was chosen, or there;
/// empty if nothing is.
std::string surplus(const Place& place, const Place& chosen) {
  const Words words = leftOver(place.app);
  const auto option = std::ranges::find_if(words, isOption);
  const auto other = std::ranges::find_if_not(words, isOption);
  if (chosen.isGroup() && other != words.end()) return unknownVerb(place, *other);
  if (option != words.end()) return unknownOption(place, *option);
  if (other == words.end()) return {};
  return "'" + *other + "' is one argument too many: " + synopsis(chosen);
}

// --- what the parser refused --------------------------------------------------------------------

bool isGiven(const CLI::Option& option) { return option.count() > 0; }

/// What a missing, repeated or forbidden option or argument is told as; empty if it is none of
/// these.
std::string wrongCount(const Place& place) {
  for (const CLI::Option* const option : place.app.get_options()) {
    const std::string name = option->get_name();
    if (option->get_required() && !isGiven(*option)) {
      return name + " is missing: " + synopsis(place);
    }
    if (!isGiven(*option)) continue;
    for (const CLI::Option* const other : option->get_excludes()) {
      if (isGiven(*other)) return name + " and " + other->get_name() + " do not go together";
    }
    if (option->get_expected_max() <= 1 && option->count() > 1) {
      return name + " can be given only once";
    }
  }
  return {};
}

/// The parser's own message without its phrases.
std::string parserProblem(const CLI::ParseError& error) {
  std::string message = error.what();
  const std::string name = message.substr(0, message.find_first_of(": "));
  if (error.get_name() == "ArgumentMismatch") {
    const bool isFlag = message.ends_with("disallowed flag override");
    // The parser leaves the dashes of a flag out.
    return isFlag ? (name.size() == 1 ? "-" : "--") + name + " takes no value"
                  : name + " needs a value behind it";
  }
  return message;
}

/// Appends the help of the verbs below an application, without what stands below each of them.
void appendHelp(std::string& text, const CLI::App& app, const std::string& path,
                const std::string& common) {
  for (const CLI::App* const verb : app.get_subcommands({})) {
    if (verb->get_subcommands({}).empty()) {
      const std::string help = verb->help(path);
      text += "\n" + help.substr(0, help.rfind(common));
    }
    appendHelp(text, *verb, path + " " + verb->get_name(), common);
  }
}

void prepare(CLI::App& app, const std::string& commonFooter) {
  app.allow_extras();
  for (CLI::Option* const option : app.get_options()) {
    if (option->get_expected_max() == 0) option->disable_flag_override();
    // Otherwise such an option takes the files behind its value, too.
    if (!option->get_positional()) option->allow_extra_args(false);
  }
  const std::string footer = app.get_footer();
  if (!footer.ends_with(commonFooter)) app.footer(footer + "\n\n" + commonFooter);
  const std::vector<CLI::App*> verbs = app.get_subcommands({});
  if (!verbs.empty()) app.require_subcommand(0, 1);
  for (CLI::App* const verb : verbs) {
    verb->group("Verbs");
    prepare(*verb, commonFooter);
  }
}

}  // namespace

void prepareVerbs(CLI::App& program) {
  program.get_formatter()->label("SUBCOMMAND", "VERB");
  prepare(program, program.get_footer());
}

std::string usageProblem(const CLI::App& program, const CLI::ParseError* error) {
  std::vector<Place> way{{program, program.get_name()}};
  while (!way.back().app.get_subcommands().empty()) {
    const CLI::App& next = *way.back().app.get_subcommands().front();
    way.push_back({next, way.back().path + " " + next.get_name()});
  }
  const Place& chosen = way.back();
  for (const Place& place : way) {
    if (std::string problem = surplus(place, chosen); !problem.empty()) return problem;
  }
  if (chosen.isGroup()) return "a verb is missing; " + chosen.path + " --help names them";
  if (!error) return {};
  const std::string problem = wrongCount(chosen);
  return problem.empty() ? parserProblem(*error) : problem;
}

std::string helpOfAllVerbs(const CLI::App& program) {
  std::string text =
      program.get_formatter()->make_help(&program, program.get_name(), CLI::AppFormatMode::Normal);
  appendHelp(text, program, program.get_name(), program.get_footer());
  return text;
}

}  // namespace kpx::tool
