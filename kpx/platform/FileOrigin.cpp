#include "kpx/platform/FileOrigin.h"

#include <utility>

namespace kpx {

FileResult FileOrigin::read(const CString& path, FileBytes& bytes) {
  CString remembered = path;
  const FileResult result = fileSystem().read(path, bytes, FileSystem::maxReadBytes, &version_);
  path_ = result ? std::move(remembered) : CString();
  return result;
}

FileResult FileOrigin::replace(const CString& path, const FileSystem::ContentWriter& writeContent,
                               SaveMode mode) {
  CString remembered = path;
  FileVersion version = version_;
  FileResult result;
  if (mode == SaveMode::unlessChanged && path == path_) {
    result = fileSystem().replaceUnchanged(path, writeContent, version);
  } else {
    ReplaceOptions options;
    options.written = &version;
    result = fileSystem().replaceFile(path, writeContent, options);
  }
  if (!result) return result;
  path_ = std::move(remembered);
  version_ = version;
  return {};
}

}  // namespace kpx
