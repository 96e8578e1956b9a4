#include "kpx/platform/Environment.h"

#include <windows.h>
// The header above comes first: this one builds on it.
#include <lmcons.h>

#include <memory>
#include <string>

namespace kpx {
bool readEnvironmentVariable(const CString& name, CString& value) {
  std::wstring buffer(256, L'\0');
  for (;;) {
    ::SetLastError(ERROR_SUCCESS);
    const DWORD length =
        ::GetEnvironmentVariableW(name, buffer.data(), static_cast<DWORD>(buffer.size()));
    if (length == 0 && ::GetLastError() != ERROR_SUCCESS) return false;
    if (length < buffer.size()) {
      buffer.resize(length);
      value = CString(buffer);
      return true;
    }
    buffer.resize(length);
  }
}

CString detail::computerName() {
  // 15 units are the system's limit, but not everybody's who stands in for it.
  wchar_t name[256];
  auto length = static_cast<DWORD>(sizeof name / sizeof *name);
  if (!::GetComputerNameW(name, &length)) return {};
  return CString(std::wstring_view(name, length));
}

CString detail::userName() {
  wchar_t name[UNLEN + 1];
  auto length = static_cast<DWORD>(sizeof name / sizeof *name);
  return ::GetUserNameW(name, &length) ? CString(name) : CString();
}

std::uint64_t detail::physicalMemoryBytes() noexcept {
  MEMORYSTATUSEX status = {};
  status.dwLength = sizeof status;
  return ::GlobalMemoryStatusEx(&status) ? status.ullTotalPhys : 0;
}

CString systemMessage(int code) {
  wchar_t* text = nullptr;
  const DWORD length = ::FormatMessageW(
      FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS,
      nullptr, static_cast<DWORD>(code), MAKELANGID(LANG_NEUTRAL, SUBLANG_DEFAULT),
      reinterpret_cast<wchar_t*>(&text), 0, nullptr);
  const std::unique_ptr<wchar_t, decltype(&::LocalFree)> owner(text, &::LocalFree);
  CString message(std::wstring_view(text != nullptr ? text : L"", length));
  message.TrimRight();
  return message;
}

}  // namespace kpx
