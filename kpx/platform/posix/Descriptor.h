#pragma once

#include <fcntl.h>
#include <signal.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <string>
#include <string_view>
#include <utility>

#include "kpx/platform/posix/SystemCall.h"
#include "kpx/text/Utf.h"

namespace kpx::detail {

/// A path as the system takes it.
class SystemPath {
 public:
  explicit SystemPath(std::u16string_view path)
      : bytes_(utf8FromUtf16(path)),
        usable_(!bytes_.empty() && bytes_.find('\0') == std::string::npos) {}

  bool usable() const noexcept { return usable_; }
  const char* get() const noexcept { return bytes_.c_str(); }
  const std::string& bytes() const noexcept { return bytes_; }

 private:
  std::string bytes_;
  bool usable_;
};

inline constexpr FileResult badName{FileStatus::badName, 0};

/// An open file of the system. Destroying it closes it.
class Descriptor {
 public:
  explicit Descriptor(int number = -1) noexcept : number_(number) {}
  Descriptor(Descriptor&& other) noexcept : number_(other.release()) {}
  Descriptor& operator=(Descriptor&& other) noexcept {
    std::swap(number_, other.number_);
    return *this;
  }
  ~Descriptor() {
    if (number_ != -1) ::close(number_);
  }
  int get() const noexcept { return number_; }
  bool isOpen() const noexcept { return number_ != -1; }
  int release() noexcept { return std::exchange(number_, -1); }

  /// Closes it now, to tell what the system found out only then.
  FileResult close() noexcept {
    const int number = release();
    // After EINTR the descriptor is closed all the same.
    return number == -1 || ::close(number) == 0 || errno == EINTR ? FileResult{} : lastError();
  }

 private:
  int number_;
};

/// Some file systems know no flushing; that is no failure of the write.
inline FileResult flushDescriptor(int number) noexcept {
  if (uninterrupted([&] { return ::fsync(number); }) == 0) return {};
  return errno == EINVAL || errno == ENOTSUP ? FileResult{} : lastError();
}

/// While it lives, a limit on the size of files is a failure of this thread's writes like any
/// other: the signal for it, which would end the program, is taken back.
class SizeSignalScope {
 public:
  SizeSignalScope() noexcept;
  SizeSignalScope(const SizeSignalScope&) = delete;
  SizeSignalScope& operator=(const SizeSignalScope&) = delete;
  ~SizeSignalScope();

 private:
  sigset_t signal_;
  sigset_t before_;
  bool wasPending_;
};

/// Writes all bytes or fails.
FileResult writeAll(int number, std::string_view bytes) noexcept;
/// The same from a place on.
FileResult writeAllAt(int number, std::uint64_t offset, std::string_view bytes) noexcept;

}  // namespace kpx::detail
