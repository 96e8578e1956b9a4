#include "kpx/support/zip/internal/ZipUnpacker.h"

#include <algorithm>
#include <new>

#include "kpx/support/zip/internal/ZipFormat.h"

namespace kpx::detail {
namespace {

// Both stay in the processor's cache, and a call of the system is rare enough.
constexpr std::size_t inputSize = std::size_t{1} << 16;
constexpr std::size_t outputSize = std::size_t{1} << 18;

constexpr int rawDeflate = -MAX_WBITS;

}  // namespace

ZipUnpacker::ZipUnpacker()
    : input_(new unsigned char[inputSize]), output_(new unsigned char[outputSize]) {
  if (inflateInit2(&stream_, rawDeflate) != Z_OK) throw std::bad_alloc();
}

ZipUnpacker::~ZipUnpacker() { inflateEnd(&stream_); }

ZipStatus ZipUnpacker::unpack(InputFile& file, const ZipEntry& entry, std::uint64_t offset,
                              const ZipArchive::Sink& sink, FileResult& fileResult) {
  file_ = &file;
  entry_ = &entry;
  sink_ = &sink;
  offset_ = offset;
  packedLeft_ = entry.packedSize;
  sizeLeft_ = entry.size;
  checksum_ = 0;
  fileResult_ = {};
  ZipStatus status = entry.method == zip::stored ? copyStored() : inflateAll();
  if (status == ZipStatus::done && sizeLeft_ != 0) status = ZipStatus::sizeWrong;
  if (status == ZipStatus::done && checksum_ != entry.checksum) status = ZipStatus::checksumWrong;
  fileResult = fileResult_;
  return status;
}

ZipStatus ZipUnpacker::copyStored() {
  while (packedLeft_ != 0) {
    ZipStatus status = readInput();
    if (status == ZipStatus::done) status = emit(stream_.next_in, stream_.avail_in);
    if (status != ZipStatus::done) return status;
  }
  return ZipStatus::done;
}

ZipStatus ZipUnpacker::inflateAll() {
  inflateReset(&stream_);
  stream_.avail_in = 0;
  for (bool ended = false; !ended;) {
    stream_.next_out = output_.get();
    stream_.avail_out = static_cast<uInt>(outputSize);
    while (stream_.avail_out != 0 && !ended) {
      if (stream_.avail_in == 0 && packedLeft_ != 0) {
        if (const ZipStatus status = readInput(); status != ZipStatus::done) return status;
      }
      const int code = inflate(&stream_, Z_NO_FLUSH);
      if (code == Z_MEM_ERROR) throw std::bad_alloc();
      if (code != Z_OK && code != Z_STREAM_END) return ZipStatus::contentDamaged;
      ended = code == Z_STREAM_END;
    }
    const ZipStatus status = emit(output_.get(), outputSize - stream_.avail_out);
    if (status != ZipStatus::done) return status;
  }
  return packedLeft_ == 0 && stream_.avail_in == 0 ? ZipStatus::done : ZipStatus::sizeWrong;
}

ZipStatus ZipUnpacker::readInput() {
  const auto wanted = static_cast<std::size_t>(std::min<std::uint64_t>(packedLeft_, inputSize));
  std::size_t done = 0;
  fileResult_ = file_->readAt(offset_, reinterpret_cast<char*>(input_.get()), wanted, done);
  if (!fileResult_) return ZipStatus::unreadable;
  if (done < wanted) return ZipStatus::contentDamaged;
  offset_ += done;
  packedLeft_ -= done;
  stream_.next_in = input_.get();
  stream_.avail_in = static_cast<uInt>(done);
  return ZipStatus::done;
}

ZipStatus ZipUnpacker::emit(const unsigned char* bytes, std::size_t count) {
  if (count > sizeLeft_) return ZipStatus::sizeWrong;
  if (count == 0) return ZipStatus::done;
  sizeLeft_ -= count;
  checksum_ = static_cast<std::uint32_t>(crc32_z(checksum_, bytes, count));
  return (*sink_)({reinterpret_cast<const char*>(bytes), count});
}

}  // namespace kpx::detail
