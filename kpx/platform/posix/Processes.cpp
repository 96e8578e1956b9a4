#include "kpx/platform/Processes.h"

#include <dirent.h>
#include <signal.h>
#include <unistd.h>

#include <algorithm>
#include <charconv>
#include <climits>
#include <memory>
#include <string>
#include <string_view>

#include "kpx/text/CaseFold.h"

namespace kpx {
namespace {

/// The file name of a process's program; empty when this user may not see it.
CString programName(std::string_view id) {
  const std::string link = "/proc/" + std::string(id) + "/exe";
  char path[PATH_MAX];
  const ssize_t length = ::readlink(link.c_str(), path, sizeof path);
  if (length <= 0) return {};
  std::string_view name(path, static_cast<std::size_t>(length));
  name.remove_prefix(name.rfind('/') + 1);
  // The system's mark of a program file that was replaced while it runs.
  constexpr std::string_view deleted = " (deleted)";
  if (name.ends_with(deleted)) name.remove_suffix(deleted.size());
  return CString::fromUtf8(name);
}

}  // namespace

std::vector<ProcessInfo> detail::systemProcesses(const CString& name) {
  std::vector<ProcessInfo> found;
  const std::unique_ptr<DIR, int (*)(DIR*)> folder(::opendir("/proc"), &::closedir);
  if (folder == nullptr) return found;
  const std::u16string_view wanted = detail::withoutProgramEnding(name);
  const auto self = static_cast<std::uint32_t>(::getpid());
  while (const dirent* const entry = ::readdir(folder.get())) {
    const std::string_view text(entry->d_name);
    ProcessInfo process;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), process.id);
    if (error != std::errc() || end != text.data() + text.size() || process.id == self) continue;
    process.name = programName(text);
    if (process.name.IsEmpty()) continue;
    if (detail::compareTextNoCase(detail::withoutProgramEnding(process.name), wanted) == 0) {
      found.push_back(std::move(process));
    }
  }
  std::sort(found.begin(), found.end(),
            [](const ProcessInfo& a, const ProcessInfo& b) { return a.id < b.id; });
  return found;
}

bool endProcess(std::uint32_t id) noexcept {
  // Numbers below 1 as the system counts them stand for groups of processes.
  if (id <= 1 || id > INT_MAX || static_cast<pid_t>(id) == ::getpid()) return false;
  return ::kill(static_cast<pid_t>(id), SIGTERM) == 0;
}

}  // namespace kpx
