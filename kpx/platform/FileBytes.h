#pragma once

#include <cstddef>
#include <string_view>

#include "kpx/report/Export.h"

namespace kpx {

/// The content of a file in memory: a block of bytes that nothing writes before the file is read
/// into it, on large pages when it is big.
class FileBytes {
 public:
  FileBytes() noexcept = default;
  KPX_API FileBytes(FileBytes&& other) noexcept;
  KPX_API FileBytes& operator=(FileBytes&& other) noexcept;
  KPX_API ~FileBytes();

  std::string_view view() const noexcept { return {block_, size_}; }
  operator std::string_view() const noexcept { return view(); }
  std::size_t size() const noexcept { return size_; }

  /// Room for `capacity` bytes; keeps what is there. Throws std::bad_alloc.
  KPX_API void reserve(std::size_t capacity);
  std::size_t capacity() const noexcept { return capacity_; }
  /// Where a reader writes, up to the capacity.
  char* data() noexcept { return block_; }
  /// Requires size <= capacity.
  void setSize(std::size_t size) noexcept { size_ = size; }

 private:
  void release() noexcept;

  char* block_ = nullptr;
  std::size_t size_ = 0;
  std::size_t capacity_ = 0;
};

}  // namespace kpx
