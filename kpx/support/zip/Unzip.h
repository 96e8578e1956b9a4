#pragma once

#include <cstdint>
#include <vector>

#include "kpx/platform/FileSystem.h"
#include "kpx/platform/Progress.h"
#include "kpx/report/Export.h"
#include "kpx/support/zip/ZipArchive.h"
#include "kpx/support/zip/ZipStatus.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Unpacks every entry of a zip archive below a folder, in the order of its directory; see
/// `unzip` for what is refused. Files that exist are replaced, folders are created. An archive
/// that cannot be opened writes nothing. Entries that were written stay, whatever happens later.
/// When anything was not unpacked, that is reported as error 910014, once.
KPX_API void kpxUnzip(const CString& archive, const CString& folder);

/// What happens to files that exist already.
enum class UnzipOverwrite : std::uint8_t {
  always,  // they are replaced, as kpxUnzip does
  never,   // they stay, and the receipt says `kept`; those that the archive itself has brought
           // give way to a later entry of the very same name
};

struct UnzipOptions {
  ZipLimits limits;
  UnzipOverwrite overwrite = UnzipOverwrite::always;
  bool testOnly = false;    // unpacks and checks everything, writes nothing; the folder is not used
  ProgressReport progress;  // counts unpacked bytes; the text is the name of the entry. The user
                            // sees it with ProgressDialog::report.
};

/// What became of one entry.
struct KPX_API UnzipReceipt {
  CString name;  // as stored
  ZipStatus status = ZipStatus::done;
  std::uint64_t bytes = 0;  // that were written, or tested and found good
  FileResult file;          // with `notWritten` and `unreadable`

  /// The reason as a short English clause, with the file's reason where there is one.
  CString message() const;
};

/// What became of an archive.
struct KPX_API UnzipResult {
  ZipStatus archive = ZipStatus::done;  // also `notWritten`, when the folder cannot be created
  FileResult file;                      // with `unreadable` and `notWritten`
  std::vector<UnzipReceipt> entries;    // one for each, in the order of the directory

  /// Whether every entry is done or was kept on purpose.
  bool complete() const noexcept;
  /// Why the archive as a whole failed, like the message of a receipt.
  CString message() const;
};

/// Unpacks an archive below a folder and gives a receipt for each entry. The folder is created
/// when it is missing; the empty text is the current one.
///
/// Each entry is unpacked to a temporary file beside its place, which takes its name once size and
/// checksum are right; what fails leaves a file of that name as it was. The volume is not waited
/// for. Memory does not grow with the size of the entries. Refused are names that lead out of the
/// folder, that a system cannot have or takes for the one of an entry before, links and devices,
/// entries that overlap, lie about their size or pass a limit, and whatever would be written
/// through a link below the folder; every other entry is unpacked all the same. Of entries with the
/// very same name the last one stands. File times and permissions of the archive are not taken
/// over.
///
/// When the progress cancels, the entry at work and those after it are `cancelled`. Throws
/// std::bad_alloc and what the progress throws; no unfinished file stays then.
KPX_API UnzipResult unzip(const CString& archive, const CString& folder,
                          const UnzipOptions& options = {});

}  // namespace kpx
