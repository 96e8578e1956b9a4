#pragma once

#include <sys/stat.h>

#include <string>

#include "kpx/platform/posix/Descriptor.h"

namespace kpx::detail {

/// A name in an opened folder: what is done there stays in this folder, whoever renames what
/// above it meanwhile.
class FilePlace {
 public:
  /// Finds the place that a path leads to, with the links at its end followed, also to a file that
  /// does not exist (yet). Links that somebody else could have laid out for this user are refused.
  FileResult find(const CString& path);

  int folder() const noexcept { return folder_.get(); }
  const std::string& name() const noexcept { return name_; }

  /// What has the name now, links not followed; false with the system's error code.
  bool status(struct stat& status) const noexcept;
  /// Whether what belongs to `owner` may be used here: in folders where everybody may write, but
  /// only to what is his own, not what belongs to neither this user nor the folder's owner.
  bool trusts(uid_t owner) const noexcept;
  /// Whether somebody else may rename and remove this user's files.
  bool isOpenToOthers() const noexcept;
  /// Waits until the volume has the names of the folder. The files are in place by then, so a
  /// failure is none of what was done to them.
  void flush() const noexcept;

 private:
  FileResult step(const std::string& path);

  Descriptor folder_;
  bool readable_ = false;  // else only names in it can be used
  struct stat folderStatus_ = {};
  std::string name_;
};

/// Whether a name in a folder is that of an opened file.
bool isNameOf(int folder, const char* name, const struct stat& file) noexcept;

}  // namespace kpx::detail
