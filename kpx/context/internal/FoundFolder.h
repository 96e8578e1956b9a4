#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/text/CString.h"
#include "kpx/text/TextTools.h"

namespace kpx::detail {

/// Where a folder comes from.
enum class FolderSource : std::uint8_t {
  none,
  setByProgram,  // or found before
  environment,
  currentUser,  // the registry
  localMachine,
  helpFile,
  iniFile,
};

struct FoundFolder {
  CString path;
  FolderSource source = FolderSource::none;
};

/// What kpxGetProgPath, kpxGetSystemPath and kpxGetSystemPathFromRegistryOrIniFile answer.
FoundFolder findProgramFolder();
FoundFolder findSystemFolder();
FoundFolder findSystemFolderOrIni();

/// Whether a path begins at a root or a drive; the empty one does not.
constexpr bool isAbsolutePath(std::u16string_view path) noexcept {
  return (!path.empty() && isPathSeparator(path[0])) || (path.size() > 1 && path[1] == u':');
}

}  // namespace kpx::detail
