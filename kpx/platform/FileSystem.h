#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "kpx/platform/FileBytes.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Why a file operation was not carried out.
enum class FileStatus : std::uint8_t {
  ok,
  notFound,        // the file, or a folder on the way to it
  noPermission,    // also a write-protected file that should be replaced
  exists,          // something has that name already
  isFolder,        // a folder where a file is needed
  notFolder,       // no folder where one is needed, or a folder that is not empty
  notRegularFile,  // a device, pipe or the like, which cannot be replaced
  badName,         // empty, too long, with a character 0, or a circle of links
  tooLarge,        // more bytes than the caller can take
  noSpace,         // the volume or the user's share of it is full
  noMemory,
  notOpen,       // no file is open, or not for this
  notEncodable,  // a character that the file's encoding does not have
  failed,        // anything else; the system's code tells
};

/// What came of a file operation.
struct KPX_API FileResult {
  FileStatus status = FileStatus::ok;
  int systemCode = 0;  // the system's own error code, 0 if there is none

  bool ok() const noexcept { return status == FileStatus::ok; }
  explicit operator bool() const noexcept { return ok(); }
  /// A short English clause for messages: "there is no such file"; empty when it went well.
  CString message() const;
};

enum class FileKind : std::uint8_t { file, folder, other };

struct FileInfo {
  FileKind kind = FileKind::file;
  std::uint64_t size = 0;    // bytes; of files only
  unsigned permissions = 0;  // as the system counts them; only for handing on
  bool writable = false;     // by this user
};

enum class OpenMode : std::uint8_t {
  create,  // a new file; fails when the name exists, and never follows a link
  rewrite,
  append,
};

/// A file that is being written. Destroying it closes it.
class KPX_API OutputFile {
 public:
  virtual ~OutputFile();
  /// Writes all bytes or fails.
  virtual FileResult write(std::string_view bytes) = 0;
  /// Returns when what was written is on the volume.
  virtual FileResult flush() = 0;
  /// Reports what the system found out only now. Nothing can be written any more.
  virtual FileResult close() = 0;
};

/// A file that is being read, at any place. Destroying it closes it.
class KPX_API InputFile {
 public:
  virtual ~InputFile();
  /// Bytes of the file when it was opened.
  virtual std::uint64_t size() const noexcept = 0;
  /// Reads `count` bytes from `offset` on, or all that there are before the end; `done` tells how
  /// many. Less than `count` without a failure means that the file ends there.
  virtual FileResult readAt(std::uint64_t offset, char* to, std::size_t count,
                            std::size_t& done) = 0;
};

/// A file that is read and changed in place. Destroying it closes it.
class KPX_API UpdateFile {
 public:
  virtual ~UpdateFile();
  /// Bytes of the file now.
  virtual FileResult size(std::uint64_t& bytes) = 0;
  /// As `InputFile::readAt`.
  virtual FileResult readAt(std::uint64_t offset, char* to, std::size_t count,
                            std::size_t& done) = 0;
  /// Writes all bytes from `offset` on, which may lie at the end of the file or behind it.
  virtual FileResult writeAt(std::uint64_t offset, std::string_view bytes) = 0;
  /// Reports what the system found out only now. Nothing can be read or written any more.
  virtual FileResult close() = 0;
};

/// Which file is changed in place.
enum class UpdateMode : std::uint8_t {
  existing,
  existingOrNew,
  emptied,  // or new
};

/// Whether an operation waits until the volume has what was written. Without that a failure of the
/// power may take away files that were written just before.
enum class Durability : std::uint8_t { flushed, leftToSystem };

/// Files and folders. Paths are texts, handed to the system as UTF-8 or UTF-16 as it needs.
/// Every operation answers what came of it; none throws but std::bad_alloc. The virtual functions
/// are what an operating system does in one step, so that a test can let each one fail.
class KPX_API FileSystem {
 public:
  /// No file that is read whole may be larger: 4 GiB, more than the longest text takes.
  static constexpr std::uint64_t maxReadBytes = std::uint64_t{1} << 32;
  /// Writes the content of a file, in as many steps as it likes.
  using ContentWriter = std::function<FileResult(OutputFile&)>;

  virtual ~FileSystem();

  /// Reads a whole file.
  virtual FileResult read(const CString& path, FileBytes& bytes,
                          std::uint64_t maxBytes = maxReadBytes) = 0;
  /// Opens a regular file for reading at any place; answers `notRegularFile` for what has no
  /// places, such as a pipe.
  virtual FileResult openInput(const CString& path, std::unique_ptr<InputFile>& file) = 0;
  /// What the path leads to, links followed.
  virtual FileResult info(const CString& path, FileInfo& info) = 0;
  /// Opens a file for writing. A new one gets `permissions`, or what the user's settings give
  /// when they are 0.
  virtual FileResult open(const CString& path, OpenMode mode, std::unique_ptr<OutputFile>& file,
                          unsigned permissions = 0) = 0;
  /// Opens a regular file for reading and writing at any place; answers `notRegularFile` for what
  /// has no places. A file system that cannot do this answers `failed`.
  virtual FileResult openUpdate(const CString& path, UpdateMode mode,
                                std::unique_ptr<UpdateFile>& file);
  /// Gives `path` owner, group and permissions of the file `like`, as far as the user may.
  virtual FileResult copyPermissions(const CString& like, const CString& path) = 0;
  /// Renames, over an existing file in one step. Both names must be on the same volume.
  virtual FileResult rename(const CString& from, const CString& to) = 0;
  /// The same without waiting for the volume; `rename` where the system makes no difference.
  virtual FileResult renameUnflushed(const CString& from, const CString& to);
  /// Removes a file, a link (not what it leads to) or an empty folder.
  virtual FileResult remove(const CString& path) = 0;
  /// Creates one folder; the one above must exist.
  virtual FileResult createFolder(const CString& path) = 0;
  /// The names in a folder, sorted by their units; not "." and "..".
  virtual FileResult list(const CString& folder, std::vector<CString>& names) = 0;
  /// The path with the links at its end followed, also to a file that does not exist (yet); the
  /// very same text when there is no link at its end.
  virtual FileResult followLinks(const CString& path, CString& target) = 0;

  bool exists(const CString& path);
  /// Creates a folder and those above it that are missing; it is no failure if it exists.
  FileResult createFolders(const CString& path);

  /// Replaces or creates a file whole or not at all. The content is written to a new file in the
  /// same folder (".kpx-….tmp"), flushed, and renamed over the old one; a failure at any step
  /// removes the new file again and leaves the old one as it was. The old file's permissions are
  /// kept; if the path is a link, the file it leads to is replaced. A write-protected file is not
  /// replaced. Without flushing, which is for files that can be made again, a failure of the power
  /// may leave an empty file; nothing else changes.
  FileResult replaceFile(const CString& path, const ContentWriter& writeContent,
                         Durability durability = Durability::flushed);
  FileResult replaceFile(const CString& path, std::string_view bytes);

 private:
  FileResult openTemporary(const CString& target, unsigned permissions, CString& path,
                           std::unique_ptr<OutputFile>& file);
};

/// The file system that the library works with: the operating system's, unless a test wraps it.
KPX_API FileSystem& fileSystem() noexcept;
/// Puts another one in its place, which must outlive its use; nullptr for the operating
/// system's. Answers the one before.
KPX_API FileSystem* setFileSystem(FileSystem* other) noexcept;

namespace detail {
/// The operating system's own.
FileSystem& systemFiles() noexcept;
}  // namespace detail

}  // namespace kpx
