#include "tools/kpx/FileChange.h"

#include <memory>
#include <utility>

#include "kpx/platform/FileSystem.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {
namespace {

/// Writes a file that must not exist, and that nobody may read who may not read the file `like`.
FileResult writeNew(const CString& path, std::string_view bytes, const CString& like) {
  FileInfo info;
  std::unique_ptr<OutputFile> file;
  FileResult result = fileSystem().info(like, info);
  if (result) result = fileSystem().open(path, OpenMode::create, file, info.permissions);
  if (!result) return result;
  result = file->write(bytes);
  if (result) result = file->flush();
  if (const FileResult closed = file->close(); result) result = closed;
  if (result) {
    fileSystem().copyPermissions(like, path);
  } else {
    fileSystem().remove(path);
  }
  return result;
}

bool isMissing(const std::string& path) {
  FileInfo info;
  return fileSystem().info(given(path), info).status == FileStatus::notFound;
}

}  // namespace

FileChange::FileChange(std::string path, Missing missing) : path_(std::move(path)) {
  isNew_ = missing == Missing::isEmpty && path_ != "-" && isMissing(path_);
  input_ = isNew_ ? Input{path_, {}, {}} : readInput(path_);
}

void FileChange::write(std::string_view bytes) {
  if (isStandardInput()) {
    print(bytes);
    return;
  }
  if (bytes == input_.bytes() && !isNew_) return;
  const std::string backup = keepsOld_ ? writeBackup() : std::string();
  try {
    replaceOrFail(path_, bytes);
  } catch (const Failure&) {
    if (!backup.empty()) fileSystem().remove(given(backup));
    throw;
  }
  if (!backup.empty() && backup != path_ + ".bak") complain("the old file is kept as " + backup);
}

std::string FileChange::writeBackup() const {
  std::string name = path_ + ".bak";
  FileResult result = writeNew(given(name), input_.bytes(), given(path_));
  for (int number = 2; result.status == FileStatus::exists; ++number) {
    name = path_ + ".bak" + std::to_string(number);
    result = writeNew(given(name), input_.bytes(), given(path_));
  }
  if (!result) {
    throw Failure(Exit::notWritten,
                  name + ": " + shown(result.message()) + "; nothing was changed");
  }
  return name;
}

}  // namespace kpx::tool
