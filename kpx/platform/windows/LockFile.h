#pragma once

#include "kpx/platform/LockFile.h"
#include "kpx/platform/windows/SystemCall.h"

namespace kpx::detail {

class WindowsLockFile final : public LockFile {
 public:
  /// The lock for the file of that name, which is no link.
  explicit WindowsLockFile(const CString& target);

  FileResult open() override;
  LockAnswer tryTake(LockPart part) noexcept override;
  void release(LockPart part) noexcept override;
  bool hasItsName() noexcept override;
  void removeName() noexcept override;
  void close() noexcept override;

 private:
  CString path_;
  Handle file_{INVALID_HANDLE_VALUE};
};

}  // namespace kpx::detail
