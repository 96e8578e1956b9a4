#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string_view>

#include "kpx/platform/FileVersion.h"

namespace kpx::detail {

inline bool isSameFile(const struct stat& one, const struct stat& other) noexcept {
  return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

inline FileVersion versionOf(const struct stat& status) noexcept {
  constexpr std::int64_t second = 1'000'000'000;
  FileVersion version;
  version.exists = true;
  version.volume = static_cast<std::uint64_t>(status.st_dev);
  version.number = static_cast<std::uint64_t>(status.st_ino);
  version.size = static_cast<std::uint64_t>(status.st_size);
  version.modified = status.st_mtim.tv_sec * second + status.st_mtim.tv_nsec;
  return version;
}

/// The version of a file whose content was just read.
inline FileVersion versionOf(const struct stat& status, std::string_view content) noexcept {
  FileVersion version = versionOf(status);
  if (needsDigest(version)) {
    ContentDigest digest;
    digest.add(content);
    version.digest = digest.value();
  }
  return version;
}

}  // namespace kpx::detail
