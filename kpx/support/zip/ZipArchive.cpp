#include "kpx/support/zip/ZipArchive.h"

#include <algorithm>
#include <utility>

#include "kpx/support/zip/internal/ZipDirectory.h"
#include "kpx/support/zip/internal/ZipFormat.h"
#include "kpx/support/zip/internal/ZipUnpacker.h"

namespace kpx {
namespace {

namespace zip = detail::zip;

/// Refuses what passes the limits and answers what all the others unpack to.
std::uint64_t applyLimits(std::vector<ZipEntry>& entries, const ZipLimits& limits) {
  const std::uint64_t ratio = std::max<std::uint64_t>(limits.ratio, 1);
  std::uint64_t total = 0;
  for (ZipEntry& entry : entries) {
    if (entry.status != ZipStatus::done) continue;
    if (entry.size >= limits.ratioFromBytes && entry.packedSize < entry.size / ratio) {
      entry.status = ZipStatus::ratioTooHigh;
    } else if (entry.size > limits.totalBytes - total) {
      entry.status = ZipStatus::totalTooLarge;
    } else {
      total += entry.size;
    }
    if (entry.status != ZipStatus::done) entry.path.Empty();
  }
  return total;
}

}  // namespace

ZipArchive::ZipArchive() noexcept = default;
ZipArchive::ZipArchive(ZipArchive&&) noexcept = default;
ZipArchive& ZipArchive::operator=(ZipArchive&&) noexcept = default;
ZipArchive::~ZipArchive() = default;

ZipStatus ZipArchive::open(const CString& path, const ZipLimits& limits) {
  std::unique_ptr<InputFile> file;
  const FileResult opened = fileSystem().openInput(path, file);
  if (!opened) {
    *this = ZipArchive();
    fileResult_ = opened;
    return ZipStatus::unreadable;
  }
  return open(std::move(file), limits);
}

ZipStatus ZipArchive::open(std::unique_ptr<InputFile> file, const ZipLimits& limits) {
  *this = ZipArchive();
  detail::ZipDirectory directory = detail::readZipDirectory(*file, limits.entries);
  file_ = std::move(file);
  entries_ = std::move(directory.entries);
  fileResult_ = directory.fileResult;
  totalBytes_ = applyLimits(entries_, limits);
  return directory.status;
}

ZipStatus ZipArchive::compareSizes(const ZipEntry& entry, std::string_view header) {
  const std::uint32_t checksum = zip::u32(header, 14);
  std::uint64_t packedSize = zip::u32(header, 18);
  std::uint64_t size = zip::u32(header, 22);
  if (packedSize == zip::elsewhere32 || size == zip::elsewhere32) {
    std::string extra(zip::u16(header, 28), '\0');
    std::size_t done = 0;
    fileResult_ =
        file_->readAt(entry.headerOffset + header.size(), extra.data(), extra.size(), done);
    if (!fileResult_) return ZipStatus::unreadable;
    extra.resize(done);
    zip::readNumbers64(extra, {&size, &packedSize});
  }
  const bool agree =
      checksum == entry.checksum && packedSize == entry.packedSize && size == entry.size;
  return agree ? ZipStatus::done : ZipStatus::headersDiffer;
}

ZipStatus ZipArchive::read(std::size_t index, const Sink& sink) {
  const ZipEntry& entry = entries_[index];
  if (entry.status != ZipStatus::done || entry.folder) return entry.status;

  std::string header(zip::localLength + entry.storedName.size(), '\0');
  std::size_t done = 0;
  fileResult_ = file_->readAt(entry.headerOffset, header.data(), header.size(), done);
  if (!fileResult_) return ZipStatus::unreadable;
  if (done < header.size() || zip::u32(header, 0) != zip::localSignature) {
    return ZipStatus::headerDamaged;
  }
  // What differs here would let two programs take one archive for different content.
  if ((zip::u16(header, 6) & zip::flagEncrypted) != 0 || zip::u16(header, 8) != entry.method ||
      zip::u16(header, 26) != entry.storedName.size() ||
      header.compare(zip::localLength, std::string::npos, entry.storedName) != 0) {
    return ZipStatus::headersDiffer;
  }
  if ((zip::u16(header, 6) & zip::flagSizesFollow) == 0) {
    const ZipStatus sizes = compareSizes(entry, header);
    if (sizes != ZipStatus::done) return sizes;
  }
  const std::uint64_t content = entry.headerOffset + header.size() + zip::u16(header, 28);
  if (content > entry.end || entry.packedSize > entry.end - content) {
    return ZipStatus::overlapping;
  }
  if (!unpacker_) unpacker_ = std::make_unique<detail::ZipUnpacker>();
  return unpacker_->unpack(*file_, entry, content, sink, fileResult_);
}

}  // namespace kpx
