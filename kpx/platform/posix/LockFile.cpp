#include "kpx/platform/posix/LockFile.h"

#include <cstdio>

#include "kpx/platform/posix/FileStatus.h"

namespace kpx::detail {

namespace {

struct flock rangeOf(off_t byte, short type) noexcept {
  struct flock range = {};
  range.l_type = type;
  range.l_whence = SEEK_SET;
  range.l_start = byte;
  range.l_len = 1;
  return range;
}

}  // namespace

LockAnswer tryLockByte(int descriptor, off_t byte) noexcept {
  struct flock range = rangeOf(byte, F_WRLCK);
  if (uninterrupted([&] { return ::fcntl(descriptor, F_OFD_SETLK, &range); }) == 0) {
    return LockAnswer::taken;
  }
  return errno == EAGAIN || errno == EACCES ? LockAnswer::held : LockAnswer::unknown;
}

FileResult PosixLockFile::find(const CString& path) {
  if (const FileResult result = place_.find(path); !result) return result;
  ContentDigest digest;
  digest.add(place_.name());
  std::snprintf(name_, sizeof name_, ".kpx-%016llx.lock",
                static_cast<unsigned long long>(digest.value()));
  return {};
}

FileResult PosixLockFile::open() {
  constexpr int flags = O_RDWR | O_CREAT | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
  file_ = Descriptor(uninterrupted([&] { return ::openat(place_.folder(), name_, flags, 0666); }));
  struct stat status;
  if (!file_.isOpen() || ::fstat(file_.get(), &status) != 0) return lastError();
  return S_ISREG(status.st_mode) ? FileResult{} : FileResult{FileStatus::notRegularFile, 0};
}

LockAnswer PosixLockFile::tryTake(LockPart part) noexcept {
  return tryLockByte(file_.get(), static_cast<off_t>(part));
}

void PosixLockFile::release(LockPart part) noexcept {
  struct flock range = rangeOf(static_cast<off_t>(part), F_UNLCK);
  uninterrupted([&] { return ::fcntl(file_.get(), F_OFD_SETLK, &range); });
}

bool PosixLockFile::hasItsName() noexcept {
  struct stat status;
  return ::fstat(file_.get(), &status) == 0 && isNameOf(place_.folder(), name_, status);
}

void PosixLockFile::removeName() noexcept { ::unlinkat(place_.folder(), name_, 0); }

void PosixLockFile::close() noexcept { file_.close(); }

}  // namespace kpx::detail
