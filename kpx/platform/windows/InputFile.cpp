#include "kpx/platform/windows/InputFile.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <utility>

#include "kpx/platform/windows/SystemCall.h"

namespace kpx::detail {
namespace {

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
    constexpr auto last = static_cast<std::uint64_t>(std::numeric_limits<std::int64_t>::max());
    if (offset > last || bytes.size() > last - offset) {
      return {FileStatus::tooLarge, ERROR_FILE_TOO_LARGE};
    }
    while (!bytes.empty()) {
      OVERLAPPED at = placeAt(offset);
      DWORD written = 0;
      if (!::WriteFile(handle_.get(), bytes.data(),
                       static_cast<DWORD>(std::min(bytes.size(), largestPiece)), &written, &at)) {
        return lastError();
      }
      if (written == 0) return {FileStatus::noSpace, 0};
      offset += written;
      bytes.remove_prefix(written);
    }
    return {};
  }

  FileResult close() override { return handle_.close(); }

 private:
  Handle handle_;
};

}  // namespace

FileResult openWindowsUpdate(const CString& path, UpdateMode mode,
                             std::unique_ptr<UpdateFile>& file) {
  const SystemPath name(path);
  if (!name.usable()) return {FileStatus::badName, 0};
  const DWORD creation = mode == UpdateMode::existing ? OPEN_EXISTING : OPEN_ALWAYS;
  Handle handle = openHandle(name, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ, creation);
  if (!handle.isOpen()) return failureAt(name);
  if (::GetFileType(handle.get()) != FILE_TYPE_DISK) return {FileStatus::notRegularFile, 0};
  if (mode == UpdateMode::emptied && !::SetEndOfFile(handle.get())) return lastError();
  file = std::make_unique<WindowsUpdateFile>(std::move(handle));
  return {};
}

FileResult openWindowsInput(const CString& path, std::unique_ptr<InputFile>& file) {
  const SystemPath name(path);
  if (!name.usable()) return {FileStatus::badName, 0};
  // Who reads holds nobody up: while an error log is read, programs go on to append to it.
  Handle handle = openHandle(name, GENERIC_READ, shareAll, OPEN_EXISTING);
  if (!handle.isOpen()) return failureAt(name);
  if (::GetFileType(handle.get()) != FILE_TYPE_DISK) return {FileStatus::notRegularFile, 0};
  LARGE_INTEGER size{};
  if (!::GetFileSizeEx(handle.get(), &size)) return lastError();
  file = std::make_unique<WindowsInputFile>(std::move(handle),
                                            static_cast<std::uint64_t>(size.QuadPart));
  return {};
}

}  // namespace kpx::detail
