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
  incomplete = 5,  // not all of an archive was unpacked: refused, failed, kept, cancelled
};

/// Ends a verb with one message on standard error.
class Failure : public std::runtime_error {
 public:
  Failure(Exit code, const std::string& message) : std::runtime_error(message), code_(code) {}
  Exit code() const noexcept { return code_; }

 private:
  Exit code_;
};

}  // namespace kpx::tool
