#include "kpx/support/zip/internal/ZipDirectory.h"

#include <algorithm>
#include <optional>
#include <string>

#include "kpx/support/zip/internal/ZipFormat.h"
#include "kpx/support/zip/internal/ZipNames.h"

namespace kpx::detail {
namespace {

/// Where the directory lies, as the records at the end of the file tell.
struct DirectoryPlace {
  std::uint64_t offset = 0;
  std::uint64_t size = 0;
  std::uint64_t entries = 0;
  std::uint64_t prefix = 0;  // bytes before the archive, as of a self-extracting program
  bool countIsWhole = false;
};

/// Reads a range of a file from front to end.
class RangeReader {
 public:
  RangeReader(InputFile& file, std::uint64_t offset, std::uint64_t size)
      : file_(file), offset_(offset), left_(size) {}

  std::uint64_t left() const noexcept { return left_ + ready().size(); }
  const FileResult& result() const noexcept { return result_; }

  /// The next bytes without passing them, valid until the next call; empty when there are fewer.
  std::string_view peek(std::size_t count) {
    if (ready().size() < count && !refill(count)) return {};
    return ready().substr(0, count);
  }
  /// Requires that so many were looked at.
  void pass(std::size_t count) noexcept { at_ += count; }

 private:
  std::string_view ready() const noexcept { return std::string_view(buffer_).substr(at_); }

  bool refill(std::size_t count) {
    if (count > left()) return false;
    constexpr std::size_t piece = std::size_t{1} << 18;
    buffer_.erase(0, at_);
    at_ = 0;
    const std::size_t kept = buffer_.size();
    const auto wanted =
        static_cast<std::size_t>(std::min<std::uint64_t>(left_, std::max(piece, count - kept)));
    buffer_.resize(kept + wanted);
    std::size_t done = 0;
    result_ = file_.readAt(offset_, buffer_.data() + kept, wanted, done);
    buffer_.resize(kept + done);
    offset_ += done;
    left_ -= done;
    return buffer_.size() >= count;
  }

  InputFile& file_;
  std::uint64_t offset_;
  std::uint64_t left_;
  std::string buffer_;
  std::size_t at_ = 0;
  FileResult result_;
};

/// Reads so many bytes, or fewer at the end of the file.
FileResult readPiece(InputFile& file, std::uint64_t offset, std::size_t count, std::string& bytes) {
  bytes.resize(count);
  std::size_t done = 0;
  const FileResult result = file.readAt(offset, bytes.data(), count, done);
  bytes.resize(done);
  return result;
}

/// The place of the end record in the last bytes of the file, or npos. A record whose comment
/// ends with the file is preferred to one with something behind it, which a download may append.
std::size_t findEnd(std::string_view tail) {
  std::size_t second = std::string_view::npos;
  if (tail.size() < zip::endLength) return second;
  for (std::size_t place = tail.size() - zip::endLength + 1; place-- > 0;) {
    if (tail[place] != 'P' || zip::u32(tail, place) != zip::endSignature) continue;
    const std::size_t end = place + zip::endLength + zip::u16(tail, place + 20);
    if (end == tail.size()) return place;
    if (end < tail.size() && second == std::string_view::npos) second = place;
  }
  return second;
}

/// The directory as the 64-bit end record tells that a locator in front of the end record points
/// to; `end` becomes its place. None when there is no such record.
std::optional<DirectoryPlace> readEnd64(InputFile& file, std::string_view locator,
                                        std::uint64_t locatorPlace, std::uint64_t& end) {
  // The offset that is stated counts from the front of the archive, so behind a program the record
  // stands later: as a rule just in front of the locator.
  const std::uint64_t inFront =
      locatorPlace - std::min<std::uint64_t>(locatorPlace, zip::end64Length);
  for (const std::uint64_t candidate : {zip::u64(locator, 8), inFront}) {
    std::string record;
    if (candidate >= locatorPlace || !readPiece(file, candidate, zip::end64Length, record) ||
        record.size() < zip::end64Length || zip::u32(record, 0) != zip::end64Signature) {
      continue;
    }
    end = candidate;
    return DirectoryPlace{zip::u64(record, 48), zip::u64(record, 40), zip::u64(record, 32), 0,
                          true};
  }
  return std::nullopt;
}

/// Whether a number of the end record stands in the 64-bit one, or is the same there.
constexpr bool agrees(std::uint64_t number, std::uint64_t elsewhere,
                      std::uint64_t number64) noexcept {
  return number == elsewhere || number == number64;
}

ZipStatus findDirectory(InputFile& file, DirectoryPlace& place, FileResult& fileResult) {
  const std::uint64_t size = file.size();
  const auto tailSize = static_cast<std::size_t>(std::min<std::uint64_t>(
      size, zip::end64LocatorLength + zip::endLength + zip::longestComment));
  std::string bytes;
  fileResult = readPiece(file, size - tailSize, tailSize, bytes);
  if (!fileResult) return ZipStatus::unreadable;
  const std::string_view tail = bytes;
  const std::size_t found = findEnd(tail);
  if (found == std::string_view::npos) return ZipStatus::noArchive;

  const std::string_view record = tail.substr(found);
  std::uint64_t end = size - tailSize + found;
  place = {zip::u32(record, 16), zip::u32(record, 12), zip::u16(record, 10), 0, false};
  std::optional<DirectoryPlace> place64;
  if (found >= zip::end64LocatorLength) {
    const std::string_view locator = tail.substr(found - zip::end64LocatorLength);
    if (zip::u32(locator, 0) == zip::end64LocatorSignature) {
      if (zip::u32(locator, 16) > 1) return ZipStatus::severalVolumes;
      place64 = readEnd64(file, locator, end - zip::end64LocatorLength, end);
    }
  }
  if (place64) {
    if (!agrees(place.offset, zip::elsewhere32, place64->offset) ||
        !agrees(place.size, zip::elsewhere32, place64->size) ||
        !agrees(place.entries, zip::elsewhere16, place64->entries)) {
      return ZipStatus::directoryDamaged;
    }
    place = *place64;
  } else if (zip::u16(record, 4) != 0 || zip::u16(record, 6) != 0 ||
             zip::u16(record, 8) != place.entries) {
    return ZipStatus::severalVolumes;
  }

  // The directory ends where the end records begin; what it is away from where it should be
  // stands in front of the archive.
  if (place.offset > end || place.size > end - place.offset) return ZipStatus::directoryDamaged;
  place.prefix = end - place.size - place.offset;
  return ZipStatus::done;
}

/// Tells by the attributes of the system that made an entry whether it is a folder, and refuses
/// links and devices.
ZipStatus classify(std::uint16_t madeBy, std::uint32_t attributes, ZipEntry& entry) noexcept {
  constexpr int unix = 3;
  constexpr int mac = 19;
  constexpr std::uint32_t pipe = 0x1;
  constexpr std::uint32_t folder = 0x4;
  constexpr std::uint32_t regularFile = 0x8;
  const int system = madeBy >> 8;
  const bool tellsKind = system == unix || system == mac;
  const std::uint32_t kind = tellsKind ? attributes >> 28 : 0;
  constexpr std::uint32_t folderBit = 0x10;
  entry.folder = isZipFolderName(entry.name) || (entry.size == 0 && kind != regularFile &&
                                                 (kind == folder || (attributes & folderBit) != 0));
  switch (kind) {
    case 0xA:
      return ZipStatus::link;
    case pipe:  // with content, it is a file that was packed from standard input
      return entry.size == 0 ? ZipStatus::specialFile : ZipStatus::done;
    case 0x2:  // character device
    case 0x6:  // block device
    case 0xC:  // socket
      return ZipStatus::specialFile;
    default:
      break;
  }
  // Other systems mark more than links so: folders, and files that are kept elsewhere. Only what
  // can be the path of a target makes a link.
  constexpr std::uint32_t reparseBit = 0x400;
  constexpr std::uint64_t longestTarget = 3 * 0x7FFF;
  const bool hasTarget = !entry.folder && entry.size != 0 && entry.size <= longestTarget;
  return !tellsKind && (attributes & reparseBit) != 0 && hasTarget ? ZipStatus::link
                                                                   : ZipStatus::done;
}

ZipStatus statusOf(const ZipEntry& entry, std::uint16_t flags, ZipStatus kind) noexcept {
  if (kind != ZipStatus::done) return kind;
  if ((flags & zip::flagEncrypted) != 0) return ZipStatus::encrypted;
  if (entry.folder) return entry.size == 0 ? ZipStatus::done : ZipStatus::folderWithContent;
  if (entry.method != zip::stored && entry.method != zip::deflated) {
    return ZipStatus::unknownMethod;
  }
  const bool sizesFit = entry.method != zip::stored || entry.packedSize == entry.size;
  return sizesFit ? ZipStatus::done : ZipStatus::sizeWrong;
}

/// The entry of one directory record with its name and extra fields.
ZipEntry entryOf(std::string_view record, const DirectoryPlace& place) {
  const std::uint16_t madeBy = zip::u16(record, 4);
  const std::uint16_t flags = zip::u16(record, 8);
  const std::size_t nameLength = zip::u16(record, 28);
  const std::uint32_t attributes = zip::u32(record, 38);
  const std::string_view extra =
      record.substr(zip::directoryLength + nameLength, zip::u16(record, 30));

  ZipEntry entry;
  entry.method = zip::u16(record, 10);
  entry.checksum = zip::u32(record, 16);
  entry.packedSize = zip::u32(record, 20);
  entry.size = zip::u32(record, 24);
  entry.headerOffset = zip::u32(record, 42);
  entry.storedName = record.substr(zip::directoryLength, nameLength);
  entry.name = zipEntryName(entry.storedName, flags, extra);
  const bool sizesKnown =
      zip::readNumbers64(extra, {&entry.size, &entry.packedSize, &entry.headerOffset});
  const ZipStatus kind = classify(madeBy, attributes, entry);
  entry.status = zipEntryPath(entry.name, entry.path);
  if (entry.status == ZipStatus::done) entry.status = statusOf(entry, flags, kind);
  const std::uint64_t room = place.offset;  // all content lies in front of the directory
  if (!sizesKnown || entry.headerOffset > room || entry.packedSize > room - entry.headerOffset) {
    entry.status = ZipStatus::headerDamaged;
    entry.headerOffset = 0;
  }
  entry.headerOffset += place.prefix;
  entry.end = place.prefix + place.offset;
  return entry;
}

/// Reads the records one after the other; what stands behind a damaged one is not found.
void readEntries(InputFile& file, const DirectoryPlace& place, std::uint64_t maxEntries,
                 ZipDirectory& directory) {
  RangeReader reader(file, directory.offset, place.size);
  for (;;) {
    std::string_view record = reader.peek(zip::directoryLength);
    if (record.empty() || zip::u32(record, 0) != zip::directorySignature) break;
    const std::size_t length =
        zip::directoryLength + zip::u16(record, 28) + zip::u16(record, 30) + zip::u16(record, 32);
    record = reader.peek(length);
    if (record.empty()) break;
    if (directory.entries.size() >= maxEntries) {
      directory.status = ZipStatus::tooManyEntries;
      directory.entries.clear();
      return;
    }
    directory.entries.push_back(entryOf(record, place));
    reader.pass(length);
  }
  if (!reader.result()) {
    directory.status = ZipStatus::unreadable;
    directory.fileResult = reader.result();
    directory.entries.clear();
    return;
  }
  // Writers without 64-bit records let a count above 65,535 wrap.
  const std::uint64_t counted = directory.entries.size();
  const bool complete =
      place.countIsWhole ? counted == place.entries : (counted & 0xFFFF) == place.entries;
  if (!complete) directory.status = ZipStatus::directoryDamaged;
}

/// Gives each entry the place where the next one begins, and refuses one that reaches beyond.
void separate(std::vector<ZipEntry>& entries) {
  std::vector<std::uint32_t> order;
  order.reserve(entries.size());
  for (std::uint32_t i = 0; i < entries.size(); ++i) {
    // The place of a damaged one says nothing about the others.
    if (entries[i].status != ZipStatus::headerDamaged) order.push_back(i);
  }
  std::ranges::stable_sort(order, {}, [&](std::uint32_t i) { return entries[i].headerOffset; });
  for (std::size_t i = 0; i + 1 < order.size(); ++i) {
    ZipEntry& entry = entries[order[i]];
    entry.end = entries[order[i + 1]].headerOffset;
    const std::uint64_t least = zip::localLength + entry.storedName.size() + entry.packedSize;
    if (entry.status == ZipStatus::done && entry.end - entry.headerOffset < least) {
      entry.status = ZipStatus::overlapping;
    }
  }
}

}  // namespace

ZipDirectory readZipDirectory(InputFile& file, std::uint64_t maxEntries) {
  ZipDirectory directory;
  DirectoryPlace place;
  directory.status = findDirectory(file, place, directory.fileResult);
  if (directory.status != ZipStatus::done) return directory;
  directory.offset = place.prefix + place.offset;
  readEntries(file, place, maxEntries, directory);
  separate(directory.entries);

  ZipPathClaims claims;
  for (ZipEntry& entry : directory.entries) {
    if (entry.status == ZipStatus::done) claims.claim(entry);
    if (isRefusal(entry.status)) entry.path.Empty();
  }
  return directory;
}

}  // namespace kpx::detail
