#pragma once

#include <zlib.h>

#include <cstdint>
#include <memory>

#include "kpx/platform/FileSystem.h"
#include "kpx/support/zip/ZipArchive.h"

namespace kpx::detail {

/// Unpacks the content of entries, one after the other, with the same buffers.
class ZipUnpacker {
 public:
  /// Throws std::bad_alloc.
  ZipUnpacker();
  ~ZipUnpacker();
  ZipUnpacker(const ZipUnpacker&) = delete;
  ZipUnpacker& operator=(const ZipUnpacker&) = delete;

  /// Unpacks the bytes from `offset` on as the entry states method, sizes and checksum. Never
  /// gives the sink more bytes than are stated. `fileResult` tells more after `unreadable`.
  ZipStatus unpack(InputFile& file, const ZipEntry& entry, std::uint64_t offset,
                   const ZipArchive::Sink& sink, FileResult& fileResult);

 private:
  ZipStatus copyStored();
  ZipStatus inflateAll();
  /// Reads the next packed bytes into the input buffer; `contentDamaged` when the file ends.
  ZipStatus readInput();
  /// Hands out what the output buffer holds.
  ZipStatus emit(const unsigned char* bytes, std::size_t count);

  std::unique_ptr<unsigned char[]> input_;
  std::unique_ptr<unsigned char[]> output_;
  z_stream stream_{};

  // The entry at work.
  InputFile* file_ = nullptr;
  const ZipEntry* entry_ = nullptr;
  const ZipArchive::Sink* sink_ = nullptr;
  std::uint64_t offset_ = 0;  // of the next packed byte in the file
  std::uint64_t packedLeft_ = 0;
  std::uint64_t sizeLeft_ = 0;
  std::uint32_t checksum_ = 0;
  FileResult fileResult_;
};

}  // namespace kpx::detail
