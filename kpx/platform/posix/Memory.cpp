#include "kpx/platform/Memory.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdint>
#include <limits>
#include <new>

namespace kpx {

namespace {

std::size_t pageSize() noexcept {
  static const auto size = static_cast<std::size_t>(sysconf(_SC_PAGESIZE));
  return size;
}

std::size_t roundUp(std::size_t bytes, std::size_t unit) noexcept {
  return (bytes + unit - 1) / unit * unit;
}

void adviseLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes) noexcept {
#ifdef MADV_HUGEPAGE
  madvise(memory, bytes, MADV_HUGEPAGE);
#endif
}

}  // namespace

void* allocatePages(std::size_t bytes, std::size_t alignment) {
  const std::size_t page = pageSize();
  if (alignment < page) alignment = page;
  if (bytes == 0) bytes = 1;
  if (bytes > std::numeric_limits<std::size_t>::max() / 2 - alignment) throw std::bad_alloc();
  bytes = roundUp(bytes, page);

  // More is reserved than needed, so that an aligned block lies in it; the ends go back.
  const std::size_t reserved = bytes + alignment - page;
  void* const start =
      mmap(nullptr, reserved, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (start == MAP_FAILED) throw std::bad_alloc();
  const auto address = reinterpret_cast<std::uintptr_t>(start);
  const std::size_t head = roundUp(address, alignment) - address;
  const std::size_t tail = reserved - head - bytes;
  char* const block = static_cast<char*>(start) + head;
  if (head != 0) munmap(start, head);
  if (tail != 0) munmap(block + bytes, tail);
  if (bytes >= largePage) adviseLargePages(block, bytes);
  return block;
}

void releasePages(void* block, std::size_t bytes) noexcept {
  if (block == nullptr) return;
  munmap(block, roundUp(bytes == 0 ? 1 : bytes, pageSize()));
}

void preferLargePages(void* memory, std::size_t bytes) noexcept {
  const std::size_t page = pageSize();
  const auto address = reinterpret_cast<std::uintptr_t>(memory);
  const std::size_t head = roundUp(address, page) - address;
  if (bytes < head + largePage) return;
  adviseLargePages(static_cast<char*>(memory) + head, (bytes - head) / page * page);
}

}  // namespace kpx
