#include "kpx/support/zip/MemZip.h"

#include <zlib.h>

#include <algorithm>

namespace kpx {

static_assert(MemZipCode::success == Z_OK && MemZipCode::badArgument == Z_STREAM_ERROR &&
              MemZipCode::badData == Z_DATA_ERROR && MemZipCode::noMemory == Z_MEM_ERROR &&
              MemZipCode::tooSmall == Z_BUF_ERROR);

namespace {

// An empty block has no bytes that a pointer could point to, and zlib writes none there.
bool usable(const void* block, unsigned long length) noexcept {
  return block != nullptr || length == 0;
}

/// Whether a stream can be decompressed to its end and holds any byte.
bool isWholeWithContent(const unsigned char* source, unsigned long length) noexcept {
  z_stream stream{};
  if (inflateInit(&stream) != Z_OK) return false;
  unsigned char scratch[4096];
  bool hasContent = false;
  int code = Z_OK;
  while (code == Z_OK) {
    if (stream.avail_in == 0) {
      stream.next_in = const_cast<unsigned char*>(source);
      stream.avail_in = static_cast<uInt>(std::min(length, 1ul << 30));
      source += stream.avail_in;
      length -= stream.avail_in;
    }
    stream.next_out = scratch;
    stream.avail_out = sizeof scratch;
    code = inflate(&stream, Z_NO_FLUSH);  // an end that is missing gives no Z_OK
    hasContent = hasContent || stream.avail_out != sizeof scratch;
  }
  inflateEnd(&stream);
  return code == Z_STREAM_END && hasContent;
}

}  // namespace

int KpxMemZip(unsigned char* destination, unsigned long* destinationLength,
              const unsigned char* source, unsigned long sourceLength) {
  if (!destinationLength || !usable(destination, *destinationLength) ||
      !usable(source, sourceLength)) {
    return MemZipCode::badArgument;
  }
  return compress(destination, destinationLength, source, sourceLength);
}

int KpxMemUnZip(unsigned char* destination, unsigned long* destinationLength,
                const unsigned char* source, unsigned long sourceLength) {
  if (!destinationLength || !usable(destination, *destinationLength) ||
      !usable(source, sourceLength)) {
    return MemZipCode::badArgument;
  }
  const bool hasRoom = *destinationLength != 0;
  const int code = uncompress(destination, destinationLength, source, sourceLength);
  // Without any room zlib takes the loss of a single byte for success, and that of more for damage.
  const bool isInDoubt = code == MemZipCode::success || code == MemZipCode::badData;
  return !hasRoom && isInDoubt && isWholeWithContent(source, sourceLength) ? MemZipCode::tooSmall
                                                                           : code;
}

unsigned long memZipBound(unsigned long sourceLength) noexcept {
  return compressBound(sourceLength);
}

}  // namespace kpx
