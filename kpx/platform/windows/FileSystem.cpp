#include "kpx/platform/FileSystem.h"

#include <windows.h>
// The header above comes first: this one builds on it.
#include <winioctl.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <new>
#include <string>
#include <utility>

#include "kpx/platform/windows/FileStatus.h"
#include "kpx/platform/windows/InputFile.h"
#include "kpx/platform/windows/LockFile.h"
#include "kpx/platform/windows/ReplacementFile.h"
#include "kpx/platform/windows/SystemCall.h"

namespace kpx {

using detail::failureAt;
using detail::Handle;
using detail::isFolder;
using detail::largestPiece;
using detail::lastError;
using detail::openHandle;
using detail::resultOf;
using detail::shareAll;
using detail::SystemPath;

namespace {

constexpr FileResult badName{FileStatus::badName, 0};

class WindowsOutputFile final : public OutputFile {
 public:
  void use(Handle handle) noexcept { handle_ = std::move(handle); }

  FileResult write(std::string_view bytes) override {
    return detail::writeAll(handle_.get(), bytes);
  }

  FileResult flush() override { return detail::flushHandle(handle_.get()); }

  FileResult close() override { return handle_.close(); }

 private:
  Handle handle_{INVALID_HANDLE_VALUE};
};

/// Whether a code says that the volume or its server has no such operation.
bool isUnknownThere(DWORD code) noexcept {
  return code == ERROR_INVALID_FUNCTION || code == ERROR_NOT_SUPPORTED ||
         code == ERROR_CALL_NOT_IMPLEMENTED;
}

/// The root that a path without one stands below: "C:" or "\\server\share".
std::u16string_view rootOf(std::u16string_view path) noexcept {
  constexpr std::u16string_view separators = u"/\\";
  if (path.size() >= 2 && path[1] == u':') return path.substr(0, 2);
  if (!path.starts_with(u"\\\\")) return {};
  const std::size_t share = path.find_first_of(separators, 2);
  if (share == path.npos) return path;
  return path.substr(0, path.find_first_of(separators, share + 1));
}

/// What a link's record says; false when it is none: other records mark files that the system
/// fetches or unpacks by itself.
bool readLink(const char* record, std::size_t size, std::u16string& link, bool& isRelative) {
  const auto number16 = [&](std::size_t at) {
    std::uint16_t number = 0;
    std::memcpy(&number, record + at, sizeof number);
    return std::size_t{number};
  };
  std::uint32_t tag = 0;
  if (size < 20) return false;
  std::memcpy(&tag, record, sizeof tag);
  const bool isSymbolic = tag == IO_REPARSE_TAG_SYMLINK;
  if (!isSymbolic && tag != IO_REPARSE_TAG_MOUNT_POINT) return false;
  // Symbolic links have a word of flags before their texts, of which the first is "relative".
  isRelative = isSymbolic && (number16(16) & 1) != 0;
  const std::size_t start = (isSymbolic ? 20 : 16) + number16(8);
  const std::size_t length = number16(10) / sizeof(char16_t);
  if (start + length * sizeof(char16_t) > size) return false;
  link.resize(length);
  std::memcpy(link.data(), record + start, length * sizeof(char16_t));

  constexpr std::u16string_view systemMark = u"\\??\\";
  constexpr std::u16string_view serverMark = u"UNC\\";
  constexpr std::u16string_view volumeMark = u"Volume{";
  if (link.starts_with(systemMark)) {
    link.erase(0, systemMark.size());
    if (link.starts_with(serverMark)) {
      link.replace(0, serverMark.size(), u"\\\\");
    } else if (link.starts_with(volumeMark)) {
      link.insert(0, u"\\\\?\\");
    }
  }
  return true;
}

FileResult readAll(HANDLE handle, std::uint64_t maxBytes, FileBytes& bytes) {
  for (;;) {
    if (bytes.size() == bytes.capacity()) {
      bytes.reserve(std::max<std::size_t>(std::size_t{1} << 16, bytes.capacity() * 2));
    }
    const std::size_t room = std::min(bytes.capacity() - bytes.size(), largestPiece);
    DWORD count = 0;
    if (!::ReadFile(handle, bytes.data() + bytes.size(), static_cast<DWORD>(room), &count,
                    nullptr)) {
      // A pipe whose writer is done.
      return ::GetLastError() == ERROR_BROKEN_PIPE ? FileResult{} : lastError();
    }
    if (count == 0) return {};
    bytes.setSize(bytes.size() + count);
    if (bytes.size() > maxBytes) return {FileStatus::tooLarge, 0};
  }
}

class WindowsFileSystem final : public FileSystem {
 public:
  FileResult read(const CString& path, FileBytes& bytes, std::uint64_t maxBytes,
                  FileVersion* version) override {
    bytes.setSize(0);
    const SystemPath name(path);
    if (!name.usable()) return badName;
    const Handle handle =
        openHandle(name, GENERIC_READ, shareAll, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN);
    if (!handle.isOpen()) return failureAt(name);
    // Pipes and the like tell no size.
    LARGE_INTEGER length = {};
    if (::GetFileType(handle.get()) == FILE_TYPE_DISK && !::GetFileSizeEx(handle.get(), &length)) {
      return lastError();
    }
    const auto size = static_cast<std::uint64_t>(length.QuadPart);
    if (size > maxBytes) return {FileStatus::tooLarge, 0};
    try {
      // What the file was before the first byte was read: a change meanwhile shows later.
      FileVersion before;
      if (version != nullptr) detail::versionOf(handle.get(), before);
      // One more byte, so that the end is seen without growing.
      bytes.reserve(static_cast<std::size_t>(size) + 1);
      const FileResult result = readAll(handle.get(), maxBytes, bytes);
      if (result && version != nullptr) {
        detail::addDigest(before, bytes.view());
        *version = before;
      }
      return result;
    } catch (const std::bad_alloc&) {
      return {FileStatus::noMemory, ERROR_OUTOFMEMORY};
    }
  }

  FileResult openInput(const CString& path, std::unique_ptr<InputFile>& file) override {
    return detail::openWindowsInput(path, file);
  }

  FileResult info(const CString& path, FileInfo& info) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    // Who may write a file may write its attributes. Asking for the content itself would turn
    // away other programs that want to be alone with the file at this moment.
    constexpr DWORD changing = FILE_READ_ATTRIBUTES | FILE_WRITE_ATTRIBUTES;
    constexpr DWORD flags = FILE_FLAG_BACKUP_SEMANTICS;
    const Handle writing = openHandle(name, changing, shareAll, OPEN_EXISTING, flags);
    const FileResult result = writing.isOpen() ? FileResult{} : failureAt(name);
    if (result.status == FileStatus::notFound) return result;
    const Handle reading =
        writing.isOpen() ? Handle(INVALID_HANDLE_VALUE)
                         : openHandle(name, FILE_READ_ATTRIBUTES, shareAll, OPEN_EXISTING, flags);
    if (!writing.isOpen() && !reading.isOpen()) return failureAt(name);
    const HANDLE handle = writing.isOpen() ? writing.get() : reading.get();

    if (::GetFileType(handle) != FILE_TYPE_DISK) {
      info = {FileKind::other, 0, writing.isOpen()};
      return {};
    }
    BY_HANDLE_FILE_INFORMATION found = {};
    if (!::GetFileInformationByHandle(handle, &found)) return lastError();
    const bool isFile = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    const bool isProtected = (found.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    info.kind = isFile ? FileKind::file : FileKind::folder;
    info.size = isFile ? std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow : 0;
    // In folders the mark only says that the shell shows them in another way.
    info.writable = writing.isOpen() && !(isFile && isProtected);
    return {};
  }

  FileResult version(const CString& path, FileVersion& version) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    version = {};
    const Handle handle =
        openHandle(name, FILE_READ_ATTRIBUTES, shareAll, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
    if (!handle.isOpen()) {
      const FileResult result = failureAt(name);
      return result.status == FileStatus::notFound ? FileResult{} : result;
    }
    return detail::versionOf(handle.get(), version) ? FileResult{} : lastError();
  }

  FileResult openAppend(const CString& path, std::unique_ptr<OutputFile>& file) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    // Made before the file, so that no file is left when memory is missing.
    auto opened = std::make_unique<WindowsOutputFile>();
    // Only with this right alone does the system put each piece at the end.
    Handle handle = openHandle(name, FILE_APPEND_DATA | SYNCHRONIZE, shareAll, OPEN_ALWAYS);
    if (!handle.isOpen()) return failureAt(name);
    opened->use(std::move(handle));
    file = std::move(opened);
    return {};
  }

  FileResult openUpdate(const CString& path, UpdateMode mode,
                        std::unique_ptr<UpdateFile>& file) override {
    return detail::openWindowsUpdate(path, mode, file);
  }

  FileResult openReplacement(const CString& path, const ReplaceOptions& options,
                             std::unique_ptr<ReplacementFile>& file) override {
    CString target;
    if (const FileResult result = followLinks(path, target); !result) return result;
    FileInfo old;
    const FileResult found = info(target, old);
    if (!found && found.status != FileStatus::notFound) return found;
    if (found) {
      if (old.kind == FileKind::folder) return {FileStatus::isFolder, 0};
      if (old.kind == FileKind::other) return {FileStatus::notRegularFile, 0};
      if (!old.writable) return {FileStatus::noPermission, 0};
    }
    auto opened = std::make_unique<detail::WindowsReplacementFile>(target, options);
    CString model = found ? target : CString();
    if (!options.attributesOf.IsEmpty()) model = options.attributesOf;
    const FileResult result = opened->open(model);
    if (result) file = std::move(opened);
    return result;
  }

  FileResult lock(const CString& path, std::unique_ptr<FileLock>& lock,
                  std::chrono::milliseconds patience) override {
    CString target;
    if (const FileResult result = followLinks(path, target); !result) return result;
    return detail::waitForLock(std::make_unique<detail::WindowsLockFile>(target), patience, lock);
  }

  FileResult remove(const CString& path) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    // A link to a folder counts as a folder here; the link itself goes.
    if (isFolder(name.get())) return ::RemoveDirectoryW(name.get()) ? FileResult{} : lastError();
    return ::DeleteFileW(name.get()) ? FileResult{} : failureAt(name);
  }

  FileResult createFolder(const CString& path) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    if (::CreateDirectoryW(name.get(), nullptr)) return {};
    const FileResult result = failureAt(name);
    // What the system says of the root of a volume.
    return result.status == FileStatus::isFolder ? FileResult{FileStatus::exists, result.systemCode}
                                                 : result;
  }

  FileResult list(const CString& folder, std::vector<CString>& names) override {
    names.clear();
    if (!SystemPath(folder).usable()) return badName;
    const std::u16string_view text(folder);
    const bool isOpenEnded = std::u16string_view(u"/\\:").find(text.back()) != text.npos;
    CString pattern = folder;
    pattern += isOpenEnded ? u"*" : u"\\*";
    const SystemPath name(pattern);
    WIN32_FIND_DATAW entry = {};
    const HANDLE search =
        ::FindFirstFileExW(name.get(), FindExInfoBasic, &entry, FindExSearchNameMatch, nullptr, 0);
    if (search == INVALID_HANDLE_VALUE) {
      // The root of an empty volume has not even ".".
      return ::GetLastError() == ERROR_FILE_NOT_FOUND ? FileResult{} : failureAt(name);
    }
    const std::unique_ptr<void, BOOL(WINAPI*)(HANDLE)> closer(search, &::FindClose);
    do {
      const std::wstring_view found(entry.cFileName);
      if (found != L"." && found != L"..") names.emplace_back(entry.cFileName);
    } while (::FindNextFileW(search, &entry));
    if (::GetLastError() != ERROR_NO_MORE_FILES) return lastError();
    std::sort(names.begin(), names.end());
    return {};
  }

  FileResult followLinks(const CString& path, CString& target) override {
    target = path;
    constexpr int maxLinks = 40;
    for (int links = 0; links < maxLinks; ++links) {
      std::u16string link;
      bool isRelative = false;
      bool isLink = false;
      if (const FileResult result = readLinkAt(target, link, isRelative, isLink); !result) {
        return result;
      }
      if (!isLink) return {};
      if (!isRelative) {
        target = CString(link);
      } else if (link.starts_with(u'\\')) {
        target = CString(rootOf(target)) + CString(link);
      } else {
        const std::size_t folder = std::u16string_view(target).find_last_of(u"/\\:");
        target = CString(std::u16string_view(target).substr(0, folder + 1)) + CString(link);
      }
    }
    return {FileStatus::badName, ERROR_CANT_RESOLVE_FILENAME};
  }

 private:
  /// Reads the link at the end of a path; nothing at all and what is no link are no failures.
  static FileResult readLinkAt(const CString& path, std::u16string& link, bool& isRelative,
                               bool& isLink) {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    const DWORD attributes = ::GetFileAttributesW(name.get());
    if (attributes == INVALID_FILE_ATTRIBUTES) {
      const FileResult result = failureAt(name);
      return result.status == FileStatus::notFound ? FileResult{} : result;
    }
    if ((attributes & FILE_ATTRIBUTE_REPARSE_POINT) == 0) return {};
    const Handle handle = openHandle(name, FILE_READ_ATTRIBUTES, shareAll, OPEN_EXISTING,
                                     FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT);
    if (!handle.isOpen()) return failureAt(name);
    std::string record(MAXIMUM_REPARSE_DATA_BUFFER_SIZE, '\0');
    DWORD size = 0;
    if (!::DeviceIoControl(handle.get(), FSCTL_GET_REPARSE_POINT, nullptr, 0, record.data(),
                           static_cast<DWORD>(record.size()), &size, nullptr)) {
      // What marks the file is not for programs to see, so it is no link.
      const DWORD code = ::GetLastError();
      return code == ERROR_NOT_A_REPARSE_POINT || isUnknownThere(code) ? FileResult{}
                                                                       : resultOf(code);
    }
    isLink = readLink(record.data(), size, link, isRelative);
    return {};
  }
};

}  // namespace

namespace detail {

FileSystem& systemFiles() noexcept {
  static WindowsFileSystem files;
  return files;
}

}  // namespace detail

}  // namespace kpx
