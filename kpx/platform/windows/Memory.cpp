#include "kpx/platform/Memory.h"

#include <windows.h>

#include <cstdint>
#include <limits>
#include <new>

namespace kpx {

namespace {

std::size_t pageSize() noexcept {
  SYSTEM_INFO info = {};
  ::GetSystemInfo(&info);
  return info.dwPageSize;
}

std::size_t roundUp(std::size_t bytes, std::size_t unit) noexcept {
  return (bytes + unit - 1) / unit * unit;
}

bool isAligned(const void* block, std::size_t alignment) noexcept {
  return reinterpret_cast<std::uintptr_t>(block) % alignment == 0;
}

/// nullptr unless the host has switched on the privilege that large pages need here, and enough of
/// them are free. Such a block stays in physical memory, which is why the library does not switch
/// it on itself.
void* allocateLargePages(std::size_t bytes, std::size_t alignment) noexcept {
  const std::size_t unit = ::GetLargePageMinimum();
  if (unit == 0) return nullptr;
  void* const block = ::VirtualAlloc(nullptr, roundUp(bytes, unit),
                                     MEM_RESERVE | MEM_COMMIT | MEM_LARGE_PAGES, PAGE_READWRITE);
  if (block == nullptr || isAligned(block, alignment)) return block;
  ::VirtualFree(block, 0, MEM_RELEASE);
  return nullptr;
}

}  // namespace

void* allocatePages(std::size_t bytes, std::size_t alignment) {
  const std::size_t page = pageSize();
  if (alignment < page) alignment = page;
  if (bytes == 0) bytes = 1;
  if (bytes > std::numeric_limits<std::size_t>::max() / 2 - alignment) throw std::bad_alloc();
  bytes = roundUp(bytes, page);
  if (bytes >= largePage) {
    if (void* const block = allocateLargePages(bytes, alignment)) return block;
  }

  // More addresses are reserved than needed, so that an aligned block lies among them. The ends
  // cannot go back alone, but without memory behind them they cost nothing.
  void* const start =
      ::VirtualAlloc(nullptr, bytes + alignment - page, MEM_RESERVE, PAGE_READWRITE);
  if (start == nullptr) throw std::bad_alloc();
  const auto address = reinterpret_cast<std::uintptr_t>(start);
  char* const block = static_cast<char*>(start) + (roundUp(address, alignment) - address);
  if (::VirtualAlloc(block, bytes, MEM_COMMIT, PAGE_READWRITE) == nullptr) {
    ::VirtualFree(start, 0, MEM_RELEASE);
    throw std::bad_alloc();
  }
  return block;
}

void releasePages(void* block, [[maybe_unused]] std::size_t bytes) noexcept {
  // Only the start of what was reserved can be given back, which lies before an aligned block.
  MEMORY_BASIC_INFORMATION found = {};
  if (block == nullptr || ::VirtualQuery(block, &found, sizeof found) == 0) return;
  ::VirtualFree(found.AllocationBase, 0, MEM_RELEASE);
}

// The system gives out large pages only when memory is allocated, not for memory that is there.
void preferLargePages([[maybe_unused]] void* memory, [[maybe_unused]] std::size_t bytes) noexcept {}

}  // namespace kpx
