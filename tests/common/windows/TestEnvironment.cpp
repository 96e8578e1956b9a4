#include "tests/common/TestEnvironment.h"

#include <windows.h>

#include <filesystem>
#include <stdexcept>
#include <string>

namespace kpx {
namespace {

void changeVariable(std::string_view name, const wchar_t* value) {
  const std::filesystem::path wideName(std::u8string(name.begin(), name.end()));
  ::SetEnvironmentVariableW(wideName.c_str(), value);
}

}  // namespace

void setVariable(std::string_view name, std::u16string_view value) {
  changeVariable(name, std::filesystem::path(value).c_str());
}

void removeVariable(std::string_view name) { changeVariable(name, nullptr); }

struct ZoneScope::State {
  std::string zone;
};

ZoneScope::ZoneScope(const char* zone) : state_(std::make_unique<State>(State{zone ? zone : ""})) {}

ZoneScope::~ZoneScope() = default;

bool ZoneScope::isSet() const {
  DYNAMIC_TIME_ZONE_INFORMATION now{};
  if (::GetDynamicTimeZoneInformation(&now) == TIME_ZONE_ID_INVALID) return false;
  const std::wstring key = now.TimeZoneKeyName;
  return (state_->zone == "Europe/Berlin" && key == L"W. Europe Standard Time") ||
         (state_->zone == "UTC" && key == L"UTC");
}

struct TemporaryRegistry::State {
  /// Lets the process see a key of its own in place of a root.
  class Root {
   public:
    Root(HKEY root, const std::wstring& path) : root_(root) {
      HKEY key = nullptr;
      if (::RegCreateKeyExW(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr,
                            &key, nullptr) != ERROR_SUCCESS) {
        throw std::runtime_error("no registry for the test");
      }
      key_ = key;
    }
    ~Root() {
      ::RegOverridePredefKey(root_, nullptr);
      ::RegCloseKey(key_);
    }
    Root(const Root&) = delete;
    Root& operator=(const Root&) = delete;

    void show() const { ::RegOverridePredefKey(root_, key_); }

   private:
    HKEY root_;
    HKEY key_ = nullptr;
  };

  static std::wstring place() {
    static unsigned count = 0;
    return L"Software\\KpxTests\\" + std::to_wstring(::GetCurrentProcessId()) + L"-" +
           std::to_wstring(count++);
  }

  std::wstring path = place();
  Root machine{HKEY_LOCAL_MACHINE, path + L"\\machine"};
  Root user{HKEY_CURRENT_USER, path + L"\\user"};
};

TemporaryRegistry::TemporaryRegistry() : state_(std::make_unique<State>()) {
  state_->machine.show();
  state_->user.show();
}

TemporaryRegistry::~TemporaryRegistry() {
  const std::wstring path = state_->path;
  state_.reset();
  ::RegDeleteTreeW(HKEY_CURRENT_USER, path.c_str());
}

}  // namespace kpx
