#include "kpx/support/zip/Unzip.h"

#include <algorithm>
#include <set>
#include <string_view>

#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "kpx/support/Operations.h"
#include "kpx/text/TextTools.h"

namespace kpx {
namespace {

CString withFileReason(ZipStatus status, const FileResult& file) {
  CString message = zipMessage(status);
  if (!file) message += u": " + file.message();
  return message;
}

/// Writes the entries of one archive below one folder.
class Extraction {
 public:
  Extraction(ZipArchive& archive, const CString& folder, const UnzipOptions& options)
      : archive_(archive), root_(folder), options_(options) {
    if (root_.IsEmpty()) root_ = u".";
    // Not `joinPath`, which goes on with a backslash where the folder has one in its name.
    if (!isPathSeparator(root_[root_.GetLength() - 1])) root_ += u'/';
  }

  FileResult createRoot() { return fileSystem().createFolders(root_); }

  UnzipReceipt treat(std::size_t index) {
    const ZipEntry& entry = archive_.entries()[index];
    UnzipReceipt receipt{entry.name, entry.status, 0, {}};
    if (receipt.status != ZipStatus::done) return receipt;
    const std::uint64_t before = done_;
    if (cancelled_ || !report(entry, 0)) {
      receipt.status = ZipStatus::cancelled;
    } else if (options_.testOnly) {
      receipt.status = read(
          index, [](std::string_view) { return FileResult(); }, receipt.file);
    } else if (entry.folder) {
      receipt.status = prepareFolder(entry.path, receipt.file);
    } else {
      receipt.status = write(index, receipt.file);
    }
    if (receipt.status == ZipStatus::done) receipt.bytes = entry.size;
    // An entry that failed half way counts as a whole, so that the total is reached.
    done_ = before + entry.size;
    return receipt;
  }

  /// Tells the progress that everything is done.
  void finish() {
    if (options_.progress && !cancelled_) options_.progress({done_, archive_.totalBytes(), u""});
  }

 private:
  bool report(const ZipEntry& entry, std::uint64_t bytes) {
    done_ += bytes;
    if (options_.progress &&
        !options_.progress({done_, archive_.totalBytes(), entry.name.view()})) {
      cancelled_ = true;
    }
    return !cancelled_;
  }

  /// Unpacks an entry into `take`, which answers the result of writing a piece.
  template <class Take>
  ZipStatus read(std::size_t index, const Take& take, FileResult& result) {
    const ZipEntry& entry = archive_.entries()[index];
    const ZipStatus status = archive_.read(index, [&](std::string_view bytes) {
      result = take(bytes);
      if (!result) return ZipStatus::notWritten;
      return report(entry, bytes.size()) ? ZipStatus::done : ZipStatus::cancelled;
    });
    if (status == ZipStatus::unreadable) result = archive_.fileResult();
    return status;
  }

  ZipStatus write(std::size_t index, FileResult& result) {
    const CString& path = archive_.entries()[index].path;
    const int lastName = path.ReverseFind(u'/') + 1;
    ZipStatus status = prepareFolder(path.Left(lastName == 0 ? 0 : lastName - 1), result);
    const CString target = root_ + path;
    if (status == ZipStatus::done) status = checkNoLink(target, result);
    if (status != ZipStatus::done) return status;
    const bool isShared = archive_.entries()[index].shared;
    const bool isOwn = isShared && written_.contains(path);
    if (options_.overwrite == UnzipOverwrite::never && !isOwn && fileSystem().exists(target)) {
      return ZipStatus::kept;
    }
    FileResult writing;
    // Waiting for the volume would make archives of many small files many times slower, and after
    // a failure of the power the archive is still there.
    result = fileSystem().replaceFile(
        target,
        [&](OutputFile& file) {
          status = read(
              index, [&](std::string_view bytes) { return file.write(bytes); }, writing);
          return status == ZipStatus::done ? FileResult() : FileResult{FileStatus::failed, 0};
        },
        {.durability = Durability::leftToSystem});
    if (status != ZipStatus::done) {
      result = writing;
      return status;
    }
    if (!result) return ZipStatus::notWritten;
    if (isShared) written_.insert(path);
    return ZipStatus::done;
  }

  /// Creates the folders of a path below the root, and makes sure that none of them is a link,
  /// which could lead out of it.
  ZipStatus prepareFolder(const CString& path, FileResult& result) {
    // Entries of one folder follow each other as a rule, so the folders of the last one are known.
    int known = 0;
    for (int i = 0;; ++i) {
      const bool pathEnds = i == path.GetLength() || path[i] == u'/';
      const bool lastEnds = i == lastFolder_.GetLength() || lastFolder_[i] == u'/';
      if (pathEnds && lastEnds) known = i;
      if (i == path.GetLength() || i == lastFolder_.GetLength() || path[i] != lastFolder_[i]) break;
    }
    if (known == path.GetLength()) return ZipStatus::done;
    lastFolder_ = path.Left(known);
    while (known < path.GetLength()) {
      const int next = path.Find(u'/', known + 1);
      const int length = next == -1 ? path.GetLength() : next;
      const CString folder = root_ + path.Left(length);
      result = fileSystem().createFolder(folder);
      if (result.status == FileStatus::exists) {
        const ZipStatus status = checkNoLink(folder, result);
        if (status != ZipStatus::done) return status;
        FileInfo info;
        result = fileSystem().info(folder, info);
        if (result && info.kind != FileKind::folder) result = {FileStatus::notFolder, 0};
      }
      if (!result) return ZipStatus::notWritten;
      lastFolder_ = path.Left(length);
      known = length;
    }
    return ZipStatus::done;
  }

  static ZipStatus checkNoLink(const CString& path, FileResult& result) {
    CString target;
    result = fileSystem().followLinks(path, target);
    // A link in a circle leads nowhere, but is one.
    if (result.status == FileStatus::badName && target != path) result = {};
    if (!result) return ZipStatus::notWritten;
    return target == path ? ZipStatus::done : ZipStatus::throughLink;
  }

  ZipArchive& archive_;
  CString root_;
  const UnzipOptions& options_;
  CString lastFolder_;         // below the root; known to be a folder and no link
  std::set<CString> written_;  // files here that a later entry of the same path replaces
  std::uint64_t done_ = 0;
  bool cancelled_ = false;
};

}  // namespace

CString UnzipReceipt::message() const { return withFileReason(status, file); }

CString UnzipResult::message() const { return withFileReason(archive, file); }

bool UnzipResult::complete() const noexcept {
  return archive == ZipStatus::done &&
         std::all_of(entries.begin(), entries.end(), [](const UnzipReceipt& entry) {
           return entry.status == ZipStatus::done || entry.status == ZipStatus::kept;
         });
}

UnzipResult unzip(const CString& archive, const CString& folder, const UnzipOptions& options) {
  UnzipResult result;
  ZipArchive source;
  result.archive = source.open(archive, options.limits);
  result.file = source.fileResult();
  if (result.archive != ZipStatus::done && source.entries().empty()) return result;

  Extraction extraction(source, folder, options);
  if (!options.testOnly) {
    result.file = extraction.createRoot();
    if (!result.file) {
      result.archive = ZipStatus::notWritten;
      return result;
    }
  }
  result.entries.reserve(source.entries().size());
  for (std::size_t i = 0; i < source.entries().size(); ++i) {
    result.entries.push_back(extraction.treat(i));
  }
  extraction.finish();
  return result;
}

void kpxUnzip(const CString& archive, const CString& folder) {
  Guarded("kpxUnzip"_support, [&] {
    // Callers have no other way to learn that something is missing.
    if (!unzip(archive, folder).complete()) throw FileException();
  });
}

}  // namespace kpx
