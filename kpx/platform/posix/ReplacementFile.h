#pragma once

#include <memory>

#include "kpx/platform/FileSystem.h"
#include "kpx/platform/posix/FilePlace.h"

namespace kpx::detail {

/// What takes the place of another file. All that it is given, it is given through its descriptor.
class PosixReplacementFile final : public ReplacementFile {
 public:
  PosixReplacementFile() noexcept = default;
  PosixReplacementFile(const PosixReplacementFile&) = delete;
  PosixReplacementFile& operator=(const PosixReplacementFile&) = delete;
  ~PosixReplacementFile() override;

  FileResult open(const CString& path, const ReplaceOptions& options);

  FileResult write(std::string_view bytes) override;
  FileResult takeAttributes() override;
  FileResult flush() override;
  FileResult close() override;
  FileResult putInPlace(FileVersion* version) override;

 private:
  FileResult openModel(const CString& path, const CString& attributesOf);
  FileResult openTemporary();
  bool hasItsName() const noexcept;
  FileResult rename() noexcept;

  FilePlace place_;
  Descriptor model_;  // the file whose attributes it gets, if there is one
  struct stat modelStatus_ = {};
  Descriptor file_;
  struct stat status_ = {};  // its identity
  char temporary_[32] = "";  // its name until it is in place
  bool flushed_ = true;
  bool onlyNew_ = false;
};

/// Removes what programs that are gone have left in a folder: files that nobody has locked.
void removeLeftovers(int folder) noexcept;

}  // namespace kpx::detail
