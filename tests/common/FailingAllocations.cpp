#include "tests/common/FailingAllocations.h"

#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>

namespace {

constexpr int unlimited = -1;
thread_local int allocationsLeft = unlimited;
thread_local bool failed = false;

[[maybe_unused]] void* allocate(std::size_t size) {
  if (allocationsLeft == 0) {
    failed = true;
    throw std::bad_alloc();
  }
  if (allocationsLeft > 0) --allocationsLeft;
  if (void* const memory = std::malloc(size != 0 ? size : 1)) return memory;
  throw std::bad_alloc();
}

}  // namespace

// The thread sanitizer brings allocation functions of its own; nothing fails there.
#if defined(__has_feature)
#if __has_feature(thread_sanitizer)
#define KPX_KEEP_ALLOCATION
#endif
#endif
#ifndef KPX_KEEP_ALLOCATION

void* operator new(std::size_t size) { return allocate(size); }
void* operator new(std::size_t size, const std::nothrow_t&) noexcept {
  try {
    return allocate(size);
  } catch (const std::bad_alloc&) {
    return nullptr;
  }
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }

// In front of an aligned block stands the address that it was allocated with.
void* operator new(std::size_t size, std::align_val_t alignment) {
  const auto unit = static_cast<std::size_t>(alignment);
  std::size_t room = size + unit;
  void* const memory = allocate(room + sizeof(void*));
  void* block = static_cast<char*>(memory) + sizeof(void*);
  std::align(unit, size, block, room);
  std::memcpy(static_cast<char*>(block) - sizeof(void*), &memory, sizeof(void*));
  return block;
}
void operator delete(void* block, std::align_val_t) noexcept {
  if (block == nullptr) return;
  void* memory = nullptr;
  std::memcpy(&memory, static_cast<char*>(block) - sizeof(void*), sizeof(void*));
  std::free(memory);
}
void operator delete(void* block, std::size_t, std::align_val_t alignment) noexcept {
  operator delete(block, alignment);
}

#endif

namespace kpx {

FailingAllocations::FailingAllocations(int count) noexcept {
  allocationsLeft = count;
  failed = false;
}
FailingAllocations::~FailingAllocations() { allocationsLeft = unlimited; }
bool FailingAllocations::hasFailed() const noexcept { return failed; }

}  // namespace kpx
