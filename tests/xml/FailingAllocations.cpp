#include "tests/xml/FailingAllocations.h"

#include <cstdlib>
#include <new>

namespace {
constexpr int unlimited = -1;
int allocationsLeft = unlimited;
}  // namespace

void* operator new(std::size_t size) { return operator new (size, std::align_val_t{16}); }
void* operator new(std::size_t size, std::align_val_t alignment) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  const auto unit = static_cast<std::size_t>(alignment);
  const std::size_t rounded = (size + unit) / unit * unit;
  if (void* const memory = std::aligned_alloc(unit, rounded)) return memory;
  throw std::bad_alloc();
}
void operator delete(void* memory) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::align_val_t) noexcept { std::free(memory); }
void operator delete(void* memory, std::size_t, std::align_val_t) noexcept { std::free(memory); }

namespace kpx {

FailingAllocations::FailingAllocations(int count) noexcept { allocationsLeft = count; }
FailingAllocations::~FailingAllocations() { allocationsLeft = unlimited; }

}  // namespace kpx
