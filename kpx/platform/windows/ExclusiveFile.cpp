#include "kpx/platform/ExclusiveFile.h"

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <string_view>

#include "kpx/platform/windows/SystemCall.h"

namespace kpx {
namespace {

HANDLE handleOf(std::intptr_t handle) noexcept { return reinterpret_cast<HANDLE>(handle); }

constexpr std::size_t maxName = 4096;

/// The path as the system takes it, with its end; nullptr when it is none. Long ones are made
/// complete and marked, as `SystemPath` does it, but without memory of their own.
const wchar_t* systemName(std::u16string_view path, wchar_t (&plain)[maxName],
                          wchar_t (&marked)[maxName]) noexcept {
  if (path.empty() || path.size() >= maxName || path.find(u'\0') != path.npos) return nullptr;
  std::copy(path.begin(), path.end(), plain);
  plain[path.size()] = L'\0';
  constexpr std::wstring_view mark = LR"(\\?\)";
  constexpr std::wstring_view serverMark = LR"(\\?\UNC)";
  // The mark of servers takes the place of the first of their two backslashes.
  constexpr std::size_t room = serverMark.size() - 1;
  const DWORD length =
      ::GetFullPathNameW(plain, static_cast<DWORD>(maxName - room), marked + room, nullptr);
  if (length < MAX_PATH || length >= maxName - room) return plain;
  const std::wstring_view complete(marked + room, length);
  if (complete.starts_with(LR"(\\?\)") || complete.starts_with(LR"(\\.\)")) return plain;
  if (complete.starts_with(LR"(\\)")) {
    std::copy(serverMark.begin(), serverMark.end(), marked);
    return marked;
  }
  std::copy(mark.begin(), mark.end(), marked + room - mark.size());
  return marked + room - mark.size();
}

}  // namespace

FileResult ExclusiveFile::open(std::u16string_view path, Mode mode,
                               std::chrono::milliseconds patience) noexcept {
  close();
  wchar_t plain[maxName];
  wchar_t marked[maxName];
  const wchar_t* const name = systemName(path, plain, marked);
  if (name == nullptr) return {FileStatus::badName, 0};
  const bool rewrites = mode == Mode::rewrite;
  const DWORD access = rewrites ? GENERIC_WRITE : FILE_APPEND_DATA | FILE_READ_ATTRIBUTES;
  // A link is opened as itself and a file of several names refused, so that the trace cannot be led
  // to another file.
  const DWORD flags = FILE_ATTRIBUTE_NORMAL | (rewrites ? FILE_FLAG_OPEN_REPARSE_POINT : 0);
  const auto end = std::chrono::steady_clock::now() + patience;
  for (DWORD pause = 1;; pause = std::min<DWORD>(pause * 2, 5)) {
    const HANDLE handle =
        ::CreateFileW(name, access, FILE_SHARE_READ, nullptr, OPEN_ALWAYS, flags, nullptr);
    if (handle != INVALID_HANDLE_VALUE) {
      BY_HANDLE_FILE_INFORMATION found;
      if (rewrites && (!::GetFileInformationByHandle(handle, &found) ||
                       (found.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0 ||
                       found.nNumberOfLinks > 1 || !::SetEndOfFile(handle))) {
        ::CloseHandle(handle);
        return {FileStatus::noPermission, 0};
      }
      handle_ = reinterpret_cast<std::intptr_t>(handle);
      return {};
    }
    const DWORD code = ::GetLastError();
    if (code != ERROR_SHARING_VIOLATION || std::chrono::steady_clock::now() >= end) {
      return detail::resultOf(code);
    }
    ::Sleep(pause);
  }
}

FileResult ExclusiveFile::write(std::string_view bytes) noexcept {
  DWORD written = 0;
  if (!::WriteFile(handleOf(handle_), bytes.data(), static_cast<DWORD>(bytes.size()), &written,
                   nullptr)) {
    return detail::lastError();
  }
  return written == bytes.size() ? FileResult{} : FileResult{FileStatus::noSpace, 0};
}

void ExclusiveFile::close() noexcept {
  if (isOpen()) ::CloseHandle(handleOf(handle_));
  handle_ = none;
}

}  // namespace kpx
