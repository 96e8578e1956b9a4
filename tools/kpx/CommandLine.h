#pragma once

#include <cstdint>
#include <functional>
#include <initializer_list>
#include <limits>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "tools/kpx/Exit.h"

namespace CLI {
class App;
}  // namespace CLI

namespace kpx::tool {

// The command line as verbs declare it:
//
//   VerbGroup ini = program.group("ini", "Read, change and check INI files");
//   ini.verb("get", "Print the value of a key", &get)
//       .needs("FILE", &Arguments::file, "INI file, or - for standard input")
//       .needs("KEY", &Arguments::key, "Key")
//       .takes("--json", &Arguments::json, "Print JSON");
//
// Names that begin with a dash are options ("-o,--output"), others are arguments in this order. The
// member tells how often a name may be given and whether a value stands behind it: a `bool` becomes
// true, a vector takes several, an `std::optional` tells whether it was given. A number is the
// default, which help shows unless it is 0.

// --- values -------------------------------------------------------------------------------------

/// Where the values of an option or argument go.
using Target =
    std::variant<bool*, std::string*, std::optional<std::string>*, std::vector<std::string>*,
                 std::int32_t*, std::vector<std::int32_t>*, double*>;

/// Whole numbers of a range, in decimal digits.
struct WholeNumbers {
  std::int32_t least = std::numeric_limits<std::int32_t>::min();
  std::int32_t most = std::numeric_limits<std::int32_t>::max();
};
/// Seconds, from 0.
struct SecondsUpTo {
  int most = 0;
};
/// Some words only.
struct OneOf {
  std::initializer_list<const char*> words;
  bool inHelp = true;  // false: the verb's own help names them
};
/// Which values an option or argument takes.
using Allowed = std::variant<std::monostate, WholeNumbers, SecondsUpTo, OneOf>;

// --- verbs --------------------------------------------------------------------------------------

/// The options and arguments of a verb, whoever declares them.
class OptionList {
 public:
  explicit OptionList(CLI::App& app) : app_(&app) {}

  /// Adds one that may be left out.
  OptionList& takes(const char* names, Target target, const char* help,
                    const Allowed& allowed = {});
  /// Adds one that has to be there.
  OptionList& needs(const char* names, Target target, const char* help,
                    const Allowed& allowed = {});
  /// Refuses an option together with any of the others.
  OptionList& excludes(const char* name, std::initializer_list<const char*> others);
  /// What its help says at the end.
  OptionList& footer(const std::string& text);

 private:
  CLI::App* app_;
};

/// A verb that fills the members of its `Arguments`.
template <class Arguments>
class Verb {
 public:
  Verb(OptionList options, Arguments& arguments) : options_(options), arguments_(&arguments) {}

  template <class Member>
  Verb& takes(const char* names, Member Arguments::*member, const char* help,
              const Allowed& allowed = {}) {
    options_.takes(names, &(arguments_->*member), help, allowed);
    return *this;
  }
  template <class Member>
  Verb& needs(const char* names, Member Arguments::*member, const char* help,
              const Allowed& allowed = {}) {
    options_.needs(names, &(arguments_->*member), help, allowed);
    return *this;
  }
  /// Adds options that several verbs have, or that are declared elsewhere.
  template <class Member>
  Verb& with(Member Arguments::*member, void (*addOptions)(OptionList&, Member&)) {
    addOptions(options_, arguments_->*member);
    return *this;
  }
  Verb& excludes(const char* name, std::initializer_list<const char*> others) {
    options_.excludes(name, others);
    return *this;
  }
  Verb& footer(const std::string& text) {
    options_.footer(text);
    return *this;
  }

 private:
  OptionList options_;
  Arguments* arguments_;
};

/// What the command line asks for, with its arguments bound.
using Action = std::function<Exit()>;

/// Verbs under a common name, or those of the program.
class VerbGroup {
 public:
  VerbGroup group(const char* name, const char* description);
  /// What the help of the group and of its verbs says at the end; to be called before they come.
  void footer(const std::string& text);

  template <class Arguments>
  Verb<Arguments> verb(const char* name, const char* description, Exit (*run)(const Arguments&)) {
    auto arguments = std::make_shared<Arguments>();
    Arguments& filled = *arguments;
    return {addVerb(name, description, [arguments, run] { return run(*arguments); }), filled};
  }

 protected:
  VerbGroup(CLI::App* app, Action* chosen) : app_(app), chosen_(chosen) {}
  CLI::App& app() const noexcept { return *app_; }

 private:
  OptionList addVerb(const char* name, const char* description, Action action);

  CLI::App* app_;
  Action* chosen_;
};

// --- the program --------------------------------------------------------------------------------

/// All verbs of the program, and the reading of its command line.
class CommandLine : public VerbGroup {
 public:
  /// The footer is common to all verbs. `version` is what --version prints.
  CommandLine(const char* name, const char* description, const char* version, const char* footer);
  ~CommandLine();
  CommandLine(const CommandLine&) = delete;
  CommandLine& operator=(const CommandLine&) = delete;

  /// The verb that the arguments choose, or the text of the help or version that they ask for.
  /// Raises a Failure (wrong usage) for anything that no verb takes. Can be called once.
  std::variant<Action, std::string> parse(std::vector<std::string> arguments);

 private:
  struct State;
  explicit CommandLine(std::unique_ptr<State> state);

  std::unique_ptr<State> state_;
};

}  // namespace kpx::tool
