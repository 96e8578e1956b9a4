#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "tools/kpx/Input.h"

namespace kpx::tool {

/// A file that a verb reads, changes and writes back, or standard input, which is answered on
/// standard output. Every verb that changes a file in place does it through this class.
class FileChange {
 public:
  enum class Missing : std::uint8_t { fails, isEmpty };

  /// Reads the file. Raises a Failure that says why when it cannot.
  explicit FileChange(std::string path, Missing missing = Missing::fails);

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
  Input input_;
  bool isNew_ = false;
  bool keepsOld_ = false;
};

}  // namespace kpx::tool
