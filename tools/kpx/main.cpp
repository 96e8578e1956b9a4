#include <exception>
#include <new>
#include <string>
#include <utility>
#include <variant>
#include <vector>

#include "kpx/platform/CommandLine.h"
#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "kpx/support/texts/TextStore.h"
#include "tools/kpx/CommandLine.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

/// The exit code of a verb that could not write something: nothing was changed, unless something
/// else was before.
Exit notWritten() { return isChangeMade() ? Exit::incomplete : Exit::notWritten; }

/// Ends a verb whose report did not arrive. Nobody is to take that for a change that was not made.
Exit notTold(const std::string& reason, Exit otherwise) {
  complain(reason + (isChangeMade() ? "; what was to be changed is changed" : ""));
  return isChangeMade() ? Exit::notTold : otherwise;
}

Exit run(const Action& action) {
  try {
    // Group texts of settings are looked up when they are created.
    addBuiltInTexts();
    const GuardWatch watch;
    const Exit exit = action();
    finishOutput();
    // What the library has answered with nothing is not to pass for an answer.
    if (exit == Exit::success) watch.passOn();
    return exit == Exit::notWritten ? notWritten() : exit;
  } catch (const OutputFailure& failure) {
    return notTold(failure.what(), Exit::notWritten);
  } catch (const Failure& failure) {
    complain(failure.what());
    return failure.code() == Exit::notWritten ? notWritten() : failure.code();
  } catch (const GuardedException&) {
    return notTold(
        "an unexpected failure on the way, such as missing memory; the error log has its number",
        Exit::input);
  } catch (const std::bad_alloc&) {
    return notTold("not enough memory", Exit::input);
  } catch (const std::exception& error) {
    return notTold(error.what(), Exit::input);
  }
}

constexpr const char* commonFooter =
    "A file named - is standard input, but for archives. Data goes to standard output, all\n"
    "else to standard error. Exit codes: 0 success, equal or clean; 1 the answer is no\n"
    "(differences, findings, key absent); 2 wrong usage; 3 input unreadable or ill-formed;\n"
    "4 could not be written, and nothing was changed; 5 only a part was done, of an archive,\n"
    "an import or several files; 6 all was done, but the report of it could not be written.";

/// Prints what --help or --version asked for.
Exit answer(const std::string& text) {
  try {
    print(text);
    finishOutput();
    return Exit::success;
  } catch (const OutputFailure& failure) {
    return notTold(failure.what(), Exit::notWritten);
  }
}

int runProgram(std::vector<std::string> arguments) {
  CommandLine program(
      "kpx",
      "Reads, changes and checks the configuration, XML and INI files and the registry of the "
      "suite.",
      "kpx " KPX_VERSION, commonFooter);
  addConfigVerbs(program);
  addClassesVerbs(program);
  addIniVerbs(program);
  addNasVerbs(program);
  addRegistryVerbs(program);
  addTextsVerbs(program);
  addTimersVerbs(program);
  addUnzipVerb(program);
  addErrorsVerbs(program);
  addLogVerbs(program);
  addDoctorVerb(program);
  addXmlVerbs(program);
  try {
    const auto chosen = program.parse(std::move(arguments));
    const auto* const action = std::get_if<Action>(&chosen);
    return static_cast<int>(action ? run(*action) : answer(std::get<std::string>(chosen)));
  } catch (const Failure& failure) {
    complain(failure.what());
    return static_cast<int>(failure.code());
  }
}

}  // namespace
}  // namespace kpx::tool

int main(int argc, char** argv) {
  try {
    kpx::prepareStandardStreams();
    return kpx::tool::runProgram(kpx::programArguments(argc, argv));
  } catch (const std::exception& error) {
    kpx::tool::complain(error.what());
    return static_cast<int>(kpx::tool::Exit::input);
  }
}
