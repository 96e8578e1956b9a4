#pragma once

#include <cstdint>
#include <vector>

#include "kpx/platform/FileSystem.h"
#include "kpx/support/zip/ZipArchive.h"

namespace kpx::detail {

/// What the directory of an archive tells.
struct ZipDirectory {
  ZipStatus status = ZipStatus::done;
  FileResult fileResult;     // with `unreadable`
  std::uint64_t offset = 0;  // where the directory begins; content ends there
  std::vector<ZipEntry> entries;
};

/// Finds and reads the directory at the end of the file and gives each entry its status as far as
/// names, kinds, methods, sizes and places tell; limits on totals are left to the caller.
ZipDirectory readZipDirectory(InputFile& file, std::uint64_t maxEntries);

}  // namespace kpx::detail
