#pragma once

#include <memory>

#include "kpx/platform/FileSystem.h"

namespace kpx::detail {

/// What `FileSystem::openInput` does on this system.
FileResult openWindowsInput(const CString& path, std::unique_ptr<InputFile>& file);

/// What `FileSystem::openUpdate` does on this system.
FileResult openWindowsUpdate(const CString& path, UpdateMode mode,
                             std::unique_ptr<UpdateFile>& file);

}  // namespace kpx::detail
