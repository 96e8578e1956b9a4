#pragma once

#include <sys/wait.h>
#include <unistd.h>

namespace kpx {

/// Runs the body in a process of its own, which ends with what it answers.
template <class Body>
pid_t inChild(Body&& body) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(body());
  return child;
}

/// Waits for the process and answers what it ended with; -1 if it did not end by itself.
inline int exitOf(pid_t child) {
  int status = 0;
  if (::waitpid(child, &status, 0) != child) return -1;
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace kpx
