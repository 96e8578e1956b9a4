#pragma once

#include <cstdlib>
#include <string>

#include "tests/common/TemporaryFolder.h"

namespace kpx {

/// An empty registry for both roots, whose files are user.sqlite and machine.sqlite in a folder of
/// its own, for one test and the processes that it starts.
class TemporaryRegistry {
 public:
  TemporaryRegistry() {
    set("KPX_USER_REGISTRY", "user.sqlite");
    set("KPX_MACHINE_REGISTRY", "machine.sqlite");
  }
  ~TemporaryRegistry() {
    ::unsetenv("KPX_USER_REGISTRY");
    ::unsetenv("KPX_MACHINE_REGISTRY");
  }
  TemporaryRegistry(const TemporaryRegistry&) = delete;
  TemporaryRegistry& operator=(const TemporaryRegistry&) = delete;

  const TemporaryFolder& folder() const { return folder_; }
  std::string userFile() const { return (folder_.path() / "user.sqlite").string(); }

 private:
  void set(const char* variable, const char* file) const {
    ::setenv(variable, (folder_.path() / file).c_str(), 1);
  }

  TemporaryFolder folder_;
};

}  // namespace kpx
