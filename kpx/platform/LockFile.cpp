#include "kpx/platform/LockFile.h"

#include <algorithm>
#include <thread>
#include <utility>

namespace kpx {

FileLock::~FileLock() = default;

namespace detail {

namespace {

using SteadyClock = std::chrono::steady_clock;

class HeldLock final : public FileLock {
 public:
  explicit HeldLock(std::unique_ptr<LockFile> file) noexcept : file_(std::move(file)) {}
  HeldLock(const HeldLock&) = delete;
  HeldLock& operator=(const HeldLock&) = delete;
  ~HeldLock() override {
    // The last one takes the file away; where somebody waits he will use it.
    if (file_->tryTake(LockPart::line) == LockAnswer::taken && file_->hasItsName()) {
      file_->removeName();
    }
    file_->close();
  }

 private:
  std::unique_ptr<LockFile> file_;
};

/// Asks until the lock is free or the time is over.
LockAnswer waitFor(LockFile& file, LockPart part, SteadyClock::time_point end) {
  using std::chrono::microseconds;
  microseconds pause(100);
  for (;;) {
    const LockAnswer answer = file.tryTake(part);
    const SteadyClock::time_point now = SteadyClock::now();
    if (answer != LockAnswer::held || now >= end) return answer;
    std::this_thread::sleep_for(std::min(pause, std::chrono::ceil<microseconds>(end - now)));
    pause = std::min(pause * 2, microseconds(2000));
  }
}

}  // namespace

LockFile::~LockFile() = default;

FileResult waitForLock(std::unique_ptr<LockFile> file, std::chrono::milliseconds patience,
                       std::unique_ptr<FileLock>& lock) {
  const SteadyClock::time_point end = SteadyClock::now() + patience;
  for (;;) {
    if (const FileResult result = file->open(); !result) return result;
    LockAnswer answer = waitFor(*file, LockPart::line, end);
    if (answer == LockAnswer::taken) answer = waitFor(*file, LockPart::change, end);
    if (answer == LockAnswer::held) {
      file->close();
      return {FileStatus::locked, 0};
    }
    file->release(LockPart::line);
    // The one before may have taken the file away.
    if (answer == LockAnswer::unknown || file->hasItsName()) break;
    file->close();
  }
  lock = std::make_unique<HeldLock>(std::move(file));
  return {};
}

}  // namespace detail

}  // namespace kpx
