#include <algorithm>
#include <CLI/CLI.hpp>
#include <exception>
#include <iostream>
#include <new>
#include <string>
#include <vector>

#include "kpx/platform/CommandLine.h"
#include "kpx/support/TextStore.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/Output.h"
#include "tools/kpx/Verbs.h"

namespace kpx::tool {
namespace {

Exit run(const Action& action) {
  try {
    // Group texts of settings are looked up when they are created.
    addBuiltInTexts();
    const Exit exit = action();
    finishOutput();
    return exit;
  } catch (const Failure& failure) {
    complain(failure.what());
    return failure.code();
  } catch (const std::bad_alloc&) {
    complain("not enough memory");
    return Exit::input;
  }
}

int runProgram(std::vector<std::string> arguments) {
  CLI::App app(
      "Reads, changes and checks the configuration, XML and INI files and the registry of the "
      "suite.",
      "kpx");
  // "/data/job.xml" is a file on every system.
  app.allow_windows_style_options(false);
  app.set_version_flag("--version", std::string("kpx ") + KPX_VERSION);
  requireVerb(app);
  app.footer(
      "A file named - is standard input, but for archives. Data goes to standard output, all\n"
      "else to standard error. Exit codes: 0 success, equal or clean; 1 the answer is no\n"
      "(differences, findings, key absent); 2 wrong usage; 3 input unreadable or ill-formed; 4\n"
      "could not be written and nothing was changed; 5 not all of an archive was unpacked.");
  Action chosen;
  addConfigVerbs(app, chosen);
  addClassesVerbs(app, chosen);
  addIniVerbs(app, chosen);
  addNasVerbs(app, chosen);
  addRegistryVerbs(app, chosen);
  addTextsVerbs(app, chosen);
  addTimersVerbs(app, chosen);
  addUnzipVerb(app, chosen);
  addErrorsVerbs(app, chosen);
  addLogVerbs(app, chosen);
  addDoctorVerb(app, chosen);
  addXmlVerbs(app, chosen);
  try {
    std::ranges::reverse(arguments);  // as the parser takes them
    app.parse(std::move(arguments));
  } catch (const CLI::ParseError& error) {
    if (app.exit(error) != 0) return static_cast<int>(Exit::usage);
    std::cout.flush();  // help and version
    return static_cast<int>(std::cout ? Exit::success : Exit::notWritten);
  }
  return static_cast<int>(run(chosen));
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
