#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

#include "kpx/platform/FileSystem.h"

namespace kpx::detail {

/// What came of asking for a lock.
enum class LockAnswer : std::uint8_t {
  taken,
  held,     // by another program or another part of this one
  unknown,  // the volume knows no locks
};

/// The two locks of a lock file. Whoever wants the file itself first gets in line: so nobody who
/// changes a file again and again can keep the others away from it.
enum class LockPart : std::uint8_t { line, change };

/// The file beside another one whose locks stand for the right to change that one. Closing it, or
/// the end of the program, gives back what was taken.
class LockFile {
 public:
  virtual ~LockFile();
  /// Opens or makes the file of that name.
  virtual FileResult open() = 0;
  virtual LockAnswer tryTake(LockPart part) noexcept = 0;
  virtual void release(LockPart part) noexcept = 0;
  /// Whether the opened file still has the name, so that others will find it.
  virtual bool hasItsName() noexcept = 0;
  virtual void removeName() noexcept = 0;
  virtual void close() noexcept = 0;
};

/// Waits for the right that a lock file stands for.
FileResult waitForLock(std::unique_ptr<LockFile> file, std::chrono::milliseconds patience,
                       std::unique_ptr<FileLock>& lock);

}  // namespace kpx::detail
