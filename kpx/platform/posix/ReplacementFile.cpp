#include "kpx/platform/posix/ReplacementFile.h"

#include <dirent.h>
#include <stdio.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <string_view>

#include "kpx/platform/posix/FileAttributes.h"
#include "kpx/platform/posix/FileStatus.h"
#include "kpx/platform/posix/LockFile.h"

namespace kpx::detail {

namespace {

/// The writer of a temporary file keeps this byte of it locked.
constexpr off_t writersByte = 0;

void nameTemporary(char (&name)[32]) noexcept {
  static std::atomic<std::uint64_t> counter{0};
  const auto now = std::chrono::steady_clock::now().time_since_epoch().count();
  const std::uint64_t number = (static_cast<std::uint64_t>(now) << 8) + counter.fetch_add(1);
  std::snprintf(name, sizeof name, ".kpx-%016llx.tmp", static_cast<unsigned long long>(number));
}

/// Folders in which many files are replaced one after the other are looked through once.
bool wasLookedThrough(int folder) noexcept {
  static std::atomic<std::uint64_t> last{0};
  struct stat status;
  if (::fstat(folder, &status) != 0) return false;
  const std::uint64_t identity = status.st_dev * 0x9e3779b97f4a7c15u ^ status.st_ino;
  return last.exchange(identity, std::memory_order_relaxed) == identity;
}

}  // namespace

FileResult PosixReplacementFile::open(const CString& path, const ReplaceOptions& options) {
  FileResult result = openModel(path, options.attributesOf);
  if (!result) return result;
  onlyNew_ = options.onlyNew;
  flushed_ = options.durability == Durability::flushed;
  if (flushed_ || !wasLookedThrough(place_.folder())) removeLeftovers(place_.folder());
  // A program that looks for leftovers may catch the new file before it is locked.
  for (int attempt = 0; attempt < 16; ++attempt) {
    result = openTemporary();
    if (result.status != FileStatus::exists) break;
  }
  return result;
}

FileResult PosixReplacementFile::openModel(const CString& path, const CString& attributesOf) {
  if (const FileResult result = place_.find(path); !result) return result;
  struct stat old;
  const bool exists = place_.status(old);
  if (!exists && errno != ENOENT) return lastError();
  if (exists) {
    if (S_ISDIR(old.st_mode)) return {FileStatus::isFolder, 0};
    if (!S_ISREG(old.st_mode)) return {FileStatus::notRegularFile, 0};
    const bool isWritable =
        ::faccessat(place_.folder(), place_.name().c_str(), W_OK, AT_EACCESS) == 0;
    if (!isWritable || !place_.trusts(old.st_uid)) return {FileStatus::noPermission, EACCES};
  }
  FilePlace other;
  const bool hasOther = !attributesOf.IsEmpty();
  if (hasOther) {
    if (const FileResult result = other.find(attributesOf); !result) return result;
  } else if (!exists) {
    return {};
  }
  const FilePlace& model = hasOther ? other : place_;
  const auto open = [&](int access) {
    const int flags = access | O_CLOEXEC | O_NOCTTY | O_NOFOLLOW | O_NONBLOCK;
    return uninterrupted([&] { return ::openat(model.folder(), model.name().c_str(), flags); });
  };
  model_ = Descriptor(open(O_RDONLY));
  if (!model_.isOpen() && errno == EACCES) model_ = Descriptor(open(O_WRONLY));
  if (!model_.isOpen() || ::fstat(model_.get(), &modelStatus_) != 0) return lastError();
  return S_ISREG(modelStatus_.st_mode) ? FileResult{} : FileResult{FileStatus::notRegularFile, 0};
}

FileResult PosixReplacementFile::openTemporary() {
  char name[sizeof temporary_];
  nameTemporary(name);
  // Readable by nobody else until it has the other file's permissions.
  const mode_t mode = model_.isOpen() ? 0600 : 0666;
  constexpr int flags = O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC | O_NOCTTY;
  file_ = Descriptor(uninterrupted([&] { return ::openat(place_.folder(), name, flags, mode); }));
  if (!file_.isOpen() || ::fstat(file_.get(), &status_) != 0) return lastError();
  std::copy(std::begin(name), std::end(name), temporary_);
  if (tryLockByte(file_.get(), writersByte) != LockAnswer::held && hasItsName()) return {};
  temporary_[0] = '\0';  // whoever caught it removes it
  return {FileStatus::exists, EEXIST};
}

bool PosixReplacementFile::hasItsName() const noexcept {
  return temporary_[0] != '\0' && isNameOf(place_.folder(), temporary_, status_);
}

PosixReplacementFile::~PosixReplacementFile() {
  if (hasItsName()) ::unlinkat(place_.folder(), temporary_, 0);
}

FileResult PosixReplacementFile::write(std::string_view bytes) {
  return writeAll(file_.get(), bytes);
}

FileResult PosixReplacementFile::takeAttributes() {
  return model_.isOpen() ? copyAttributes(model_.get(), modelStatus_, file_.get()) : FileResult{};
}

FileResult PosixReplacementFile::flush() { return flushDescriptor(file_.get()); }

FileResult PosixReplacementFile::close() {
  // Some volumes tell only now what went wrong. The file itself stays open, so that it can be told
  // from others.
  Descriptor second(uninterrupted([&] { return ::fcntl(file_.get(), F_DUPFD_CLOEXEC, 0); }));
  return second.isOpen() ? second.close() : lastError();
}

FileResult PosixReplacementFile::rename() noexcept {
  const int folder = place_.folder();
  const char* const name = place_.name().c_str();
  if (!onlyNew_) {
    return ::renameat(folder, temporary_, folder, name) == 0 ? FileResult{} : lastError();
  }
  if (::renameat2(folder, temporary_, folder, name, RENAME_NOREPLACE) == 0) return {};
  if (errno != EINVAL && errno != ENOSYS) return lastError();
  // Volumes that cannot do this can mostly do that: a second name fails where there is one already.
  if (::linkat(folder, temporary_, folder, name, 0) != 0) return lastError();
  ::unlinkat(folder, temporary_, 0);
  return {};
}

FileResult PosixReplacementFile::putInPlace(FileVersion* version) {
  if (!hasItsName()) return {FileStatus::displaced, 0};
  if (const FileResult result = rename(); !result) return result;
  temporary_[0] = '\0';
  // Where nobody else can move this user's files, only a later replacement can be in its place.
  const bool isInPlace = isNameOf(place_.folder(), place_.name().c_str(), status_);
  if (!isInPlace && place_.isOpenToOthers()) return {FileStatus::displaced, 0};
  if (flushed_) place_.flush();
  if (version != nullptr) {
    struct stat status;
    if (::fstat(file_.get(), &status) != 0) return lastError();
    const std::uint64_t digest = version->digest;
    *version = versionOf(status);
    version->digest = digest;
  }
  return {};
}

void removeLeftovers(int folder) noexcept {
  Descriptor listed(
      uninterrupted([&] { return ::openat(folder, ".", O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!listed.isOpen()) return;
  DIR* const names = ::fdopendir(listed.get());
  if (names == nullptr) return;
  listed.release();
  while (const dirent* const entry = ::readdir(names)) {
    const std::string_view name(entry->d_name);
    const bool isFile = entry->d_type == DT_REG || entry->d_type == DT_UNKNOWN;
    if (!isFile || !name.starts_with(".kpx-")) continue;
    if (!name.ends_with(".tmp") && !name.ends_with(".lock")) continue;
    constexpr int flags = O_RDWR | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC | O_NOCTTY;
    const Descriptor file(uninterrupted([&] { return ::openat(folder, entry->d_name, flags); }));
    struct stat status;
    if (!file.isOpen() || ::fstat(file.get(), &status) != 0 || !S_ISREG(status.st_mode)) continue;
    // A lock file has two.
    if (tryLockByte(file.get(), 0) == LockAnswer::taken &&
        tryLockByte(file.get(), 1) == LockAnswer::taken &&
        isNameOf(folder, entry->d_name, status)) {
      ::unlinkat(folder, entry->d_name, 0);
    }
  }
  ::closedir(names);
}

}  // namespace kpx::detail
