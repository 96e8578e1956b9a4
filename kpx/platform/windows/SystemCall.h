#pragma once

#include <windows.h>

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

#include "kpx/platform/FileSystem.h"
#include "kpx/text/CString.h"

namespace kpx::detail {

/// The user's share of a volume is full; older headers do not declare it.
inline constexpr DWORD quotaExceeded = 1295;

/// What the system's error code means for a file operation.
inline FileResult resultOf(DWORD code) noexcept {
  const auto result = [&](FileStatus status) { return FileResult{status, static_cast<int>(code)}; };
  switch (code) {
    case ERROR_SUCCESS:
      return {};
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_INVALID_DRIVE:
    case ERROR_BAD_NETPATH:
    case ERROR_BAD_NET_NAME:
      return result(FileStatus::notFound);
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
    case ERROR_WRITE_PROTECT:
    case ERROR_NETWORK_ACCESS_DENIED:
    case ERROR_DELETE_PENDING:
    case ERROR_USER_MAPPED_FILE:
    case ERROR_PRIVILEGE_NOT_HELD:
    case ERROR_SYMLINK_CLASS_DISABLED:
      return result(FileStatus::noPermission);
    case ERROR_FILE_EXISTS:
    case ERROR_ALREADY_EXISTS:
      return result(FileStatus::exists);
    case ERROR_DIRECTORY:
    case ERROR_DIR_NOT_EMPTY:
      return result(FileStatus::notFolder);
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE:
    case ERROR_BUFFER_OVERFLOW:
    case ERROR_CANT_RESOLVE_FILENAME:
      return result(FileStatus::badName);
    case ERROR_FILE_TOO_LARGE:
      return result(FileStatus::tooLarge);
    case ERROR_DISK_FULL:
    case ERROR_HANDLE_DISK_FULL:
    case quotaExceeded:
      return result(FileStatus::noSpace);
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
    case ERROR_NO_SYSTEM_RESOURCES:
      return result(FileStatus::noMemory);
    default:
      return result(FileStatus::failed);
  }
}

inline FileResult lastError() noexcept { return resultOf(::GetLastError()); }

/// The most bytes that one call of the system is asked for.
inline constexpr std::size_t largestPiece = std::size_t{1} << 30;

/// A file handle of the system. Destroying it closes it.
class Handle {
 public:
  explicit Handle(HANDLE handle) noexcept : handle_(handle) {}
  Handle(Handle&& other) noexcept : handle_(other.release()) {}
  Handle& operator=(Handle&& other) noexcept {
    std::swap(handle_, other.handle_);
    return *this;
  }
  ~Handle() {
    if (isOpen()) ::CloseHandle(handle_);
  }
  HANDLE get() const noexcept { return handle_; }
  bool isOpen() const noexcept { return handle_ != INVALID_HANDLE_VALUE; }

  /// Closes it now, to tell what the system found out only then.
  FileResult close() noexcept {
    const HANDLE closing = release();
    return closing == INVALID_HANDLE_VALUE || ::CloseHandle(closing) ? FileResult{} : lastError();
  }

 private:
  HANDLE release() noexcept { return std::exchange(handle_, INVALID_HANDLE_VALUE); }

  HANDLE handle_;
};

/// A path as the system takes it. It must not outlive the text it was made of. The system limits
/// paths to some 250 units unless they are complete and marked, so longer ones get both.
class SystemPath {
 public:
  explicit SystemPath(const CString& path)
      : given_(static_cast<const wchar_t*>(path)),
        usable_(!path.IsEmpty() && path.Find(u'\0') == -1) {
    if (!usable_) return;
    // Folders have a lower limit than files: a short name must still fit into them. The current
    // folder stands in front of a relative path.
    constexpr std::size_t longestPlain = 247;
    const std::wstring_view plain(given_);
    if (plain.size() + ::GetCurrentDirectoryW(0, nullptr) > longestPlain) mark(plain);
  }

  SystemPath(const SystemPath&) = delete;
  SystemPath& operator=(const SystemPath&) = delete;

  bool usable() const noexcept { return usable_; }
  const wchar_t* get() const noexcept { return marked_.empty() ? given_ : marked_.c_str(); }
  std::wstring_view view() const noexcept { return get(); }

 private:
  void mark(std::wstring_view plain) {
    if (plain.starts_with(LR"(\\?\)")) return;
    std::wstring complete(::GetFullPathNameW(given_, 0, nullptr, nullptr), L'\0');
    const DWORD length =
        ::GetFullPathNameW(given_, static_cast<DWORD>(complete.size()), complete.data(), nullptr);
    // Another thread may have changed the current folder meanwhile.
    if (length == 0 || length >= complete.size()) return;
    complete.resize(length);
    if (complete.starts_with(LR"(\\.\)") || complete.starts_with(LR"(\\?\)")) {
      marked_ = std::move(complete);  // a device
    } else if (complete.starts_with(LR"(\\)")) {
      marked_ = LR"(\\?\UNC)" + complete.substr(1);
    } else {
      marked_ = LR"(\\?\)" + complete;
    }
  }

  const wchar_t* given_;
  bool usable_;
  std::wstring marked_;
};

inline bool isFolder(const wchar_t* path) noexcept {
  const DWORD attributes = ::GetFileAttributesW(path);
  return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

/// Why a call with a path failed, where the system's last code alone does not tell: it calls a
/// folder in the place of a file "access denied", and a file in the place of a folder "path not
/// found".
inline FileResult failureAt(const SystemPath& path) {
  const FileResult result = lastError();
  if (result.systemCode == ERROR_ACCESS_DENIED && isFolder(path.get())) {
    return {FileStatus::isFolder, result.systemCode};
  }
  if (result.systemCode == ERROR_PATH_NOT_FOUND) {
    const std::size_t separator = path.view().find_last_of(L"/\\");
    if (separator != std::wstring_view::npos) {
      const std::wstring above(path.view().substr(0, separator));
      const DWORD attributes = ::GetFileAttributesW(above.c_str());
      if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
        return {FileStatus::notFolder, result.systemCode};
      }
    }
  }
  return result;
}

/// Opens a file or device, or nothing: then `failureAt` tells why.
inline Handle openHandle(const SystemPath& path, DWORD access, DWORD sharing, DWORD creation,
                         DWORD flags = FILE_ATTRIBUTE_NORMAL,
                         SECURITY_ATTRIBUTES* security = nullptr) noexcept {
  return Handle(::CreateFileW(path.get(), access, sharing, security, creation, flags, nullptr));
}

/// Writes all bytes or fails.
inline FileResult writeAll(HANDLE handle, std::string_view bytes) noexcept {
  while (!bytes.empty()) {
    DWORD written = 0;
    const auto size = static_cast<DWORD>(bytes.size() < largestPiece ? bytes.size() : largestPiece);
    if (!::WriteFile(handle, bytes.data(), size, &written, nullptr)) return lastError();
    if (written == 0) return {FileStatus::noSpace, 0};
    bytes.remove_prefix(written);
  }
  return {};
}

inline FileResult flushHandle(HANDLE handle) noexcept {
  if (::FlushFileBuffers(handle)) return {};
  // Some devices and file systems know no flushing; that is no failure of the write.
  const DWORD code = ::GetLastError();
  const bool isUnknown = code == ERROR_INVALID_FUNCTION || code == ERROR_NOT_SUPPORTED ||
                         ::GetFileType(handle) == FILE_TYPE_CHAR;
  return isUnknown ? FileResult{} : resultOf(code);
}

inline constexpr DWORD shareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

}  // namespace kpx::detail
