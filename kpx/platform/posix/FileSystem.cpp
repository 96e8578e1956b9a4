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

#include "kpx/platform/posix/Descriptor.h"
#include "kpx/platform/posix/FileStatus.h"
#include "kpx/platform/posix/LockFile.h"
#include "kpx/platform/posix/ReplacementFile.h"

namespace kpx {

using detail::badName;
using detail::Descriptor;
using detail::flushDescriptor;
using detail::lastError;
using detail::SystemPath;
using detail::uninterrupted;

namespace {

class PosixOutputFile final : public OutputFile {
 public:
  FileResult openAppend(const char* name) noexcept {
    constexpr int flags = O_WRONLY | O_CREAT | O_APPEND | O_CLOEXEC | O_NOCTTY;
    descriptor_ = Descriptor(uninterrupted([&] { return ::open(name, flags, 0666); }));
    return descriptor_.isOpen() ? FileResult{} : lastError();
  }

  FileResult write(std::string_view bytes) override {
    return detail::writeAll(descriptor_.get(), bytes);
  }

  FileResult flush() override { return flushDescriptor(descriptor_.get()); }

  FileResult close() override { return descriptor_.close(); }

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
    return detail::writeAllAt(descriptor_.get(), offset, bytes);
  }

  FileResult close() override { return descriptor_.close(); }

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
  FileResult read(const CString& path, FileBytes& bytes, std::uint64_t maxBytes,
                  FileVersion* version) override {
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
      const FileResult result = readAll(descriptor.get(), maxBytes, bytes);
      // What the file was before the first byte was read: a change meanwhile shows later.
      if (result && version != nullptr) *version = detail::versionOf(status, bytes.view());
      return result;
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
    info.writable = ::faccessat(AT_FDCWD, name.get(), W_OK, AT_EACCESS) == 0;
    return {};
  }

  FileResult version(const CString& path, FileVersion& version) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    struct stat status;
    if (::stat(name.get(), &status) == 0) {
      version = detail::versionOf(status);
    } else if (errno == ENOENT) {
      version = {};
    } else {
      return lastError();
    }
    return {};
  }

  FileResult openAppend(const CString& path, std::unique_ptr<OutputFile>& file) override {
    const SystemPath name(path);
    if (!name.usable()) return badName;
    // Made before the file, so that no file is left when memory is missing.
    auto opened = std::make_unique<PosixOutputFile>();
    const FileResult result = opened->openAppend(name.get());
    if (result) file = std::move(opened);
    return result;
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

  FileResult openReplacement(const CString& path, const ReplaceOptions& options,
                             std::unique_ptr<ReplacementFile>& file) override {
    auto opened = std::make_unique<detail::PosixReplacementFile>();
    const FileResult result = opened->open(path, options);
    if (result) file = std::move(opened);
    return result;
  }

  FileResult lock(const CString& path, std::unique_ptr<FileLock>& lock,
                  std::chrono::milliseconds patience) override {
    auto file = std::make_unique<detail::PosixLockFile>();
    if (const FileResult result = file->find(path); !result) return result;
    return detail::waitForLock(std::move(file), patience, lock);
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
