#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "kpx/platform/FileBytes.h"
#include "kpx/platform/FileLock.h"
#include "kpx/platform/FileVersion.h"
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
  locked,        // another program is changing it and did not finish in time
  changed,       // another program has changed it since it was read
  displaced,     // another program put something else in its place while it was written
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
  std::uint64_t size = 0;  // bytes; of files only
  bool writable = false;   // by this user
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

/// A new file that is to take the place of another one, complete or not at all. Until then it has
/// a name of its own in the same folder (".kpx-….tmp"). Destroying it before removes it.
class KPX_API ReplacementFile : public OutputFile {
 public:
  /// Gives it what the other file has: owner and group as far as the user may, permissions, access
  /// list and the user's attributes. Nobody gets a right by it that he did not have. Nothing is
  /// done where there is no other file.
  virtual FileResult takeAttributes() = 0;
  /// Renames it over the other file in one step. Answers `displaced`, and may have changed
  /// nothing, when another program moved the new file away. It must have been closed.
  /// `version` receives what it is from now on, but for the digest; it may be nullptr.
  virtual FileResult putInPlace(FileVersion* version) = 0;
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

/// How a file is replaced.
struct ReplaceOptions {
  /// Without flushing, which is for files that can be made again, a failure of the power may leave
  /// an empty file; nothing else changes.
  Durability durability = Durability::flushed;
  /// A file whose owner, permissions and attributes the new one gets; empty: the old file's.
  CString attributesOf = {};
  /// Nothing may have the name yet, or the answer is `exists`.
  bool onlyNew = false;
  /// The file must still be this one, or the answer is `changed`. Whoever wants to be sure holds
  /// the file's lock meanwhile: `FileSystem::replaceUnchanged` does.
  const FileVersion* expected = nullptr;
  /// Receives what the file is from now on.
  FileVersion* written = nullptr;
};

/// Files and folders. Paths are texts, handed to the system as UTF-8 or UTF-16 as it needs.
/// Every operation answers what came of it; none throws but std::bad_alloc. The virtual functions
/// are what an operating system does in one step, so that a test can let each one fail; a file
/// system that has no such step answers `failed`.
class KPX_API FileSystem {
 public:
  /// No file that is read whole may be larger: 4 GiB, more than the longest text takes.
  static constexpr std::uint64_t maxReadBytes = std::uint64_t{1} << 32;
  /// Writes the content of a file, in as many steps as it likes.
  using ContentWriter = std::function<FileResult(OutputFile&)>;

  virtual ~FileSystem();

  /// Reads a whole file. `version` receives what it was then; it may be nullptr.
  virtual FileResult read(const CString& path, FileBytes& bytes,
                          std::uint64_t maxBytes = maxReadBytes, FileVersion* version = nullptr);
  /// Opens a regular file for reading at any place; answers `notRegularFile` for what has no
  /// places, such as a pipe.
  virtual FileResult openInput(const CString& path, std::unique_ptr<InputFile>& file);
  /// What the path leads to, links followed.
  virtual FileResult info(const CString& path, FileInfo& info);
  /// What the file at the path is now, links followed, without a digest. That there is none is no
  /// failure.
  virtual FileResult version(const CString& path, FileVersion& version);
  /// Opens a file, or makes it with the permissions that the user's settings give, so that each
  /// piece is written at its end, whoever else appends.
  virtual FileResult openAppend(const CString& path, std::unique_ptr<OutputFile>& file);
  /// Opens a regular file for reading and writing at any place; answers `notRegularFile` for what
  /// has no places.
  virtual FileResult openUpdate(const CString& path, UpdateMode mode,
                                std::unique_ptr<UpdateFile>& file);
  /// Opens the file that is to replace the one at `path`, links followed, or to be the first of
  /// that name. What killed programs left in the folder is removed before. See `replaceFile` for
  /// what is refused.
  virtual FileResult openReplacement(const CString& path, const ReplaceOptions& options,
                                     std::unique_ptr<ReplacementFile>& file);
  /// Waits for the right to change a file, which need not exist yet. Answers `locked` when another
  /// program, or another part of this one, keeps it for longer than `patience`. The lock lies
  /// beside the file (".kpx-….lock") while it is held. On volumes that know no locks everybody
  /// gets it.
  virtual FileResult lock(const CString& path, std::unique_ptr<FileLock>& lock,
                          std::chrono::milliseconds patience = changePatience);
  /// Removes a file, a link (not what it leads to) or an empty folder.
  virtual FileResult remove(const CString& path);
  /// Creates one folder; the one above must exist.
  virtual FileResult createFolder(const CString& path);
  /// The names in a folder, sorted by their units; not "." and "..".
  virtual FileResult list(const CString& folder, std::vector<CString>& names);
  /// The path with the links at its end followed, also to a file that does not exist (yet); the
  /// very same text when there is no link at its end.
  virtual FileResult followLinks(const CString& path, CString& target);

  bool exists(const CString& path);
  /// Creates a folder and those above it that are missing; it is no failure if it exists.
  FileResult createFolders(const CString& path);

  /// Replaces or creates a file whole or not at all. The content is written to a new file in the
  /// same folder, gets the old file's attributes, is flushed, and renamed over the old one; a
  /// failure at any step removes the new file again and leaves the old one as it was. If the path
  /// is a link, the file it leads to is replaced. Other names of the same file (hard links) keep
  /// the old content. A write-protected file is not replaced.
  ///
  /// In folders where others may write as well:
  /// - Everything is done with the new file itself and relative to the opened folder, so nobody can
  ///   make the program touch another file or hand out rights to one.
  /// - Where everybody may write but only to files of his own (/tmp), links and files that belong
  /// to
  ///   neither this user nor the folder's owner are not used (`noPermission`).
  /// - Where others may rename and remove this user's files, they can take the new file away or
  ///   put their own in its place at any moment, as with every file there. If that happens while
  ///   the file is replaced, the answer is `displaced`.
  FileResult replaceFile(const CString& path, const ContentWriter& writeContent,
                         const ReplaceOptions& options = {});
  FileResult replaceFile(const CString& path, std::string_view bytes,
                         const ReplaceOptions& options = {});

  /// The same, under the file's lock, if the file is still what it was; else the answer is
  /// `changed`. `version` receives what it is from now on.
  FileResult replaceUnchanged(const CString& path, const ContentWriter& writeContent,
                              FileVersion& version,
                              std::chrono::milliseconds patience = changePatience);

  /// Makes the new content of a file from the old one, which is empty if there is no file yet
  /// (`version` tells). What it answers but `ok` becomes the answer of the whole change.
  using ContentChange =
      std::function<FileResult(std::string_view old, const FileVersion& version, std::string& now)>;
  /// Reads a file, changes its content and replaces it, under the file's lock all the time, so that
  /// of several programs that change a file in this way none undoes what another one did. An equal
  /// content is not written. The change must not ask for the same lock.
  FileResult changeFile(const CString& path, const ContentChange& change,
                        std::chrono::milliseconds patience = changePatience);

  /// Whether a file is still what it was; `changed` if not, or why that cannot be told.
  FileResult compareVersion(const CString& path, const FileVersion& version);
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
