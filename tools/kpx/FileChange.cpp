#include "tools/kpx/FileChange.h"

#include <chrono>
#include <utility>

#include "tools/kpx/Exit.h"
#include "tools/kpx/Output.h"

namespace kpx::tool {
namespace {

[[noreturn]] void failWrite(const std::string& path, const FileResult& result) {
  throw Failure(Exit::notWritten, path + ": " + asUtf8(result.message()) + "; nothing was changed");
}

}  // namespace

void addWaitOption(OptionList& verb, ChangeWait& wait) {
  constexpr int day = 86'400;
  verb.takes("--wait", &wait.seconds,
             "Seconds to wait for another program that is changing the file", SecondsUpTo{day});
}

FileChange::FileChange(std::string path, std::optional<ChangeWait> wait, Missing missing)
    : path_(std::move(path)) {
  FileResult locked;
  if (wait && !isStandardInput()) {
    const std::chrono::duration<double> patience(wait->seconds);
    locked = fileSystem().lock(fromArgument(path_), lock_,
                               std::chrono::ceil<std::chrono::milliseconds>(patience));
  }
  if (locked.status == FileStatus::locked) failWrite(path_, locked);
  // What cannot be read is told first: it is why most files cannot be locked.
  const bool mayBeMissing = missing == Missing::isEmpty && !isStandardInput();
  input_ = readInput(path_, &version_, mayBeMissing);
  isNew_ = mayBeMissing && !version_.exists;
  if (!locked) failWrite(path_, locked);
}

void FileChange::write(std::string_view bytes) {
  if (isStandardInput()) {
    print(bytes);
    return;
  }
  if (bytes == input_.bytes() && !isNew_) return;
  const std::string backup = keepsOld_ ? writeBackup() : std::string();
  // Not every program waits for the others.
  ReplaceOptions options;
  options.expected = &version_;
  if (const FileResult result = fileSystem().replaceFile(fromArgument(path_), bytes, options);
      !result) {
    if (!backup.empty()) fileSystem().remove(fromArgument(backup));
    failWrite(path_, result);
  }
  noteChange();
  if (!backup.empty() && backup != path_ + ".bak") complain("the old file is kept as " + backup);
}

std::string FileChange::writeBackup() const {
  ReplaceOptions options;
  options.attributesOf = fromArgument(path_);
  options.onlyNew = true;
  std::string name;
  FileResult result{FileStatus::exists, 0};
  for (int number = 1; result.status == FileStatus::exists; ++number) {
    name = path_ + (number == 1 ? ".bak" : ".bak" + std::to_string(number));
    result = fileSystem().replaceFile(fromArgument(name), input_.bytes(), options);
  }
  if (!result) failWrite(name, result);
  return name;
}

}  // namespace kpx::tool
