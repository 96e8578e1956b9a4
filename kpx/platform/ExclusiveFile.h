#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

#include "kpx/platform/FileSystem.h"
#include "kpx/report/Export.h"

namespace kpx {

/// The line end of text files that programs of this system share.
inline constexpr std::string_view systemLineEnd =
#ifdef _WIN32
    "\r\n";
#else
    "\n";
#endif

/// A file that no two programs write at the same time: error logs and the trace. While it is open
/// here, other writers are denied: by the sharing mode on Windows, elsewhere by an advisory lock
/// that every program of the suite takes.
///
/// Nothing here throws, allocates or waits longer than it is told, so that a failure can be
/// logged whatever is left of the process.
class KPX_API ExclusiveFile {
 public:
  enum class Mode : std::uint8_t {
    append,   // created when it is missing, kept when it exists; links are followed
    rewrite,  // the same, but emptied, and never through a link; off Windows only for this user,
              // on Windows for whom its folder admits
  };

  ExclusiveFile() noexcept = default;
  ExclusiveFile(const ExclusiveFile&) = delete;
  ExclusiveFile& operator=(const ExclusiveFile&) = delete;
  ~ExclusiveFile() { close(); }

  /// Closes the file that was open before. While another writer has the file, tries again for
  /// `patience`; then the answer is `noPermission`. Paths of more than 4,095 bytes are refused.
  FileResult open(std::u16string_view path, Mode mode, std::chrono::milliseconds patience) noexcept;
  bool isOpen() const noexcept { return handle_ != none; }
  /// Writes at the end of the file, in one step. What a full volume took of the bytes is taken
  /// back, where the file is one of which that can be done.
  FileResult write(std::string_view bytes) noexcept;
  void close() noexcept;

 private:
  static constexpr std::intptr_t none = -1;
  std::intptr_t handle_ = none;  // the system's
};

}  // namespace kpx
