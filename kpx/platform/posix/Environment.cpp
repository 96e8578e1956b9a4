#include "kpx/platform/Environment.h"

#include <pwd.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <system_error>
#include <vector>

namespace kpx {

bool readEnvironmentVariable(const CString& name, CString& value) {
  const char* const found = std::getenv(name.utf8().c_str());
  if (found == nullptr) return false;
  value = CString::fromUtf8(found);
  return true;
}

CString detail::computerName() {
  char name[256] = {};
  return ::gethostname(name, sizeof name - 1) == 0 ? CString::fromUtf8(name) : CString();
}

CString detail::userName() {
  passwd entry = {};
  passwd* found = nullptr;
  std::vector<char> buffer(16384);
  const int code = ::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found);
  if (code == 0 && found != nullptr) return CString::fromUtf8(found->pw_name);
  return environmentVariable(u"USER");
}

std::uint64_t detail::physicalMemoryBytes() noexcept {
  const long pages = ::sysconf(_SC_PHYS_PAGES);
  const long pageSize = ::sysconf(_SC_PAGESIZE);
  if (pages <= 0 || pageSize <= 0) return 0;
  return static_cast<std::uint64_t>(pages) * static_cast<std::uint64_t>(pageSize);
}

CString systemMessage(int code) { return CString::fromUtf8(std::generic_category().message(code)); }

}  // namespace kpx
