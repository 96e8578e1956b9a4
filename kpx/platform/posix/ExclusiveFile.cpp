#include "kpx/platform/ExclusiveFile.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>

#include "kpx/platform/posix/Descriptor.h"
#include "kpx/text/Utf.h"
#include "kpx/text/Utf8Sequence.h"

namespace kpx {

using detail::lastError;
using detail::uninterrupted;

namespace {

using SteadyClock = std::chrono::steady_clock;

/// A path as the system takes it, without memory of its own.
class StackPath {
 public:
  explicit StackPath(std::u16string_view path) noexcept {
    std::size_t length = 0;
    for (std::size_t i = 0; i < path.size();) {
      const char32_t code = nextCodePoint(path, i);
      char bytes[4];
      if (code == 0) return;
      const std::size_t count = detail::encodeUtf8(code, bytes);
      if (length + count >= sizeof bytes_) return;
      std::copy(bytes, bytes + count, bytes_ + length);
      length += count;
    }
    bytes_[length] = '\0';
    usable_ = length != 0;
  }
  bool usable() const noexcept { return usable_; }
  const char* get() const noexcept { return bytes_; }

 private:
  char bytes_[4096];
  bool usable_ = false;
};

/// Tries for the lock until it is free or the time is over.
bool lock(int descriptor, std::chrono::milliseconds patience) noexcept {
  const SteadyClock::time_point end = SteadyClock::now() + patience;
  long pause = 200'000;  // nanoseconds
  while (uninterrupted([&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); }) != 0) {
    // Where a volume knows no locks, a line that may get mixed up is better than none.
    if (errno != EWOULDBLOCK) return true;
    if (SteadyClock::now() >= end) {
      errno = EWOULDBLOCK;
      return false;
    }
    const timespec wait{0, pause};
    ::nanosleep(&wait, nullptr);
    pause = std::min(pause * 2, 5'000'000L);
  }
  return true;
}

/// Whether a file is this user's alone, so that nobody else gets to read what is written.
bool isPrivate(int descriptor) noexcept {
  struct stat status;
  return ::fstat(descriptor, &status) == 0 && S_ISREG(status.st_mode) &&
         status.st_uid == ::geteuid() && status.st_nlink == 1 && ::fchmod(descriptor, 0600) == 0;
}

}  // namespace

FileResult ExclusiveFile::open(std::u16string_view path, Mode mode,
                               std::chrono::milliseconds patience) noexcept {
  close();
  const StackPath name(path);
  if (!name.usable()) return {FileStatus::badName, 0};
  // A pipe that nobody reads must not hold the caller up.
  const int common = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY | O_NONBLOCK;
  const int descriptor = uninterrupted([&] {
    return mode == Mode::append ? ::open(name.get(), common, 0666)
                                : ::open(name.get(), common | O_NOFOLLOW, 0600);
  });
  if (descriptor == -1) return lastError();
  FileResult result;
  if (!lock(descriptor, patience)) {
    result = {FileStatus::noPermission, errno};
  } else if (mode == Mode::rewrite) {
    if (!isPrivate(descriptor)) {
      result = {FileStatus::noPermission, 0};
    } else if (::ftruncate(descriptor, 0) != 0) {
      result = lastError();
    }
  }
  if (!result) {
    ::close(descriptor);
    return result;
  }
  handle_ = descriptor;
  return {};
}

FileResult ExclusiveFile::write(std::string_view bytes) noexcept {
  const auto descriptor = static_cast<int>(handle_);
  struct stat before;
  const bool canTakeBack = ::fstat(descriptor, &before) == 0 && S_ISREG(before.st_mode);
  const detail::SizeSignalScope scope;
  const ssize_t written =
      uninterrupted([&] { return ::write(descriptor, bytes.data(), bytes.size()); });
  if (written < 0) return lastError();
  if (static_cast<std::size_t>(written) == bytes.size()) return {};
  if (canTakeBack && ::ftruncate(descriptor, before.st_size) != 0) return lastError();
  return {FileStatus::noSpace, ENOSPC};
}

void ExclusiveFile::close() noexcept {
  if (isOpen()) ::close(static_cast<int>(handle_));
  handle_ = none;
}

}  // namespace kpx
