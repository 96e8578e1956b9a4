#pragma once

#include <stdexcept>
#include <string>

namespace kpx::tool {

/// What every verb answers to the shell.
enum class Exit : int {
  success = 0,     // done, equal, clean
  no = 1,          // the answer is no: differences, findings, key absent
  usage = 2,       // the command line is wrong
  input = 3,       // an input is unreadable or ill-formed
  notWritten = 4,  // the result could not be written; nothing was changed
  incomplete = 5,  // only a part was done: of an archive, of an import, of several files
  notTold = 6,     // everything was done, but standard output could not take the report of it
};

/// Ends a verb with one message on standard error.
class Failure : public std::runtime_error {
 public:
  Failure(Exit code, const std::string& message) : std::runtime_error(message), code_(code) {}
  Exit code() const noexcept { return code_; }

 private:
  Exit code_;
};

/// Ends a verb because standard output cannot take what it says. No Failure, which verbs with
/// several files tell and go on after.
class OutputFailure : public std::runtime_error {
 public:
  OutputFailure() : std::runtime_error("standard output cannot be written") {}
};

}  // namespace kpx::tool
