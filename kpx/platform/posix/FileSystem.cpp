#include "kpx/platform/FileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <new>
#include <string>
#include <utility>

#include "kpx/text/Utf.h"

namespace kpx {

namespace {

FileResult resultOf(int code) noexcept {
  switch (code) {
    case 0:
      return {};
    case ENOENT:
      return {FileStatus::notFound, code};
    case EACCES:
    case EPERM:
    case EROFS:
    case ETXTBSY:
      return {FileStatus::noPermission, code};
    case EEXIST:
      return {FileStatus::exists, code};
    case EISDIR:
      return {FileStatus::isFolder, code};
    case ENOTDIR:
    case ENOTEMPTY:
      return {FileStatus::notFolder, code};
    case ENAMETOOLONG:
    case ELOOP:
    case EILSEQ:
      return {FileStatus::badName, code};
    case EFBIG:
      return {FileStatus::tooLarge, code};
    case ENOSPC:
    case EDQUOT:
      return {FileStatus::noSpace, code};
    case ENOMEM:
      return {FileStatus::noMemory, code};
    default:
      return {FileStatus::failed, code};
  }
}

FileResult lastError() noexcept { return resultOf(errno); }

/// Repeats a call that a signal interrupted.
template <class Call>
auto uninterrupted(Call call) {
  decltype(call()) answer;
  do {
    answer = call();
  } while (answer == -1 && errno == EINTR);
  return answer;
}

/// A path as the system takes it.
class SystemPath {
 public:
  explicit SystemPath(std::u16string_view path)
      : bytes_(utf8FromUtf16(path)),
        usable_(!bytes_.empty() && bytes_.find('\0') == std::string::npos) {}

  bool usable() const noexcept { return usable_; }
  const char* get() const noexcept { return bytes_.c_str(); }

 private:
  std::string bytes_;
  bool usable_;
};

constexpr FileResult badName{FileStatus::badName, 0};

class Descriptor {
 public:
  explicit Descriptor(int number = -1) noexcept : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ != -1) ::close(number_);
  }
  int get() const noexcept { return number_; }
  int release() noexcept { return std::exchange(number_, -1); }

 private:
  int number_;
};

/// Some file systems know no flushing; that is no failure of the write.
FileResult flushDescriptor(int number) noexcept {
  if (uninterrupted([&] { return ::fsync(number); }) == 0) return {};
  return errno == EINVAL || errno == ENOTSUP ? FileResult{} : lastError();
}

class PosixOutputFile final : public OutputFile {
 public:
  explicit PosixOutputFile(int number) noexcept : descriptor_(number) {}

  FileResult write(std::string_view bytes) override {
    while (!bytes.empty()) {
      const ssize_t written =
          uninterrupted([&] { return ::write(descriptor_.get(), bytes.data(), bytes.size()); });
      if (written < 0) return lastError();
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
  }

  FileResult flush() override { return flushDescriptor(descriptor_.get()); }

  FileResult close() override {
    const int number = descriptor_.release();
    // After EINTR the descriptor is closed all the same.
    return number == -1 || ::close(number) == 0 || errno == EINTR ? FileResult{} : lastError();
  }

 private:
  Descriptor descriptor_;
};

FileResult readAll(int number, std::uint64_t maxBytes, FileBytes& bytes) {
  for (;;) {
    if (bytes.size() == bytes.capacity()) {
      bytes.reserve(std::max<std::size_t>(std::size_t{1} << 16, bytes.capacity() * 2));
    }
    const ssize_t count = uninterrupted([&] {
      return ::read(number, bytes.data() + bytes.size(), bytes.capacity() - bytes.size());
    });
    if (count < 0) return lastError();
    if (count == 0) return {};
    bytes.setSize(bytes.size() + static_cast<std::size_t>(count));
    if (bytes.size() > maxBytes) return {FileStatus::tooLarge, 0};
  }
}

class PosixFileSystem final : public FileSystem {
 public:
  FileResult read(const CString& path, FileBytes& bytes, std::uint64_t maxBytes) override {
    bytes.setSize(0);
    const SystemPath name(path);
    if (!name.usable()) return badName;
    const Descriptor descriptor(
        uninterrupted([&] { return ::open(name.get(), O_RDONLY | O_CLOEXEC | O_NOCTTY); }));
    if (descriptor.get() == -1) return lastError();
    struct stat status;
    if (::fstat(descriptor.get(), &status) != 0) return lastError();
    if (S_ISDIR(status.st_mode)) return {FileStatus::isFolder, EISDIR};
    const auto size = static_cast<std::uint64_t>(std::max<off_t>(status.st_size, 0));
    if (size > maxBytes) return {FileStatus::tooLarge, 0};
    try {
      // One more byte, so that the end is seen without growing. Pipes and the like tell no size.
      bytes.reserve(static_cast<std::size_t>(size) + 1);
      return readAll(descriptor.get(), maxBytes, bytes);
    } catch (const std::bad_alloc&) {
      return {FileStatus::noMemory, ENOMEM};
    }
  }

  FileResult info(const CString& path, FileInfo& info) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    struct stat status;
    if (::stat(name.get(), &status) != 0) return lastError();
    info.kind = S_ISREG(status.st_mode)   ? FileKind::file
                : S_ISDIR(status.st_mode) ? FileKind::folder
                                          : FileKind::other;
    info.size = S_ISREG(status.st_mode) ? static_cast<std::uint64_t>(status.st_size) : 0;
    info.permissions = status.st_mode & 07777;
    info.writable = ::faccessat(AT_FDCWD, name.get(), W_OK, AT_EACCESS) == 0;
    return {};
  }

  FileResult open(const CString& path, OpenMode mode, std::unique_ptr<OutputFile>& file,
                  unsigned permissions) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    const int flags = mode == OpenMode::create   ? O_CREAT | O_EXCL | O_NOFOLLOW
                      : mode == OpenMode::append ? O_CREAT | O_APPEND
                                                 : O_CREAT | O_TRUNC;
    const mode_t access = permissions != 0 ? static_cast<mode_t>(permissions) : 0666;
    const int number = uninterrupted(
        [&] { return ::open(name.get(), O_WRONLY | O_CLOEXEC | O_NOCTTY | flags, access); });
    if (number == -1) return lastError();
    Descriptor descriptor(number);
    file = std::make_unique<PosixOutputFile>(number);
    descriptor.release();
    return {};
  }

  FileResult copyPermissions(const CString& like, const CString& path) override {
    const SystemPath from(like);
    const SystemPath to(path);
    if (!from.usable() || !to.usable()) return badName;
    struct stat wanted;
    struct stat given;
    if (::stat(from.get(), &wanted) != 0 || ::stat(to.get(), &given) != 0) return lastError();
    mode_t permissions = wanted.st_mode & 07777;
    if (wanted.st_uid != given.st_uid || wanted.st_gid != given.st_gid) {
      constexpr auto sameOwner = static_cast<uid_t>(-1);
      if (::chown(to.get(), wanted.st_uid, wanted.st_gid) != 0) {
        // Only the system's administrator may give files away. A group that cannot be kept must
        // not hand its rights to another one.
        permissions &= 0777;
        if (::chown(to.get(), sameOwner, wanted.st_gid) != 0) {
          permissions = (permissions & 0707) | (permissions & 0007) << 3;
        }
      }
    }
    return ::chmod(to.get(), permissions) == 0 ? FileResult{} : lastError();
  }

  FileResult rename(const CString& from, const CString& to) override {
    const SystemPath oldName(from);
    const SystemPath newName(to);
    if (!oldName.usable() || !newName.usable()) return badName;
    if (std::rename(oldName.get(), newName.get()) != 0) return lastError();
    // The new name is on the volume only when the folder is. The file itself is in place by now,
    // so a failure here is none of the rename.
    std::string folder(newName.get());
    folder.resize(folder.find_last_of('/') + 1);
    const Descriptor descriptor(
        ::open(folder.empty() ? "." : folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (descriptor.get() != -1) flushDescriptor(descriptor.get());
    return {};
  }

  FileResult remove(const CString& path) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    return std::remove(name.get()) == 0 ? FileResult{} : lastError();
  }

  FileResult createFolder(const CString& path) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    return ::mkdir(name.get(), 0777) == 0 ? FileResult{} : lastError();
  }

  FileResult list(const CString& folder, std::vector<CString>& names) override {
    names.clear();
    const SystemPath name(folder);
    if (!name.usable()) return badName;
    DIR* const open = ::opendir(name.get());
    if (open == nullptr) return lastError();
    const std::unique_ptr<DIR, int (*)(DIR*)> closer(open, &::closedir);
    errno = 0;
    while (const dirent* const entry = ::readdir(open)) {
      const std::string_view found(entry->d_name);
      if (found != "." && found != "..") names.push_back(CString::fromUtf8(found));
      errno = 0;
    }
    if (errno != 0) return lastError();
    std::sort(names.begin(), names.end());
    return {};
  }

  FileResult followLinks(const CString& path, CString& target) override {
    target = path;
    constexpr int maxLinks = 40;
    for (int links = 0; links < maxLinks; ++links) {
      const SystemPath name(target);
      if (!name.usable()) return badName;
      char content[PATH_MAX];
      const ssize_t length = ::readlink(name.get(), content, sizeof content);
      if (length < 0) {
        // No link, or nothing at all: the end is reached.
        return errno == EINVAL || errno == ENOENT ? FileResult{} : lastError();
      }
      const std::string_view link(content, static_cast<std::size_t>(length));
      if (link.starts_with('/')) {
        target = CString::fromUtf8(link);
      } else {
        target.Truncate(target.ReverseFind(u'/') + 1);
        target += CString::fromUtf8(link);
      }
    }
    return {FileStatus::badName, ELOOP};
  }
};

}  // namespace

namespace detail {

FileSystem& systemFiles() noexcept {
  static PosixFileSystem files;
  return files;
}

}  // namespace detail

}  // namespace kpx
