#pragma once

#include <zlib.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace kpx {

/// One entry of an archive that a test builds. What is not set is as a good writer writes it.
struct ZipPart {
  std::string name;
  std::string content;
  std::uint16_t method = 8;
  std::uint16_t flags = 0;
  std::string extra{};           // in the directory
  std::uint32_t attributes = 0;  // with 3 << 8 in `madeBy`, a file mode in the upper half
  std::uint16_t madeBy = 20;
  std::uint16_t localExtra = 0;  // so many bytes of extra fields in front of the content

  // Lies.
  std::optional<std::uint64_t> size{}, packedSize{}, offset{};
  std::optional<std::uint32_t> checksum{};
  std::optional<std::string> localName{}, packed{};
  // Of its own header alone.
  std::optional<std::uint64_t> localSize{}, localPackedSize{};
  std::optional<std::uint32_t> localChecksum{};
};

struct ZipShape {
  bool sizes64 = false;     // all numbers in 64-bit fields, in the entries' own headers, too
  bool descriptor = false;  // sizes and checksum follow the content
  std::string prefix{};     // in front of the archive
  std::string comment{};
};

namespace detail {

inline void put(std::string& bytes, std::uint64_t number, int width) {
  for (int i = 0; i < width; ++i) bytes += static_cast<char>(number >> (8 * i) & 0xFF);
}

inline std::string deflated(std::string_view content) {
  z_stream stream{};
  deflateInit2(&stream, 6, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY);
  std::string packed(deflateBound(&stream, content.size()), '\0');
  stream.next_in = reinterpret_cast<Bytef*>(const_cast<char*>(content.data()));
  stream.avail_in = static_cast<uInt>(content.size());
  stream.next_out = reinterpret_cast<Bytef*>(packed.data());
  stream.avail_out = static_cast<uInt>(packed.size());
  deflate(&stream, Z_FINISH);
  packed.resize(stream.total_out);
  deflateEnd(&stream);
  return packed;
}

}  // namespace detail

/// The bytes of an archive.
inline std::string zipOf(const std::vector<ZipPart>& parts, const ZipShape& shape = {}) {
  using detail::put;
  std::string bytes;
  std::string directory;
  for (const ZipPart& part : parts) {
    const std::string packed = part.packed        ? *part.packed
                               : part.method == 8 ? detail::deflated(part.content)
                                                  : part.content;
    const std::uint64_t size = part.size.value_or(part.content.size());
    const std::uint64_t packedSize = part.packedSize.value_or(packed.size());
    const std::uint64_t offset = part.offset.value_or(bytes.size());
    const std::uint32_t checksum = part.checksum.value_or(static_cast<std::uint32_t>(
        crc32_z(0, reinterpret_cast<const Bytef*>(part.content.data()), part.content.size())));
    const auto flags = static_cast<std::uint16_t>(part.flags | (shape.descriptor ? 8 : 0));
    const std::string& localName = part.localName ? *part.localName : part.name;

    constexpr std::uint32_t elsewhere = 0xFFFFFFFF;
    std::string localExtra;
    std::uint64_t localSize = shape.descriptor ? 0 : part.localSize.value_or(size);
    std::uint64_t localPackedSize =
        shape.descriptor ? 0 : part.localPackedSize.value_or(packedSize);
    if (shape.sizes64) {
      put(localExtra, 1, 2);
      put(localExtra, 16, 2);
      put(localExtra, std::exchange(localSize, elsewhere), 8);
      put(localExtra, std::exchange(localPackedSize, elsewhere), 8);
    }
    localExtra.append(part.localExtra, '\0');
    put(bytes, 0x04034b50, 4);
    put(bytes, 20, 2);
    put(bytes, flags, 2);
    put(bytes, part.method, 2);
    put(bytes, 0, 4);
    put(bytes, shape.descriptor ? 0 : part.localChecksum.value_or(checksum), 4);
    put(bytes, localPackedSize, 4);
    put(bytes, localSize, 4);
    put(bytes, localName.size(), 2);
    put(bytes, localExtra.size(), 2);
    bytes += localName;
    bytes += localExtra;
    bytes += packed;
    if (shape.descriptor) {
      put(bytes, 0x08074b50, 4);
      put(bytes, checksum, 4);
      put(bytes, packedSize, 4);
      put(bytes, size, 4);
    }

    std::string extra = part.extra;
    if (shape.sizes64) {
      put(extra, 1, 2);
      put(extra, 24, 2);
      for (const std::uint64_t number : {size, packedSize, offset}) put(extra, number, 8);
    }
    put(directory, 0x02014b50, 4);
    put(directory, part.madeBy, 2);
    put(directory, 20, 2);
    put(directory, flags, 2);
    put(directory, part.method, 2);
    put(directory, 0, 4);
    put(directory, checksum, 4);
    put(directory, shape.sizes64 ? elsewhere : packedSize, 4);
    put(directory, shape.sizes64 ? elsewhere : size, 4);
    put(directory, part.name.size(), 2);
    put(directory, extra.size(), 2);
    put(directory, 0, 6);
    put(directory, part.attributes, 4);
    put(directory, shape.sizes64 ? elsewhere : offset, 4);
    directory += part.name + extra;
  }
  const std::uint64_t begin = bytes.size();
  bytes += directory;
  if (shape.sizes64) {
    const std::uint64_t record = bytes.size();
    put(bytes, 0x06064b50, 4);
    put(bytes, 44, 8);
    put(bytes, 45, 2);
    put(bytes, 45, 2);
    put(bytes, 0, 8);
    put(bytes, parts.size(), 8);
    put(bytes, parts.size(), 8);
    put(bytes, directory.size(), 8);
    put(bytes, begin, 8);
    put(bytes, 0x07064b50, 4);
    put(bytes, 0, 4);
    put(bytes, record, 8);
    put(bytes, 1, 4);
  }
  put(bytes, 0x06054b50, 4);
  put(bytes, 0, 4);
  put(bytes, shape.sizes64 ? 0xFFFF : parts.size(), 2);
  put(bytes, shape.sizes64 ? 0xFFFF : parts.size(), 2);
  put(bytes, shape.sizes64 ? 0xFFFFFFFF : directory.size(), 4);
  put(bytes, shape.sizes64 ? 0xFFFFFFFF : begin, 4);
  put(bytes, shape.comment.size(), 2);
  return shape.prefix + bytes + shape.comment;
}

}  // namespace kpx
