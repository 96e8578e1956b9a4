#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "kpx/platform/FileSystem.h"
#include "tools/kpx/CommandLine.h"
#include "tools/kpx/Input.h"

namespace kpx::tool {

/// Seconds to wait for other programs that are changing the same file.
struct ChangeWait {
  double seconds = std::chrono::duration<double>(changePatience).count();
};
/// Adds --wait to a verb.
void addWaitOption(OptionList& verb, ChangeWait& wait);

/// A file that a verb reads, changes and writes back, or standard input, which is answered on
/// standard output. Every verb that changes a file in place does it through this class: until it
/// ends, other programs that do the same wait, so that no change is lost.
class FileChange {
 public:
  enum class Missing : std::uint8_t { fails, isEmpty };

  /// Reads the file; without a wait only that, for a verb that will not write it. Raises a Failure
  /// that says why when it cannot.
  FileChange(std::string path, std::optional<ChangeWait> wait, Missing missing = Missing::fails);

  const Input& input() const noexcept { return input_; }
  bool isStandardInput() const noexcept { return path_ == "-"; }
  /// Whether the file does not exist yet.
  bool isNew() const noexcept { return isNew_; }

  /// Has `write` keep the old file under a name that none has: FILE.bak, FILE.bak2 and so on.
  void keepOld() noexcept { keepsOld_ = true; }
  /// Writes the bytes whole or not at all, unless they are those that were read. Raises a Failure
  /// when that is not possible.
  void write(std::string_view bytes);

 private:
  std::string writeBackup() const;

  std::string path_;
  std::unique_ptr<FileLock> lock_;
  Input input_;
  FileVersion version_;
  bool isNew_ = false;
  bool keepsOld_ = false;
};

}  // namespace kpx::tool
