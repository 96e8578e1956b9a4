#include "kpx/support/MemZip.h"

#include <zlib.h>

namespace kpx {

static_assert(MemZipCode::success == Z_OK && MemZipCode::badArgument == Z_STREAM_ERROR &&
              MemZipCode::badData == Z_DATA_ERROR && MemZipCode::noMemory == Z_MEM_ERROR &&
              MemZipCode::tooSmall == Z_BUF_ERROR);

namespace {

// An empty block has no bytes that a pointer could point to, and zlib writes none there.
bool usable(const void* block, unsigned long length) noexcept {
  return block != nullptr || length == 0;
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
  if (*destinationLength != 0) {
    return uncompress(destination, destinationLength, source, sourceLength);
  }
  // Without any room zlib takes the loss of a single byte for success.
  unsigned char lost = 0;
  unsigned long count = 1;
  const int code = uncompress(&lost, &count, source, sourceLength);
  return code == MemZipCode::success && count != 0 ? MemZipCode::tooSmall : code;
}

unsigned long memZipBound(unsigned long sourceLength) noexcept {
  return compressBound(sourceLength);
}

}  // namespace kpx
