#include "kpx/platform/posix/Descriptor.h"

#include <time.h>

namespace kpx::detail {

SizeSignalScope::SizeSignalScope() noexcept {
  sigset_t pending;
  ::sigemptyset(&signal_);
  ::sigaddset(&signal_, SIGXFSZ);
  wasPending_ = ::sigpending(&pending) == 0 && ::sigismember(&pending, SIGXFSZ) == 1;
  ::pthread_sigmask(SIG_BLOCK, &signal_, &before_);
  errno = 0;
}

SizeSignalScope::~SizeSignalScope() {
  const int kept = errno;
  const timespec now{0, 0};
  if (kept == EFBIG && !wasPending_) {
    uninterrupted([&] { return ::sigtimedwait(&signal_, nullptr, &now); });
  }
  ::pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  errno = kept;
}

namespace {

template <class Write>
FileResult writePieces(std::string_view bytes, Write write) noexcept {
  const SizeSignalScope scope;
  while (!bytes.empty()) {
    const ssize_t written = uninterrupted([&] { return write(bytes); });
    if (written < 0) return lastError();
    bytes.remove_prefix(static_cast<std::size_t>(written));
  }
  return {};
}

}  // namespace

FileResult writeAll(int number, std::string_view bytes) noexcept {
  return writePieces(
      bytes, [&](std::string_view piece) { return ::write(number, piece.data(), piece.size()); });
}

FileResult writeAllAt(int number, std::uint64_t offset, std::string_view bytes) noexcept {
  return writePieces(bytes, [&](std::string_view piece) {
    const std::uint64_t place = offset + (bytes.size() - piece.size());
    return ::pwrite(number, piece.data(), piece.size(), static_cast<off_t>(place));
  });
}

}  // namespace kpx::detail
