#include "kpx/support/zip/MemZip.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <string>
#include <vector>

namespace kpx {
namespace {

using Bytes = std::vector<unsigned char>;

Bytes unevenBytes(std::size_t size) {
  Bytes bytes(size);
  std::uint32_t state = 1;
  for (unsigned char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<unsigned char>(state >> 29);  // few values, so that there is a gain
  }
  return bytes;
}

TEST(MemZip, BlockComesBackFromABufferOfExactlyItsSize) {
  for (const std::size_t size : {0, 1, 1000, 300000}) {
    const Bytes source = unevenBytes(size);
    Bytes packed(memZipBound(size));
    unsigned long packedLength = packed.size();
    ASSERT_EQ(KpxMemZip(packed.data(), &packedLength, source.data(), size), 0);
    ASSERT_GE(packedLength, 2u);
    // A zlib stream: deflate, a window of 32 K, and a header that divides by 31.
    EXPECT_EQ(packed[0], 0x78);
    EXPECT_EQ((packed[0] * 256 + packed[1]) % 31, 0);

    Bytes back(size);
    unsigned long length = size;
    EXPECT_EQ(KpxMemUnZip(back.data(), &length, packed.data(), packedLength), 0);
    EXPECT_EQ(length, size);
    EXPECT_EQ(back, source);

    if (size == 0) continue;
    for (const std::size_t room : {size - 1, std::size_t{0}}) {
      length = room;
      EXPECT_EQ(KpxMemUnZip(back.data(), &length, packed.data(), packedLength), -5) << size;
    }
    unsigned long tight = packedLength - 1;
    EXPECT_EQ(KpxMemZip(packed.data(), &tight, source.data(), size), -5);
  }
}

TEST(MemZip, DamagedStreamsGiveTheirCodeAndNothingElse) {
  const Bytes source = unevenBytes(1000);
  Bytes packed(memZipBound(1000));
  unsigned long packedLength = packed.size();
  ASSERT_EQ(KpxMemZip(packed.data(), &packedLength, source.data(), 1000), 0);
  Bytes back(1000);
  unsigned long length = 0;
  for (const unsigned long room : {1000ul, 0ul}) {
    length = room;
    EXPECT_EQ(KpxMemUnZip(back.data(), &length, packed.data(), packedLength / 2), -3) << room;
    length = room;
    EXPECT_EQ(KpxMemUnZip(back.data(), &length, nullptr, 0), -3) << room;
  }
  packed[packedLength - 1] ^= 1;  // the checksum
  for (const unsigned long room : {1000ul, 0ul}) {
    length = room;
    EXPECT_EQ(KpxMemUnZip(back.data(), &length, packed.data(), packedLength), -3) << room;
  }
  length = 1000;
  EXPECT_EQ(KpxMemUnZip(nullptr, &length, packed.data(), packedLength), -2);
  EXPECT_EQ(KpxMemZip(back.data(), nullptr, source.data(), 1000), -2);
}

}  // namespace
}  // namespace kpx
