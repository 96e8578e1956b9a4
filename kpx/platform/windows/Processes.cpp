#include "kpx/platform/Processes.h"

#include <windows.h>
// The header above comes first: this one builds on it.
#include <tlhelp32.h>

#include <algorithm>

#include "kpx/platform/windows/SystemCall.h"
#include "kpx/text/CaseFold.h"

namespace kpx {

using detail::Handle;

std::vector<ProcessInfo> detail::systemProcesses(const CString& name) {
  std::vector<ProcessInfo> found;
  const Handle snapshot(::CreateToolhelp32Snapshot(TH32CS_SNAPPROCESS, 0));
  if (!snapshot.isOpen()) return found;
  const std::u16string_view wanted = detail::withoutProgramEnding(name);
  PROCESSENTRY32W entry = {};
  entry.dwSize = sizeof entry;
  for (BOOL more = ::Process32FirstW(snapshot.get(), &entry); more;
       more = ::Process32NextW(snapshot.get(), &entry)) {
    if (entry.th32ProcessID == ::GetCurrentProcessId()) continue;
    ProcessInfo process{entry.th32ProcessID, CString(entry.szExeFile)};
    if (detail::compareTextNoCase(detail::withoutProgramEnding(process.name), wanted) == 0) {
      found.push_back(std::move(process));
    }
  }
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
