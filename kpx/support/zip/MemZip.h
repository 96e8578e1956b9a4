#pragma once

#include "kpx/report/Export.h"

namespace kpx {

/// What KpxMemZip and KpxMemUnZip answer. Modules compare with the numbers.
struct MemZipCode {
  static constexpr int success = 0;
  static constexpr int badArgument = -2;  // a pointer is null
  static constexpr int badData = -3;      // corrupt or incomplete input
  static constexpr int noMemory = -4;
  static constexpr int tooSmall = -5;  // the destination
};

/// Compresses a block of memory into a zlib stream (RFC 1950) at the default level.
///
/// `destinationLength` is the size of the destination in bytes on entry and the number of bytes
/// written on return. A destination of `memZipBound(sourceLength)` bytes is always large enough.
/// Answers a `MemZipCode`; never throws. The blocks must not overlap; a source of length 0 may be
/// a null pointer.
KPX_API int KpxMemZip(unsigned char* destination, unsigned long* destinationLength,
                      const unsigned char* source, unsigned long sourceLength);

/// Decompresses what KpxMemZip wrote. The stream does not tell how large the content is: the
/// caller stores that beside it, or knows a bound.
///
/// `destinationLength` is the size of the destination in bytes on entry and the number of bytes
/// of the content on return. Answers a `MemZipCode`; never throws. A destination of length 0 is too
/// small for any content.
KPX_API int KpxMemUnZip(unsigned char* destination, unsigned long* destinationLength,
                        const unsigned char* source, unsigned long sourceLength);

/// The most bytes that compressing a block of this length takes.
KPX_API unsigned long memZipBound(unsigned long sourceLength) noexcept;

}  // namespace kpx
