#include "kpx/platform/FileSystem.h"

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <climits>
#include <cstdio>
#include <limits>
#include <new>
#include <string>
#include <utility>

#include "kpx/platform/posix/SystemCall.h"
#include "kpx/text/Utf.h"

namespace kpx {

using detail::lastError;
using detail::uninterrupted;

namespace {

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

FileResult closeNow(Descriptor& descriptor) noexcept {
  const int number = descriptor.release();
  // After EINTR the descriptor is closed all the same.
  return number == -1 || ::close(number) == 0 || errno == EINTR ? FileResult{} : lastError();
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

  FileResult close() override { return closeNow(descriptor_); }

 private:
  Descriptor descriptor_;
};

FileResult readFrom(int number, std::uint64_t offset, char* to, std::size_t count,
                    std::size_t& done) {
  for (done = 0; done < count;) {
    const std::uint64_t place = offset + done;
    if (place < offset || place > static_cast<std::uint64_t>(std::numeric_limits<off_t>::max())) {
      return {};  // behind the end of any file
    }
    const ssize_t got = uninterrupted(
        [&] { return ::pread(number, to + done, count - done, static_cast<off_t>(place)); });
    if (got < 0) return lastError();
    if (got == 0) return {};
    done += static_cast<std::size_t>(got);
  }
  return {};
}

class PosixInputFile final : public InputFile {
 public:
  PosixInputFile(int number, std::uint64_t size) noexcept : descriptor_(number), size_(size) {}

  std::uint64_t size() const noexcept override { return size_; }

  FileResult readAt(std::uint64_t offset, char* to, std::size_t count, std::size_t& done) override {
    return readFrom(descriptor_.get(), offset, to, count, done);
  }

 private:
  Descriptor descriptor_;
  std::uint64_t size_;
};

class PosixUpdateFile final : public UpdateFile {
 public:
  explicit PosixUpdateFile(int number) noexcept : descriptor_(number) {}

  FileResult size(std::uint64_t& bytes) override {
    struct stat status;
    if (::fstat(descriptor_.get(), &status) != 0) return lastError();
    bytes = static_cast<std::uint64_t>(status.st_size);
    return {};
  }

  FileResult readAt(std::uint64_t offset, char* to, std::size_t count, std::size_t& done) override {
    return readFrom(descriptor_.get(), offset, to, count, done);
  }

  FileResult writeAt(std::uint64_t offset, std::string_view bytes) override {
    constexpr auto last = static_cast<std::uint64_t>(std::numeric_limits<off_t>::max());
    if (offset > last || bytes.size() > last - offset) return {FileStatus::tooLarge, EFBIG};
    while (!bytes.empty()) {
      const ssize_t written = uninterrupted([&] {
        return ::pwrite(descriptor_.get(), bytes.data(), bytes.size(), static_cast<off_t>(offset));
      });
      if (written < 0) return lastError();
      offset += static_cast<std::uint64_t>(written);
      bytes.remove_prefix(static_cast<std::size_t>(written));
    }
    return {};
  }

  FileResult close() override { return closeNow(descriptor_); }

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

  FileResult openInput(const CString& path, std::unique_ptr<InputFile>& file) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    // A pipe that nobody writes to must not hold the caller up.
    Descriptor descriptor(uninterrupted(
        [&] { return ::open(name.get(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK); }));
    if (descriptor.get() == -1) return lastError();
    struct stat status;
    if (::fstat(descriptor.get(), &status) != 0) return lastError();
    if (S_ISDIR(status.st_mode)) return {FileStatus::isFolder, EISDIR};
    if (!S_ISREG(status.st_mode)) return {FileStatus::notRegularFile, 0};
    file = std::make_unique<PosixInputFile>(descriptor.get(),
                                            static_cast<std::uint64_t>(status.st_size));
    descriptor.release();
    return {};
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

  FileResult openUpdate(const CString& path, UpdateMode mode,
                        std::unique_ptr<UpdateFile>& file) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    const int flags = mode == UpdateMode::existing ? 0 : O_CREAT;
    Descriptor descriptor(uninterrupted([&] {
      return ::open(name.get(), O_RDWR | O_CLOEXEC | O_NOCTTY | O_NONBLOCK | flags, 0666);
    }));
    if (descriptor.get() == -1) return lastError();
    struct stat status;
    if (::fstat(descriptor.get(), &status) != 0) return lastError();
    if (!S_ISREG(status.st_mode)) return {FileStatus::notRegularFile, 0};
    if (mode == UpdateMode::emptied && ::ftruncate(descriptor.get(), 0) != 0) return lastError();
    file = std::make_unique<PosixUpdateFile>(descriptor.get());
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

  FileResult renameUnflushed(const CString& from, const CString& to) override {
    const SystemPath oldName(from);
    const SystemPath newName(to);
    if (!oldName.usable() || !newName.usable()) return badName;
    return std::rename(oldName.get(), newName.get()) == 0 ? FileResult{} : lastError();
  }

  FileResult rename(const CString& from, const CString& to) override {
    if (const FileResult result = renameUnflushed(from, to); !result) return result;
    // The new name is on the volume only when the folder is. The file itself is in place by now,
    // so a failure here is none of the rename.
    std::string folder = utf8FromUtf16(to);
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
