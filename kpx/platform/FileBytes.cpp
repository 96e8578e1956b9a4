#include "kpx/platform/FileBytes.h"

#include <cstring>
#include <new>
#include <utility>

#include "kpx/platform/Memory.h"

namespace kpx {

namespace {

// From here on the system's pages are worth more than the allocator's reuse.
constexpr std::size_t pagesFrom = largePage;

}  // namespace

FileBytes::FileBytes(FileBytes&& other) noexcept
    : block_(std::exchange(other.block_, nullptr)),
      size_(std::exchange(other.size_, 0)),
      capacity_(std::exchange(other.capacity_, 0)) {}

FileBytes& FileBytes::operator=(FileBytes&& other) noexcept {
  if (this != &other) {
    release();
    block_ = std::exchange(other.block_, nullptr);
    size_ = std::exchange(other.size_, 0);
    capacity_ = std::exchange(other.capacity_, 0);
  }
  return *this;
}

FileBytes::~FileBytes() { release(); }

void FileBytes::reserve(std::size_t capacity) {
  if (capacity <= capacity_) return;
  char* const block = static_cast<char*>(capacity >= pagesFrom ? allocatePages(capacity)
                                                               : ::operator new(capacity));
  const std::size_t size = size_;
  if (size != 0) std::memcpy(block, block_, size);
  release();
  block_ = block;
  size_ = size;
  capacity_ = capacity;
}

void FileBytes::release() noexcept {
  if (capacity_ >= pagesFrom) {
    releasePages(block_, capacity_);
  } else {
    ::operator delete(block_);
  }
  block_ = nullptr;
  size_ = 0;
  capacity_ = 0;
}

}  // namespace kpx
