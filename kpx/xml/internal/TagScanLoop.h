#pragma once

#include <cstdint>
#include <cstring>

#include "kpx/xml/ElemPos.h"
#include "kpx/xml/internal/ParseState.h"

#if defined(_MSC_VER) && !defined(__clang__)
#include <intrin.h>
#endif

// The fast scan, written once and compiled for each kind of processor. Everything here has
// internal linkage and calls no inline function of another header: a linker could otherwise take
// the copy that was compiled for a newer processor for the whole library.

namespace kpx::detail {
namespace {

// A tag is looked at in the block of 64 units that it begins in. Behind the last block that is
// scanned there is room for reading on: a name at the end of a block is compared 16 units at once.
constexpr std::int64_t blockUnits = 64;
constexpr std::int64_t readAhead = 32;

using Bits = std::uint64_t;

int lowestBit(Bits bits) noexcept {
#if defined(_MSC_VER) && !defined(__clang__)
  unsigned long index;
  _BitScanForward64(&index, bits);
  return static_cast<int>(index);
#else
  return __builtin_ctzll(bits);
#endif
}

Bits bitsFrom(int bit) noexcept { return ~Bits{0} << bit; }

bool beginsName(char16_t unit) noexcept {
  return unit >= u'a' || (unit >= u'A' && unit <= u'Z') || unit == u'_' || unit == u':';
}

// Whether a start tag's name that goes on with this unit is closed by an end tag without the rest.
bool mayFollowClosedName(char16_t unit) noexcept {
  constexpr Bits low = Bits{1} << u'>' | Bits{1} << u' ' | Bits{1} << u'/' | Bits{1} << u'=' |
                       Bits{1} << u'\n' | Bits{1} << u'\r' | Bits{1} << u'\t';
  return unit < 64 ? (low >> unit & 1) != 0 : unit == u'[' || unit == u']';
}

/// Reads tags from `state.position` on until one that needs the plain road, and leaves the
/// position at its "<", or anywhere before it outside of tags. `Block` gives bit masks of 64
/// units; bit 0 stands for the first.
template <class Block>
void scanTagsWith(ParseState& state) noexcept {
  const char16_t* const text = state.text;
  ElemPos* const* const segments = state.segments;
  OpenElement* const stack = state.stack;
  const std::int64_t lastBase = std::int64_t{state.size} - blockUnits - readAhead;
  const std::int32_t maxDepth = state.maxDepth;
  const std::int32_t minDepth = state.minDepth;
  const std::int32_t baseLevel = state.baseLevel;
  std::int64_t base = state.position;
  std::int32_t depth = state.depth;
  std::int32_t used = state.used;
  // The segment at hand, as far as it has room. A full one is left to the plain road.
  const std::int32_t segmentEnd = used | 0xffff;
  const std::int32_t usedLimit = segmentEnd < state.capacity ? segmentEnd + 1 : state.capacity;
  ElemPos* const segment = used < usedLimit ? segments[used >> 16] : nullptr;

  const auto record = [segments](std::int32_t index) -> ElemPos& {
    return segments[static_cast<std::uint32_t>(index) >> 16][index & 0xffff];
  };

  std::int64_t position = base;
  while (base <= lastBase) {
    Block block(text + base);
    Bits opens = block.equal('<');
    Bits closes = block.equal('>');
    position = base + blockUnits;
    while (opens != 0) {
      const int open = lowestBit(opens);
      const std::int64_t start = base + open;
      const char16_t first = text[start + 1];
      position = start;
      if (first == u'/') {
        const Bits ends = closes & bitsFrom(open);
        if (ends == 0) {
          if (open == 0) goto leave;
          break;  // to a block that begins with this tag
        }
        const int end = lowestBit(ends);
        const int nameLength = end - open - 2;
        const OpenElement& top = stack[depth - 1];
        const char16_t* const name = text + top.start + 1;
        if (depth <= minDepth || !Block::equalNames(name, text + start + 2, nameLength) ||
            !mayFollowClosedName(name[nameLength])) {
          goto leave;
        }
        ElemPos& element = record(top.index);
        const std::int32_t lastChild = top.lastChild;
        const std::int32_t firstChild = lastChild != 0 ? top.index + 1 : 0;
        const bool isFirst = top.previous == top.index;
        element.start = top.start;
        element.length = static_cast<std::int32_t>(base + end + 1 - top.start);
        element.tagLengths = static_cast<std::uint32_t>(top.startTagLength) |
                             static_cast<std::uint32_t>(end + 1 - open) << 22;
        element.levelAndFlags = static_cast<std::uint32_t>(baseLevel + depth - 2) | top.flags |
                                (isFirst ? ElemPos::firstChildFlag : 0);
        element.parent = stack[depth - 2].index;
        element.firstChild = firstChild;
        element.next = used;
        element.previous = top.previous;
        // Without children these two write the zeros that record 0 has there anyway.
        record(lastChild).next = 0;
        record(firstChild).previous = lastChild;
        --depth;
        position = base + end + 1;
        opens &= bitsFrom(end);
        continue;
      }
      if (!beginsName(first) || depth >= maxDepth || used >= usedLimit) goto leave;

      Bits from = bitsFrom(open);
      Bits ends = closes & from;
      Bits quotes = block.equal('"');
      Bits single = block.equal('\'');
      const Bits before = ends != 0 ? (ends & (0 - ends)) - 1 : ~Bits{0};
      if (ends == 0 || ((quotes | single) & from & before) != 0) {
        // Values in double quotes: bits inside one are those behind an odd number of quotes.
        Bits inside = Block::prefixXor(quotes & from);
        Bits equals = block.equal('=');
        Bits behindEquals = equals << 1;
        for (;;) {
          ends = closes & from & ~inside;
          const Bits below = ends != 0 ? (ends & (0 - ends)) - 1 : ~Bits{0};
          const Bits unusual =
              ((quotes & from & inside & ~behindEquals) | (single & from & ~inside)) & below;
          if (unusual != 0) goto leave;
          if (ends != 0) break;
          base += blockUnits;
          if (base > lastBase) goto leave;
          block = Block(text + base);
          const Bits carry = 0 - (inside >> 63);
          const Bits equalsCarry = equals >> 63;
          closes = block.equal('>');
          quotes = block.equal('"');
          single = block.equal('\'');
          equals = block.equal('=');
          behindEquals = equals << 1 | equalsCarry;
          inside = Block::prefixXor(quotes) ^ carry;
          from = ~Bits{0};
        }
        if (base + blockUnits - start > ElemPos::maxStartTag) goto leave;
        opens = block.equal('<');
      }
      const int end = lowestBit(ends);
      const auto tagLength = static_cast<std::int32_t>(base + end + 1 - start);
      OpenElement& parent = stack[depth - 1];
      const std::int32_t index = used++;
      const bool isFirst = parent.lastChild == 0;
      const std::int32_t previous = isFirst ? index : parent.lastChild;
      parent.lastChild = index;
      if (text[base + end - 1] == u'/') {
        ElemPos& element = segment[index & 0xffff];
        element.start = static_cast<std::int32_t>(start);
        element.length = tagLength;
        element.tagLengths = static_cast<std::uint32_t>(tagLength);
        element.levelAndFlags = static_cast<std::uint32_t>(baseLevel + depth - 1) |
                                (isFirst ? ElemPos::firstChildFlag : 0);
        element.parent = parent.index;
        element.firstChild = 0;
        element.next = index + 1;
        element.previous = previous;
      } else {
        OpenElement& opened = stack[depth++];
        opened.index = index;
        opened.lastChild = 0;
        opened.previous = previous;
        opened.start = static_cast<std::int32_t>(start);
        opened.startTagLength = tagLength;
        opened.flags = 0;
      }
      position = base + end + 1;
      opens &= bitsFrom(end);
    }
    base = opens != 0 ? position : base + blockUnits;
    position = base;
  }
leave:
  state.position = static_cast<std::int32_t>(position);
  state.depth = depth;
  state.used = used;
}

}  // namespace
}  // namespace kpx::detail
