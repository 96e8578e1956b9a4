#pragma once

#include <windows.h>

#include <cstdint>
#include <string_view>

#include "kpx/platform/FileVersion.h"

namespace kpx::detail {

/// What an open file is now; false when it cannot be read.
inline bool versionOf(HANDLE handle, FileVersion& version) noexcept {
  BY_HANDLE_FILE_INFORMATION found = {};
  if (!::GetFileInformationByHandle(handle, &found)) return false;
  const auto joined = [](DWORD high, DWORD low) { return std::uint64_t{high} << 32 | low; };
  // The system counts in steps of 100 ns since 1601.
  constexpr std::int64_t from1601To1970 = 116'444'736'000'000'000;
  const auto written = static_cast<std::int64_t>(
      joined(found.ftLastWriteTime.dwHighDateTime, found.ftLastWriteTime.dwLowDateTime));
  version.exists = true;
  version.volume = found.dwVolumeSerialNumber;
  version.number = joined(found.nFileIndexHigh, found.nFileIndexLow);
  version.size = joined(found.nFileSizeHigh, found.nFileSizeLow);
  version.modified = (written - from1601To1970) * 100;
  return true;
}

/// Adds the digest to the version of a file whose content was just read, where it needs one.
inline void addDigest(FileVersion& version, std::string_view content) noexcept {
  if (!needsDigest(version)) return;
  ContentDigest digest;
  digest.add(content);
  version.digest = digest.value();
}

/// Lets an open file vanish, as soon as the system can do that.
inline void removeOpened(HANDLE handle) noexcept {
  // FILE_DISPOSITION_INFO_EX, which older headers do not declare: at once, not with the last
  // handle.
  DWORD flags = 0x1 | 0x2;
  constexpr auto withFlags = static_cast<FILE_INFO_BY_HANDLE_CLASS>(21);
  if (::SetFileInformationByHandle(handle, withFlags, &flags, sizeof flags)) return;
  FILE_DISPOSITION_INFO removal = {TRUE};
  ::SetFileInformationByHandle(handle, FileDispositionInfo, &removal, sizeof removal);
}

}  // namespace kpx::detail
