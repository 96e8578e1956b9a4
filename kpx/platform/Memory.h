#pragma once

#include <cstddef>

namespace kpx {

/// The size of the large pages that the system may give out for big blocks. A block aligned to
/// it and at least as large costs one page fault instead of 512.
inline constexpr std::size_t largePage = std::size_t{2} << 20;

/// A block of zeros for large data, straight from the system, with large pages where there are
/// any. `alignment` is a power of two; both numbers are rounded up to whole pages. Throws
/// std::bad_alloc. Give the block back with `releasePages` and the same number of bytes.
void* allocatePages(std::size_t bytes, std::size_t alignment = largePage);
void releasePages(void* block, std::size_t bytes) noexcept;

/// Asks for large pages for memory that was allocated by other means and not been written yet,
/// such as the reserve of a long text. A hint: it never fails and changes no content.
void preferLargePages(void* memory, std::size_t bytes) noexcept;

}  // namespace kpx
