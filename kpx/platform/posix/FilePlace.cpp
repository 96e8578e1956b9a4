#include "kpx/platform/posix/FilePlace.h"

#include <climits>

#include "kpx/platform/posix/FileStatus.h"

namespace kpx::detail {

FileResult FilePlace::find(const CString& path) {
  const SystemPath given(path);
  if (!given.usable()) return badName;
  std::string rest = given.bytes();
  constexpr int maxLinks = 40;
  for (int links = 0; links <= maxLinks; ++links) {
    if (const FileResult result = step(rest); !result) return result;
    char content[PATH_MAX];
    const ssize_t length = ::readlinkat(folder(), name_.c_str(), content, sizeof content);
    if (length < 0) {
      // No link, or nothing at all: the end is reached.
      return errno == EINVAL || errno == ENOENT ? FileResult{} : lastError();
    }
    struct stat link;
    if (!status(link)) return lastError();
    if (!trusts(link.st_uid)) return {FileStatus::noPermission, EACCES};
    rest.assign(content, static_cast<std::size_t>(length));
  }
  return {FileStatus::badName, ELOOP};
}

FileResult FilePlace::step(const std::string& path) {
  const std::size_t split = path.rfind('/') + 1;
  name_ = path.substr(split);
  // With a separator at its end a path means a folder.
  if (name_.empty()) name_ = ".";
  const std::string above = split == 0 ? "." : path.substr(0, split);
  const int from = folder_.isOpen() ? folder() : AT_FDCWD;
  const auto open = [&](int flags) {
    return uninterrupted(
        [&] { return ::openat(from, above.c_str(), flags | O_DIRECTORY | O_CLOEXEC); });
  };
  Descriptor opened(open(O_RDONLY));
  readable_ = opened.isOpen();
  // Who may not list a folder may still use the names in it.
  if (!readable_ && errno == EACCES) opened = Descriptor(open(O_PATH));
  if (!opened.isOpen() || ::fstat(opened.get(), &folderStatus_) != 0) return lastError();
  folder_ = std::move(opened);
  return {};
}

bool FilePlace::status(struct stat& status) const noexcept {
  return ::fstatat(folder(), name_.c_str(), &status, AT_SYMLINK_NOFOLLOW) == 0;
}

bool FilePlace::trusts(uid_t owner) const noexcept {
  constexpr mode_t everybodysOwn = S_ISVTX | S_IWOTH;
  return (folderStatus_.st_mode & everybodysOwn) != everybodysOwn || owner == ::geteuid() ||
         owner == folderStatus_.st_uid;
}

bool FilePlace::isOpenToOthers() const noexcept {
  const bool ownersAreTrusted = folderStatus_.st_uid == ::geteuid() || folderStatus_.st_uid == 0;
  const bool onlyOwnersRemove = (folderStatus_.st_mode & S_ISVTX) != 0;
  const bool othersWrite = (folderStatus_.st_mode & (S_IWGRP | S_IWOTH)) != 0;
  return !ownersAreTrusted || (othersWrite && !onlyOwnersRemove);
}

void FilePlace::flush() const noexcept {
  if (readable_) flushDescriptor(folder());
}

bool isNameOf(int folder, const char* name, const struct stat& file) noexcept {
  struct stat found;
  return ::fstatat(folder, name, &found, AT_SYMLINK_NOFOLLOW) == 0 && isSameFile(found, file);
}

}  // namespace kpx::detail
