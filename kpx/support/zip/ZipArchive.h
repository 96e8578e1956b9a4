#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/platform/FileSystem.h"
#include "kpx/report/Export.h"
#include "kpx/support/zip/ZipStatus.h"
#include "kpx/text/CString.h"

namespace kpx {

namespace detail {
class ZipUnpacker;
}

/// What an archive may ask for. Content that a user packed stays far below.
struct ZipLimits {
  std::uint64_t totalBytes = std::uint64_t{256} << 30;  // of all entries, unpacked
  std::uint64_t entries = 1000000;
  std::uint64_t ratio = 500;  // unpacked bytes for each packed one, of an entry
  /// Smaller entries, unpacked, may have any ratio: long runs of one byte are no attack.
  std::uint64_t ratioFromBytes = std::uint64_t{64} << 20;
};

/// An entry as the directory of the archive describes it.
struct ZipEntry {
  CString name;                        // as stored
  CString path;                        // below the destination, "/" between names; empty if refused
  ZipStatus status = ZipStatus::done;  // or why it is refused, as far as the directory tells
  bool folder = false;
  bool shared = false;  // another file has the very same path; the last of them stands
  std::uint16_t method = 0;
  std::uint32_t checksum = 0;
  std::uint64_t packedSize = 0;  // bytes in the archive
  std::uint64_t size = 0;        // bytes unpacked

  std::string storedName;          // the bytes of the name
  std::uint64_t headerOffset = 0;  // of its own header in the file
  std::uint64_t end = 0;           // where the next entry or the directory begins
};

/// A zip archive that is being read: stored and deflated entries, also with 64-bit sizes, behind
/// another program (self-extracting archives) and with sizes that follow the content.
///
/// Nothing in an archive is trusted: sizes, offsets and names are checked and must be those of the
/// entry's own header, an entry never gives more bytes than the directory states, and the work
/// grows linearly with the file. Names are UTF-8 where the entry says so, else code page 437. One
/// object reads for one thread.
class ZipArchive {
 public:
  /// Receives a piece of an entry's content; answers `done` to go on, or what `read` is to answer.
  using Sink = std::function<ZipStatus(std::string_view)>;

  KPX_API ZipArchive() noexcept;
  KPX_API ZipArchive(ZipArchive&&) noexcept;
  KPX_API ZipArchive& operator=(ZipArchive&&) noexcept;
  KPX_API ~ZipArchive();

  /// Reads the directory of an archive. Answers `done`, or one of the states of whole archives;
  /// with `directoryDamaged` there are the entries before the damage, else none. The file stays
  /// open until the object goes.
  KPX_API ZipStatus open(const CString& path, const ZipLimits& limits = {});
  KPX_API ZipStatus open(std::unique_ptr<InputFile> file, const ZipLimits& limits = {});

  /// In the order of the directory.
  const std::vector<ZipEntry>& entries() const noexcept { return entries_; }
  /// What the entries that are not refused unpack to, in bytes.
  std::uint64_t totalBytes() const noexcept { return totalBytes_; }
  /// Why the file could not be opened or read, after `unreadable`.
  const FileResult& fileResult() const noexcept { return fileResult_; }

  /// Unpacks one entry in pieces, in constant memory. Answers `done` when size and checksum are
  /// those stated, else the reason; what the sink got until then is to be dropped. Answers the
  /// status of a refused entry without reading it. A folder has no pieces. Requires
  /// index < entries().size(). Throws std::bad_alloc and what the sink throws.
  KPX_API ZipStatus read(std::size_t index, const Sink& sink);

 private:
  /// Whether an entry's own header, given with its name, states the sizes and checksum of the
  /// directory: `done`, or why not.
  ZipStatus compareSizes(const ZipEntry& entry, std::string_view header);

  std::unique_ptr<InputFile> file_;
  std::vector<ZipEntry> entries_;
  std::unique_ptr<detail::ZipUnpacker> unpacker_;
  std::uint64_t totalBytes_ = 0;
  FileResult fileResult_;
};

}  // namespace kpx
