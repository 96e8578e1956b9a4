#pragma once

#include <cstdint>

#include "kpx/xml/ElemPos.h"

namespace kpx::detail {

/// An element whose end tag has not come yet. Its record is written whole when it is closed; until
/// then only its number is taken.
struct OpenElement {
  static constexpr std::int32_t refused = -1;

  std::int32_t index = 0;      // of its record; `refused` for an element without one
  std::int32_t lastChild = 0;  // 0: none yet
  std::int32_t previous = 0;   // the sibling before it; itself for a first child
  std::int32_t start = 0;      // offset of its "<"
  std::int32_t startTagLength = 0;
  std::uint32_t flags = 0;  // flags for its record besides the first-child flag
};

/// Where a parse stands between two tokens. The fast scans and the plain road hand it to each
/// other, so it holds plain data only.
///
/// Records are handed out in the order of start tags. So the first child of an element is the
/// record behind its own, and the next sibling of a closed element, if there comes one, is the
/// record that is handed out next: links forward are written before it is known whether what they
/// point to will exist, and taken back when the parent is closed.
struct ParseState {
  const char16_t* text = nullptr;  // with a unit 0 behind its end
  std::int32_t size = 0;
  std::int32_t position = 0;  // where scanning goes on, outside of a tag

  ElemPos* const* segments = nullptr;
  std::int32_t used = 0;      // records handed out
  std::int32_t capacity = 0;  // records that there is room for

  OpenElement* stack = nullptr;  // [0] stands for the record under which the parse runs
  std::int32_t depth = 0;        // entries of the stack
  std::int32_t maxDepth = 0;     // entries that a fast scan may reach
  std::int32_t minDepth = 1;     // ... and that it may not go below
  std::int32_t baseLevel = 0;    // level of elements with only stack[0] below them
};

}  // namespace kpx::detail
