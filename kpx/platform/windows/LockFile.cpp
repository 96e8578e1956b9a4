#include "kpx/platform/windows/LockFile.h"

#include <cstdio>
#include <cstring>

#include "kpx/platform/windows/FileStatus.h"
#include "kpx/text/CaseFold.h"

namespace kpx::detail {

namespace {

OVERLAPPED placeOf(LockPart part) noexcept {
  OVERLAPPED place = {};
  place.Offset = static_cast<DWORD>(part);
  return place;
}

}  // namespace

WindowsLockFile::WindowsLockFile(const CString& target) {
  const std::u16string_view path(target);
  const std::size_t folderEnd = path.find_last_of(u"/\\:") + 1;
  ContentDigest digest;
  for (const char16_t unit : path.substr(folderEnd)) {
    const char16_t folded = foldCase(unit);
    char bytes[sizeof folded];
    std::memcpy(bytes, &folded, sizeof folded);
    digest.add({bytes, sizeof bytes});
  }
  char name[32];
  std::snprintf(name, sizeof name, ".kpx-%016llx.lock",
                static_cast<unsigned long long>(digest.value()));
  path_ = CString(path.substr(0, folderEnd)) + CString::fromUtf8(name);
}

FileResult WindowsLockFile::open() {
  const SystemPath name(path_);
  if (!name.usable()) return {FileStatus::badName, 0};
  constexpr DWORD access = GENERIC_READ | GENERIC_WRITE | DELETE;
  constexpr DWORD flags = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_OPEN_REPARSE_POINT;
  // A file that was removed keeps its name until everybody has closed it, and whoever looks for
  // leftovers has it for himself for a moment.
  constexpr DWORD longestPause = 128;
  for (DWORD pause = 1;; pause *= 2) {
    file_ = openHandle(name, access, shareAll, OPEN_ALWAYS, flags);
    if (file_.isOpen()) return {};
    const FileResult result = failureAt(name);
    if (result.status != FileStatus::noPermission || pause > longestPause) return result;
    ::Sleep(pause);
  }
}

LockAnswer WindowsLockFile::tryTake(LockPart part) noexcept {
  OVERLAPPED place = placeOf(part);
  constexpr DWORD flags = LOCKFILE_EXCLUSIVE_LOCK | LOCKFILE_FAIL_IMMEDIATELY;
  if (::LockFileEx(file_.get(), flags, 0, 1, 0, &place)) return LockAnswer::taken;
  const DWORD code = ::GetLastError();
  return code == ERROR_LOCK_VIOLATION || code == ERROR_IO_PENDING ? LockAnswer::held
                                                                  : LockAnswer::unknown;
}

void WindowsLockFile::release(LockPart part) noexcept {
  OVERLAPPED place = placeOf(part);
  ::UnlockFileEx(file_.get(), 0, 1, 0, &place);
}

bool WindowsLockFile::hasItsName() noexcept {
  FileVersion opened;
  FileVersion found;
  const SystemPath name(path_);
  const Handle handle =
      openHandle(name, FILE_READ_ATTRIBUTES, shareAll, OPEN_EXISTING, FILE_FLAG_OPEN_REPARSE_POINT);
  return handle.isOpen() && versionOf(handle.get(), found) && versionOf(file_.get(), opened) &&
         found.volume == opened.volume && found.number == opened.number;
}

void WindowsLockFile::removeName() noexcept { removeOpened(file_.get()); }

void WindowsLockFile::close() noexcept { file_.close(); }

}  // namespace kpx::detail
