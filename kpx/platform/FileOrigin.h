#pragma once

#include "kpx/platform/FileSystem.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// What becomes of a file that another program has changed since it was read.
enum class SaveMode : std::uint8_t {
  overwrite,
  unlessChanged,  // it is kept and the answer is `changed`; the save waits for those who hold the
                  // file's lock
};

/// Where an object in memory was read from, or written to last, and what the file was then.
class KPX_API FileOrigin {
 public:
  /// Reads a whole file and remembers it.
  FileResult read(const CString& path, FileBytes& bytes);
  /// Replaces a file and remembers it. `unlessChanged` is about the remembered file only: others
  /// are overwritten.
  FileResult replace(const CString& path, const FileSystem::ContentWriter& writeContent,
                     SaveMode mode);

 private:
  CString path_;
  FileVersion version_;
};

}  // namespace kpx
