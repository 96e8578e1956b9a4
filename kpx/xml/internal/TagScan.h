#pragma once

#include <span>

#include "kpx/xml/internal/ParseState.h"

namespace kpx::detail {

/// A fast scan over regular tags: reads as many as it can and leaves the state before the first
/// one that needs the plain road. Each gives exactly the records that the plain road would.
struct TagScan {
  const char* name;
  void (*scan)(ParseState& state) noexcept;  // nullptr: everything takes the plain road
};

/// The scans that this processor can run, the best one first, "plain" last.
std::span<const TagScan> tagScans() noexcept;

/// The scan that parses use: the best one, chosen when the library is loaded.
const TagScan& activeTagScan() noexcept;
/// Chooses another one of `tagScans`, for tests and measurements.
void setActiveTagScan(const TagScan& scan) noexcept;

#if defined(__SSE2__) || defined(_M_X64)
void scanTagsSse2(ParseState& state) noexcept;
#endif
#ifdef KPX_TAG_SCAN_AVX2
void scanTagsAvx2(ParseState& state) noexcept;
#endif

}  // namespace kpx::detail
