#include "kpx/platform/windows/ReplacementFile.h"

#include <windows.h>

#include <atomic>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <cstring>
#include <memory>
#include <vector>

#include "kpx/platform/windows/FileStatus.h"

namespace kpx::detail {

namespace {

constexpr SECURITY_INFORMATION withOwner =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

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

/// A new file for this program alone until it is closed. With a model only this user can read it
/// until it gets the model's access list. Servers that do not know the user refuse that; there the
/// file is kept from others at least while it is written.
Handle createTemporary(const SystemPath& name, bool forOwner) noexcept {
  constexpr DWORD writing = GENERIC_WRITE | DELETE | READ_CONTROL | FILE_READ_ATTRIBUTES;
  // A link that leads nowhere must count as existing.
  constexpr DWORD flags = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT;
  OwnerOnlyAccess access;
  if (forOwner && access.get() != nullptr) {
    constexpr DWORD changing = writing | WRITE_DAC | WRITE_OWNER;
    Handle handle = openHandle(name, changing, 0, CREATE_NEW, flags, access.get());
    const DWORD code = ::GetLastError();
    if (handle.isOpen() || code == ERROR_FILE_EXISTS || code == ERROR_PATH_NOT_FOUND) return handle;
  }
  return openHandle(name, writing, forOwner ? 0 : FILE_SHARE_READ, CREATE_NEW, flags);
}

CString folderOf(const CString& path) {
  const std::u16string_view text(path);
  return CString(text.substr(0, text.find_last_of(u"/\\:") + 1));
}

CString temporaryIn(const CString& folder) {
  static std::atomic<std::uint64_t> counter{0};
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  const std::uint64_t number = (static_cast<std::uint64_t>(now) << 8) + counter.fetch_add(1);
  char name[32];
  std::snprintf(name, sizeof name, ".kpx-%016llx.tmp", static_cast<unsigned long long>(number));
  return folder + CString::fromUtf8(name);
}

/// Removes what programs that are gone have left in a folder: files that nobody has open.
void removeLeftovers(const CString& folder) {
  const CString pattern = folder + CString(u".kpx-*");
  const SystemPath path(pattern);
  WIN32_FIND_DATAW entry = {};
  const HANDLE search =
      ::FindFirstFileExW(path.get(), FindExInfoBasic, &entry, FindExSearchNameMatch, nullptr, 0);
  if (search == INVALID_HANDLE_VALUE) return;
  const std::unique_ptr<void, BOOL(WINAPI*)(HANDLE)> closer(search, &::FindClose);
  do {
    const std::wstring_view found(entry.cFileName);
    if (!found.ends_with(L".tmp") && !found.ends_with(L".lock")) continue;
    const CString file = folder + CString(entry.cFileName);
    const Handle handle =
        openHandle(SystemPath(file), DELETE, 0, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT);
    if (handle.isOpen()) removeOpened(handle.get());
  } while (::FindNextFileW(search, &entry));
}

/// Folders in which many files are replaced one after the other are looked through once.
bool wasLookedThrough(const CString& folder) noexcept {
  static std::atomic<std::uint64_t> last{0};
  ContentDigest digest;
  const std::u16string_view text(folder);
  digest.add({reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t)});
  return last.exchange(digest.value(), std::memory_order_relaxed) == digest.value();
}

/// Whether a code says that the volume or its server has no such operation.
bool isUnknownThere(DWORD code) noexcept {
  return code == ERROR_INVALID_FUNCTION || code == ERROR_NOT_SUPPORTED ||
         code == ERROR_CALL_NOT_IMPLEMENTED;
}

}  // namespace

bool AccessRecord::read(HANDLE file) {
  DWORD size = 0;
  bytes_.resize(1024);
  while (!::GetKernelObjectSecurity(file, withOwner, get(), static_cast<DWORD>(bytes_.size()),
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

bool AccessRecord::giveTo(HANDLE file) noexcept {
  return ::SetKernelObjectSecurity(file, withOwner, get()) ||
         ::SetKernelObjectSecurity(file, DACL_SECURITY_INFORMATION, get());
}

FileResult WindowsReplacementFile::open(const CString& model) {
  if (!model.IsEmpty()) {
    if (const FileResult result = readModel(model); !result) return result;
  }
  const CString folder = folderOf(target_);
  if (flushed_ || !wasLookedThrough(folder)) removeLeftovers(folder);
  FileResult result;
  for (int attempt = 0; attempt < 16; ++attempt) {
    const CString path = temporaryIn(folder);
    const SystemPath name(path);
    file_ = createTemporary(name, hasModel_);
    if (file_.isOpen()) return {};
    result = failureAt(name);
    if (result.status != FileStatus::exists) break;
  }
  return result;
}

FileResult WindowsReplacementFile::readModel(const CString& model) {
  const SystemPath name(model);
  if (!name.usable()) return {FileStatus::badName, 0};
  // Closed again before the file is replaced: older systems replace no file that is open.
  const Handle handle = openHandle(name, READ_CONTROL | FILE_READ_ATTRIBUTES, shareAll,
                                   OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  if (!handle.isOpen()) return failureAt(name);
  hasAccess_ = access_.read(handle.get());
  // A volume without access lists has none to keep.
  if (!hasAccess_ && !isUnknownThere(::GetLastError())) return lastError();
  BY_HANDLE_FILE_INFORMATION found = {};
  if (!::GetFileInformationByHandle(handle.get(), &found)) return lastError();
  attributes_ = found.dwFileAttributes;
  hasModel_ = true;
  return {};
}

WindowsReplacementFile::~WindowsReplacementFile() {
  if (file_.isOpen() && !isInPlace_) removeOpened(file_.get());
}

FileResult WindowsReplacementFile::write(std::string_view bytes) {
  return writeAll(file_.get(), bytes);
}

FileResult WindowsReplacementFile::takeAttributes() {
  if (!hasModel_) return {};
  AccessRecord present;
  // Mostly both have what their folder hands on. Some servers let nobody change that.
  const bool isSame = !hasAccess_ || (present.read(file_.get()) && present == access_);
  if (!isSame && !access_.giveTo(file_.get())) return lastError();
  // A hidden file stays hidden, a protected one protected.
  constexpr DWORD kept = FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM |
                         FILE_ATTRIBUTE_NOT_CONTENT_INDEXED;
  FILE_BASIC_INFO basic = {};
  if (!::GetFileInformationByHandleEx(file_.get(), FileBasicInfo, &basic, sizeof basic)) {
    return lastError();
  }
  if ((basic.FileAttributes & kept) == (attributes_ & kept)) return {};
  constexpr DWORD settable = kept | FILE_ATTRIBUTE_ARCHIVE;
  const DWORD attributes = (basic.FileAttributes & settable & ~kept) | (attributes_ & kept);
  // Times of 0 stay as they are. No attributes at all have a mark of their own.
  basic = {};
  basic.FileAttributes = attributes != 0 ? attributes : FILE_ATTRIBUTE_NORMAL;
  return ::SetFileInformationByHandle(file_.get(), FileBasicInfo, &basic, sizeof basic)
             ? FileResult{}
             : lastError();
}

FileResult WindowsReplacementFile::flush() { return flushHandle(file_.get()); }

// It stays open until it is in place, so that nobody else can get at it.
FileResult WindowsReplacementFile::close() { return {}; }

FileResult WindowsReplacementFile::rename(const SystemPath& target) {
  struct Request {  // FILE_RENAME_INFO with flags, which older headers do not declare
    DWORD flags;
    HANDLE folder;
    DWORD nameBytes;
    wchar_t name[1];
  };
  constexpr auto renameWithFlags = static_cast<FILE_INFO_BY_HANDLE_CLASS>(22);
  const DWORD replace = onlyNew_ ? 0 : 1;
  constexpr DWORD evenIfOpen = 2;

  // The system takes complete names only.
  std::wstring complete(::GetFullPathNameW(target.get(), 0, nullptr, nullptr), L'\0');
  const DWORD length = ::GetFullPathNameW(target.get(), static_cast<DWORD>(complete.size()),
                                          complete.data(), nullptr);
  if (length == 0 || length >= complete.size()) return {FileStatus::badName, 0};
  const std::size_t nameBytes = length * sizeof(wchar_t);
  std::string bytes(sizeof(Request) + nameBytes, '\0');
  const auto rename = [&](FILE_INFO_BY_HANDLE_CLASS kind, DWORD flags) {
    Request head = {};
    head.flags = flags;
    head.nameBytes = static_cast<DWORD>(nameBytes);
    std::memcpy(bytes.data(), &head, sizeof head);
    std::memcpy(bytes.data() + offsetof(Request, name), complete.data(), nameBytes);
    return ::SetFileInformationByHandle(file_.get(), kind, bytes.data(),
                                        static_cast<DWORD>(bytes.size())) != 0;
  };
  // Virus scanners and indexers keep a file that was just written for a moment.
  constexpr DWORD longestPause = 64;
  for (DWORD pause = 1;; pause *= 2) {
    // Newer systems can do it even if others have the old file open, if they let it be removed.
    if (rename(renameWithFlags, replace | evenIfOpen) || rename(FileRenameInfo, replace)) return {};
    const FileResult result = failureAt(target);
    const bool mayPass =
        result.systemCode == ERROR_SHARING_VIOLATION || result.systemCode == ERROR_ACCESS_DENIED;
    if (!mayPass || result.status != FileStatus::noPermission || pause > longestPause) {
      return result;
    }
    ::Sleep(pause);
  }
}

FileResult WindowsReplacementFile::putInPlace(FileVersion* version) {
  const SystemPath target(target_);
  // Newer systems might put a file in the place of an empty folder.
  if (isFolder(target.get())) return {FileStatus::isFolder, 0};
  if (const FileResult result = rename(target); !result) return result;
  isInPlace_ = true;
  // The file itself is in place by now, so a failure here is none of the renaming.
  if (flushed_) flushHandle(file_.get());
  if (version == nullptr) return {};
  return versionOf(file_.get(), *version) ? FileResult{} : lastError();
}

}  // namespace kpx::detail
