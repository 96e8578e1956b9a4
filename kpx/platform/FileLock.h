#pragma once

#include <chrono>

namespace kpx {

/// How long a program waits, unless it says otherwise, for another one to finish its change.
inline constexpr std::chrono::milliseconds changePatience{10'000};

/// The right to read, change and replace a file while no other program that asks for this right
/// does: `FileSystem::lock`. It is advice: programs that just write the file are not held up, and
/// readers never are. It holds for the name, so it outlives the renaming that replaces a file, and
/// for a file that is still to be made. Destroying it gives it back; the system does so for a
/// program that ends in any other way.
class FileLock {
 public:
  virtual ~FileLock();
};

}  // namespace kpx
