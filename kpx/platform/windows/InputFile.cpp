#include "kpx/platform/windows/InputFile.h"

#include <windows.h>

#include <algorithm>
#include <utility>

namespace kpx::detail {
namespace {

FileResult lastError() noexcept {
  const DWORD code = ::GetLastError();
  const auto result = [&](FileStatus status) { return FileResult{status, static_cast<int>(code)}; };
  switch (code) {
    case ERROR_FILE_NOT_FOUND:
    case ERROR_PATH_NOT_FOUND:
    case ERROR_BAD_NETPATH:
      return result(FileStatus::notFound);
    case ERROR_ACCESS_DENIED:
    case ERROR_SHARING_VIOLATION:
    case ERROR_LOCK_VIOLATION:
      return result(FileStatus::noPermission);
    case ERROR_INVALID_NAME:
    case ERROR_BAD_PATHNAME:
    case ERROR_FILENAME_EXCED_RANGE:
      return result(FileStatus::badName);
    case ERROR_NOT_ENOUGH_MEMORY:
    case ERROR_OUTOFMEMORY:
      return result(FileStatus::noMemory);
    default:
      return result(FileStatus::failed);
  }
}

class Handle {
 public:
  explicit Handle(HANDLE handle) noexcept : handle_(handle) {}
  Handle(Handle&& other) noexcept : handle_(std::exchange(other.handle_, INVALID_HANDLE_VALUE)) {}
  Handle& operator=(Handle&&) = delete;
  ~Handle() {
    if (handle_ != INVALID_HANDLE_VALUE) ::CloseHandle(handle_);
  }
  HANDLE get() const noexcept { return handle_; }

 private:
  HANDLE handle_;
};

/// The most bytes that one call of the system is asked for.
constexpr std::size_t largestPiece = std::size_t{1} << 30;

OVERLAPPED placeAt(std::uint64_t offset) noexcept {
  OVERLAPPED place{};
  place.Offset = static_cast<DWORD>(offset);
  place.OffsetHigh = static_cast<DWORD>(offset >> 32);
  return place;
}

FileResult readFrom(HANDLE handle, std::uint64_t size, std::uint64_t offset, char* to,
                    std::size_t count, std::size_t& done) {
  for (done = 0; done < count;) {
    const std::uint64_t place = offset + done;
    if (place < offset || place >= size) return {};
    OVERLAPPED at = placeAt(place);
    DWORD got = 0;
    if (!::ReadFile(handle, to + done, static_cast<DWORD>(std::min(count - done, largestPiece)),
                    &got, &at)) {
      return ::GetLastError() == ERROR_HANDLE_EOF ? FileResult{} : lastError();
    }
    if (got == 0) return {};
    done += got;
  }
  return {};
}

class WindowsInputFile final : public InputFile {
 public:
  WindowsInputFile(Handle handle, std::uint64_t size) noexcept
      : handle_(std::move(handle)), size_(size) {}

  std::uint64_t size() const noexcept override { return size_; }

  FileResult readAt(std::uint64_t offset, char* to, std::size_t count, std::size_t& done) override {
    return readFrom(handle_.get(), size_, offset, to, count, done);
  }

 private:
  Handle handle_;
  std::uint64_t size_;
};

class WindowsUpdateFile final : public UpdateFile {
 public:
  explicit WindowsUpdateFile(Handle handle) noexcept : handle_(std::move(handle)) {}

  FileResult size(std::uint64_t& bytes) override {
    LARGE_INTEGER size{};
    if (!::GetFileSizeEx(handle_.get(), &size)) return lastError();
    bytes = static_cast<std::uint64_t>(size.QuadPart);
    return {};
  }

  FileResult readAt(std::uint64_t offset, char* to, std::size_t count, std::size_t& done) override {
    std::uint64_t bytes = 0;
    done = 0;
    const FileResult result = size(bytes);
    return result ? readFrom(handle_.get(), bytes, offset, to, count, done) : result;
  }

  FileResult writeAt(std::uint64_t offset, std::string_view bytes) override {
    while (!bytes.empty()) {
      OVERLAPPED at = placeAt(offset);
      DWORD written = 0;
      if (!::WriteFile(handle_.get(), bytes.data(),
                       static_cast<DWORD>(std::min(bytes.size(), largestPiece)), &written, &at)) {
        return ::GetLastError() == ERROR_DISK_FULL
                   ? FileResult{FileStatus::noSpace, ERROR_DISK_FULL}
                   : lastError();
      }
      offset += written;
      bytes.remove_prefix(written);
    }
    return {};
  }

  FileResult close() override {
    const Handle closing = std::move(handle_);
    return {};
  }

 private:
  Handle handle_;
};

}  // namespace

FileResult openWindowsUpdate(const CString& path, UpdateMode mode,
                             std::unique_ptr<UpdateFile>& file) {
  if (path.IsEmpty() || path.Find(u'\0') != -1) return {FileStatus::badName, 0};
  const DWORD creation = mode == UpdateMode::existing ? OPEN_EXISTING : OPEN_ALWAYS;
  Handle handle(::CreateFileW(static_cast<const wchar_t*>(path), GENERIC_READ | GENERIC_WRITE,
                              FILE_SHARE_READ, nullptr, creation, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (handle.get() == INVALID_HANDLE_VALUE) return lastError();
  if (::GetFileType(handle.get()) != FILE_TYPE_DISK) return {FileStatus::notRegularFile, 0};
  if (mode == UpdateMode::emptied && !::SetEndOfFile(handle.get())) return lastError();
  file = std::make_unique<WindowsUpdateFile>(std::move(handle));
  return {};
}

FileResult openWindowsInput(const CString& path, std::unique_ptr<InputFile>& file) {
  if (path.IsEmpty() || path.Find(u'\0') != -1) return {FileStatus::badName, 0};
  const auto* const name = static_cast<const wchar_t*>(path);
  const DWORD attributes = ::GetFileAttributesW(name);
  if (attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
    return {FileStatus::isFolder, 0};
  }
  // Others may go on to read, rename and remove the file.
  Handle handle(::CreateFileW(name, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_DELETE, nullptr,
                              OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr));
  if (handle.get() == INVALID_HANDLE_VALUE) return lastError();
  if (::GetFileType(handle.get()) != FILE_TYPE_DISK) return {FileStatus::notRegularFile, 0};
  LARGE_INTEGER size{};
  if (!::GetFileSizeEx(handle.get(), &size)) return lastError();
  file = std::make_unique<WindowsInputFile>(std::move(handle),
                                            static_cast<std::uint64_t>(size.QuadPart));
  return {};
}

}  // namespace kpx::detail
