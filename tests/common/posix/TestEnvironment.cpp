#include "tests/common/TestEnvironment.h"

#include <cstdlib>
#include <filesystem>
#include <optional>
#include <string>

#include "tests/common/TemporaryFolder.h"

namespace kpx {

void setVariable(std::string_view name, std::u16string_view value) {
  ::setenv(std::string(name).c_str(), std::filesystem::path(value).c_str(), 1);
}

void removeVariable(std::string_view name) { ::unsetenv(std::string(name).c_str()); }

struct ZoneScope::State {
  static void set(const char* zone) {
    if (zone) {
      ::setenv("TZ", zone, 1);
    } else {
      ::unsetenv("TZ");
    }
  }

  std::optional<std::string> before;
};

ZoneScope::ZoneScope(const char* zone) : state_(std::make_unique<State>()) {
  if (const char* before = std::getenv("TZ")) state_->before = before;
  State::set(zone);
}

ZoneScope::~ZoneScope() { State::set(state_->before ? state_->before->c_str() : nullptr); }

bool ZoneScope::isSet() const { return true; }

struct TemporaryRegistry::State {
  TemporaryFolder folder;
};

TemporaryRegistry::TemporaryRegistry() : state_(std::make_unique<State>()) {
  setVariable("KPX_USER_REGISTRY", (state_->folder.path() / "user.sqlite").u16string());
  setVariable("KPX_MACHINE_REGISTRY", (state_->folder.path() / "machine.sqlite").u16string());
}

TemporaryRegistry::~TemporaryRegistry() {
  removeVariable("KPX_USER_REGISTRY");
  removeVariable("KPX_MACHINE_REGISTRY");
}

}  // namespace kpx
