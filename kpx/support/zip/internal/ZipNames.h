#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>

#include "kpx/support/zip/ZipArchive.h"
#include "kpx/text/CString.h"

namespace kpx::detail {

/// The name of an entry as text: UTF-8 when the flag says so and the bytes are UTF-8, or from the
/// extra field with the Unicode name when that belongs to these bytes; else code page 437.
CString zipEntryName(std::string_view stored, std::uint16_t flags, std::string_view extra);

/// Turns the name of an entry into a path below the destination, with "/" between the names.
/// Both slashes separate. Answers `done` or why the name is refused; the path is empty then, as it
/// is for a name that stands for the destination itself ("./").
ZipStatus zipEntryPath(const CString& name, CString& path);

/// Whether a name ends like that of a folder.
bool isZipFolderName(const CString& name) noexcept;

/// Which paths are taken, without regard to case, as files and as folders. The cost grows with
/// the length of the paths.
class ZipPathClaims {
 public:
  /// Takes the path of an entry and the folders above it. Gives the entry the status `sameFile`
  /// when another file has its path but for case, and `fileAndFolder` when a file would lie where a
  /// folder is, or a folder or something in it where a file is. Entries of the very same path are
  /// marked as `shared`. They must stay where they are as long as this object.
  void claim(ZipEntry& entry);

 private:
  struct Place {
    std::uint32_t number;
    ZipEntry* file;  // nullptr for a folder
  };
  std::map<std::pair<std::uint32_t, std::u16string>, Place> places_;
};

}  // namespace kpx::detail
