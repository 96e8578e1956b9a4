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

#include "kpx/platform/windows/InputFile.h"
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
  explicit WindowsOutputFile(Handle handle) noexcept : handle_(std::move(handle)) {}

  FileResult write(std::string_view bytes) override {
    while (!bytes.empty()) {
      DWORD written = 0;
      if (!::WriteFile(handle_.get(), bytes.data(),
                       static_cast<DWORD>(std::min(bytes.size(), largestPiece)), &written,
                       nullptr)) {
        return lastError();
      }
      if (written == 0) return {FileStatus::noSpace, 0};
      bytes.remove_prefix(written);
    }
    return {};
  }

  FileResult flush() override {
    if (::FlushFileBuffers(handle_.get())) return {};
    // Some devices and file systems know no flushing; that is no failure of the write.
    const DWORD code = ::GetLastError();
    const bool isUnknown = code == ERROR_INVALID_FUNCTION || code == ERROR_NOT_SUPPORTED ||
                           ::GetFileType(handle_.get()) == FILE_TYPE_CHAR;
    return isUnknown ? FileResult{} : resultOf(code);
  }

  FileResult close() override { return handle_.close(); }

 private:
  Handle handle_;
};

/// Access for the user of this thread and for nobody else, whatever the folder would hand on.
class OwnerOnlyAccess {
 public:
  OwnerOnlyAccess() noexcept { usable_ = readUser() && build(); }
  OwnerOnlyAccess(const OwnerOnlyAccess&) = delete;
  OwnerOnlyAccess& operator=(const OwnerOnlyAccess&) = delete;

  /// nullptr when the system does not tell the user.
  SECURITY_ATTRIBUTES* get() noexcept { return usable_ ? &attributes_ : nullptr; }

 private:
  bool readUser() noexcept {
    HANDLE opened = nullptr;
    if (!::OpenThreadToken(::GetCurrentThread(), TOKEN_QUERY, TRUE, &opened) &&
        !::OpenProcessToken(::GetCurrentProcess(), TOKEN_QUERY, &opened)) {
      return false;
    }
    const Handle token(opened);
    DWORD size = 0;
    return ::GetTokenInformation(token.get(), TokenUser, &user_, sizeof user_, &size) != 0;
  }

  bool build() noexcept {
    const SECURITY_DESCRIPTOR_CONTROL closed = SE_DACL_PROTECTED;
    attributes_.nLength = sizeof attributes_;
    attributes_.lpSecurityDescriptor = &descriptor_;
    return ::InitializeAcl(&list_.head, sizeof list_, ACL_REVISION) &&
           ::AddAccessAllowedAce(&list_.head, ACL_REVISION, FILE_ALL_ACCESS, user_.user.User.Sid) &&
           ::InitializeSecurityDescriptor(&descriptor_, SECURITY_DESCRIPTOR_REVISION) &&
           ::SetSecurityDescriptorDacl(&descriptor_, TRUE, &list_.head, FALSE) &&
           ::SetSecurityDescriptorControl(&descriptor_, closed, closed);
  }

  struct {
    TOKEN_USER user;
    unsigned char identity[SECURITY_MAX_SID_SIZE];
  } user_ = {};
  struct {
    ACL head;
    unsigned char entry[sizeof(ACCESS_ALLOWED_ACE) + SECURITY_MAX_SID_SIZE];
  } list_ = {};
  SECURITY_DESCRIPTOR descriptor_ = {};
  SECURITY_ATTRIBUTES attributes_ = {};
  bool usable_ = false;
};

/// A new file that only this user can read. Servers that do not know the user refuse the access
/// list; there the file is kept from others at least while it is written.
Handle createForOwner(const SystemPath& name, DWORD flags) noexcept {
  OwnerOnlyAccess access;
  if (access.get() != nullptr) {
    Handle handle = openHandle(name, GENERIC_WRITE, 0, CREATE_NEW, flags, access.get());
    const DWORD code = ::GetLastError();
    if (handle.isOpen() || code == ERROR_FILE_EXISTS || code == ERROR_PATH_NOT_FOUND) return handle;
  }
  return openHandle(name, GENERIC_WRITE, 0, CREATE_NEW, flags);
}

/// Owner, group and access list of a file as one record of the system.
class AccessRecord {
 public:
  static constexpr SECURITY_INFORMATION withOwner =
      OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

  /// False when it cannot be read; the system's last code tells why.
  bool read(const SystemPath& file) {
    DWORD size = 0;
    bytes_.resize(1024);
    while (!::GetFileSecurityW(file.get(), withOwner, get(), static_cast<DWORD>(bytes_.size()),
                               &size)) {
      // Another program may give the file a longer list between two tries.
      if (::GetLastError() != ERROR_INSUFFICIENT_BUFFER || size <= bytes_.size()) return false;
      bytes_.resize(size);
    }
    // Without this request the system forgets which entries came from the folder.
    SECURITY_DESCRIPTOR_CONTROL control = 0;
    DWORD revision = 0;
    constexpr SECURITY_DESCRIPTOR_CONTROL inherited = SE_DACL_AUTO_INHERITED;
    constexpr SECURITY_DESCRIPTOR_CONTROL request = SE_DACL_AUTO_INHERIT_REQ;
    if (::GetSecurityDescriptorControl(get(), &control, &revision) && (control & inherited) != 0) {
      ::SetSecurityDescriptorControl(get(), request, request);
    }
    bytes_.resize(::GetSecurityDescriptorLength(get()));
    return true;
  }

  /// Gives a file all of it or, since only few may give files away, the access list alone.
  bool giveTo(const SystemPath& file) noexcept {
    return ::SetFileSecurityW(file.get(), withOwner, get()) ||
           ::SetFileSecurityW(file.get(), DACL_SECURITY_INFORMATION, get());
  }

  friend bool operator==(const AccessRecord&, const AccessRecord&) = default;

 private:
  PSECURITY_DESCRIPTOR get() noexcept { return bytes_.data(); }

  std::string bytes_;
};

/// Whether a code says that the volume or its server has no such operation.
bool isUnknownThere(DWORD code) noexcept {
  return code == ERROR_INVALID_FUNCTION || code == ERROR_NOT_SUPPORTED ||
         code == ERROR_CALL_NOT_IMPLEMENTED;
}

/// Renames as newer systems can: also over a file that others have open, if they let it be
/// removed. False when this one cannot; the system's last code tells why.
bool renameInOneStep(const SystemPath& from, const SystemPath& to, bool flushed) {
  struct Request {  // FILE_RENAME_INFO with flags, which older headers do not declare
    DWORD flags;
    HANDLE folder;
    DWORD nameBytes;
    wchar_t name[1];
  };
  constexpr auto renameWithFlags = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
  constexpr DWORD replace = 1;
  constexpr DWORD evenIfOpen = 2;

  // The system takes complete names only.
  std::wstring complete(::GetFullPathNameW(to.get(), 0, nullptr, nullptr), L'\0');
  const DWORD length =
      ::GetFullPathNameW(to.get(), static_cast<DWORD>(complete.size()), complete.data(), nullptr);
  if (length == 0 || length >= complete.size()) return false;

  const DWORD flags = FILE_FLAG_BACKUP_SEMANTICS | FILE_FLAG_OPEN_REPARSE_POINT |
                      (flushed ? FILE_FLAG_WRITE_THROUGH : 0);
  const Handle handle = openHandle(from, DELETE | SYNCHRONIZE, shareAll, OPEN_EXISTING, flags);
  if (!handle.isOpen()) return false;

  const std::size_t nameBytes = length * sizeof(wchar_t);
  std::string bytes(sizeof(Request) + nameBytes, '\0');
  Request head = {};
  head.flags = replace | evenIfOpen;
  head.nameBytes = static_cast<DWORD>(nameBytes);
  std::memcpy(bytes.data(), &head, sizeof head);
  std::memcpy(bytes.data() + offsetof(Request, name), complete.data(), nameBytes);
  return ::SetFileInformationByHandle(handle.get(), renameWithFlags, bytes.data(),
                                      static_cast<DWORD>(bytes.size())) != 0;
}

FileResult renameFile(const CString& from, const CString& to, bool flushed) {
  const SystemPath oldName(from);
  const SystemPath newName(to);
  if (!oldName.usable() || !newName.usable()) return badName;
  // Newer systems might put a file in the place of an empty folder.
  if (isFolder(newName.get()) && !isFolder(oldName.get())) return {FileStatus::isFolder, 0};
  const DWORD flags = MOVEFILE_REPLACE_EXISTING | (flushed ? MOVEFILE_WRITE_THROUGH : 0);
  // Virus scanners and indexers keep a file that was just written for a moment.
  constexpr DWORD longestPause = 64;
  for (DWORD pause = 1;; pause *= 2) {
    if (renameInOneStep(oldName, newName, flushed) ||
        ::MoveFileExW(oldName.get(), newName.get(), flags)) {
      return {};
    }
    const FileResult result = failureAt(newName);
    const bool mayPass =
        result.systemCode == ERROR_SHARING_VIOLATION || result.systemCode == ERROR_ACCESS_DENIED;
    if (!mayPass || result.status != FileStatus::noPermission || pause > longestPause) {
      return result;
    }
    ::Sleep(pause);
  }
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
  FileResult read(const CString& path, FileBytes& bytes, std::uint64_t maxBytes) override {
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
      // One more byte, so that the end is seen without growing.
      bytes.reserve(static_cast<std::size_t>(size) + 1);
      return readAll(handle.get(), maxBytes, bytes);
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
      info = {FileKind::other, 0, 0, writing.isOpen()};
      return {};
    }
    BY_HANDLE_FILE_INFORMATION found = {};
    if (!::GetFileInformationByHandle(handle, &found)) return lastError();
    const bool isFile = (found.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
    const bool isProtected = (found.dwFileAttributes & FILE_ATTRIBUTE_READONLY) != 0;
    info.kind = isFile ? FileKind::file : FileKind::folder;
    info.size = isFile ? std::uint64_t{found.nFileSizeHigh} << 32 | found.nFileSizeLow : 0;
    // The rights lie in access lists, of which no number can tell: `copyPermissions` takes them.
    info.permissions = 0;
    // In folders the mark only says that the shell shows them in another way.
    info.writable = writing.isOpen() && !(isFile && isProtected);
    return {};
  }

  FileResult open(const CString& path, OpenMode mode, std::unique_ptr<OutputFile>& file,
                  unsigned permissions) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    Handle handle = openOutput(name, mode, permissions);
    if (!handle.isOpen()) return failureAt(name);
    // Emptied, not made anew: the system refuses that for hidden files.
    if (mode == OpenMode::rewrite && ::GetFileType(handle.get()) == FILE_TYPE_DISK &&
        !::SetEndOfFile(handle.get())) {
      return lastError();
    }
    file = std::make_unique<WindowsOutputFile>(std::move(handle));
    return {};
  }

  FileResult openUpdate(const CString& path, UpdateMode mode,
                        std::unique_ptr<UpdateFile>& file) override {
    return detail::openWindowsUpdate(path, mode, file);
  }

  FileResult copyPermissions(const CString& like, const CString& path) override {
    const SystemPath from(like);
    const SystemPath to(path);
    if (!from.usable() || !to.usable()) return badName;
    AccessRecord access;
    AccessRecord present;
    const bool hasAccess = access.read(from);
    // A volume without access lists has none to keep.
    if (!hasAccess && !isUnknownThere(::GetLastError())) return failureAt(from);
    const DWORD wanted = ::GetFileAttributesW(from.get());
    if (wanted == INVALID_FILE_ATTRIBUTES) return failureAt(from);
    // Mostly both have what their folder hands on. Some servers let nobody change that.
    const bool isSame = !hasAccess || (present.read(to) && present == access);
    if (!isSame && !access.giveTo(to)) return failureAt(to);
    // A hidden file stays hidden, a protected one protected.
    constexpr DWORD kept = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                           FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
    const DWORD given = ::GetFileAttributesW(to.get());
    if (given == INVALID_FILE_ATTRIBUTES) return failureAt(to);
    if ((given & kept) == (wanted & kept)) return {};
    constexpr DWORD settable = kept | FILE_ATTRIBUTE_ARCHIVE;
    const DWORD attributes = (given & settable & ~kept) | (wanted & kept);
    // No attributes at all have a mark of their own; 0 would leave them as they are.
    return ::SetFileAttributesW(to.get(), attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL)
               ? FileResult{}
               : failureAt(to);
  }

  FileResult rename(const CString& from, const CString& to) override {
    return renameFile(from, to, true);
  }

  FileResult renameUnflushed(const CString& from, const CString& to) override {
    return renameFile(from, to, false);
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
  static Handle openOutput(const SystemPath& name, OpenMode mode, unsigned permissions) noexcept {
    constexpr DWORD readable = FILE_SHARE_READ | FILE_SHARE_DELETE;
    switch (mode) {
      case OpenMode::create: {
        // A link that leads nowhere must count as existing.
        constexpr DWORD flags = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT;
        constexpr unsigned forOthers = 0077;
        const bool isForOwner = permissions != 0 && (permissions & forOthers) == 0;
        return isForOwner ? createForOwner(name, flags)
                          : openHandle(name, GENERIC_WRITE, readable, CREATE_NEW, flags);
      }
      case OpenMode::append:
        // Only with this right alone does the system put each piece at the end, whoever else
        // appends.
        return openHandle(name, FILE_APPEND_DATA | SYNCHRONIZE, shareAll, OPEN_ALWAYS);
      case OpenMode::rewrite:
        break;
    }
    return openHandle(name, GENERIC_WRITE, readable, OPEN_ALWAYS);
  }

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
