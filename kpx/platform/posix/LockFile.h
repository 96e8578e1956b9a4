#pragma once

#include <fcntl.h>

#include "kpx/platform/LockFile.h"
#include "kpx/platform/posix/FilePlace.h"

namespace kpx::detail {

/// Asks for the lock on a byte of an open file, which need not exist. It belongs to this opening of
/// the file and ends with it, also when the program is killed.
LockAnswer tryLockByte(int descriptor, off_t byte) noexcept;

class PosixLockFile final : public LockFile {
 public:
  /// Finds the folder of the file that the lock is for.
  FileResult find(const CString& path);

  FileResult open() override;
  LockAnswer tryTake(LockPart part) noexcept override;
  void release(LockPart part) noexcept override;
  bool hasItsName() noexcept override;
  void removeName() noexcept override;
  void close() noexcept override;

 private:
  FilePlace place_;
  char name_[32] = "";
  Descriptor file_;
};

}  // namespace kpx::detail
