#include "kpx/platform/Processes.h"

#include <windows.h>
// The header above comes first: this one builds on it.
#include <tlhelp32.h>

#include <algorithm>

#include "kpx/text/CaseFold.h"

namespace kpx {

std::vector<ProcessInfo> findProcesses(const CString& name) {
  std::vector<ProcessInfo> found;
  const HANDLE snapshot = ::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0);
  if (snapshot == INVALID_HANDLE_VALUE) return found;
  const std::u16string_view wanted = detail::withoutProgramEnding(name);
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL more = ::Process32FirstW(snapshot, &entry); more;
       more = ::Process32NextW(snapshot, &entry)) {
    if (entry.th32ProcessID == ::GetCurrentProcessId()) continue;
    ProcessInfo process{entry.th32ProcessID, CString(entry.szExeFile)};
    if (compareTextNoCase(detail::withoutProgramEnding(process.name), wanted) == 0) {
      found.push_back(std::move(process));
    }
  }
  ::CloseHandle(snapshot);
  std::sort(found.begin(), found.end(),
            [](const ProcessInfo& a, const ProcessInfo& b) { return a.id < b.id; });
  return found;
}

bool endProcess(std::uint32_t id) noexcept {
  if (id <= 1 || id == ::GetCurrentProcessId()) return false;
  const HANDLE process = ::OpenProcess(PROCESS_TERMINATE, FALSE, id);
  if (!process) return false;
  const bool ended = ::TerminateProcess(process, 1) != 0;
  ::CloseHandle(process);
  return ended;
}

}  // namespace kpx
