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

// NOLINTBEGIN(misc-definitions-in-headers)
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
Bits lowestOf(Bits bits) noexcept { return bits & (0 - bits); }
/// All bits below the lowest one that is set; all there are if none is.
Bits bitsBelowLowest(Bits bits) noexcept { return lowestOf(bits) - 1; }

bool beginsName(char16_t unit) noexcept {
  return unit >= u'a' || (unit >= u'A' && unit <= u'Z') || unit == u'_' || unit == u':';
}

// Whether a start tag's name that goes on with this unit is closed by an end tag without the rest.
bool mayFollowClosedName(char16_t unit) noexcept {
  constexpr Bits low = Bits{1} << u'>' | Bits{1} << u' ' | Bits{1} << u'/' | Bits{1} << u'=' |
                       Bits{1} << u'\n' | Bits{1} << u'\r' | Bits{1} << u'\t';
  return unit < 64 ? (low >> unit & 1) != 0 : unit == u'[' || unit == u']';
}

/// The offset of the ">" that ends the start tag at `start`, with values in single quotes too; -1
/// if it takes the plain road to tell. Slower than the loop below, which knows double quotes only.
template <class Block>
std::int64_t findTagEnd(const char16_t* text, std::int64_t start, std::int64_t lastBase) noexcept {
  Bits equals = 0;
  Bits inSingle = 0;  // all bits set or none
  bool inValue = false;
  for (std::int64_t base = start; base <= lastBase; base += blockUnits) {
    const Block block(text + base);
    const Bits ends = block.equal('>');
    const Bits quotes = block.equal('"');
    const Bits single = block.equal('\'');
    const Bits equalsCarry = equals >> 63;
    equals = block.equal('=');
    const Bits behindEquals = equals << 1 | equalsCarry;
    for (Bits from = ~Bits{0};;) {
      const Bits stops =
          from & (inValue ? (quotes & ~inSingle) | (single & inSingle) : ends | quotes | single);
      if (stops == 0) break;
      const Bits stop = lowestOf(stops);
      if (!inValue && (ends & stop) != 0) return base + lowestBit(stop);
      if (!inValue && (behindEquals & stop) == 0) return -1;
      inSingle = (single & stop) != 0 ? ~Bits{0} : 0;
      inValue = !inValue;
      from = ~(stop | (stop - 1));
    }
  }
  return -1;
}

/// Reads tags from `state.position` on until one that needs the plain road, and leaves the
/// position at its "<", or anywhere before it outside of tags. `Block` gives bit masks of 64
/// units; bit 0 stands for the first.
///
/// The state lives in local variables, and none has its address taken, so that they stay in
/// registers.
template <class Block>
void scanTagsWith(ParseState& state) noexcept {
  const char16_t* const text = state.text;
  ElemPos* const* const segments = state.segments;
  OpenElement* const stack = state.stack;
  const std::int64_t lastBase = std::int64_t{state.size} - blockUnits - readAhead;
  const std::int32_t maxDepth = state.maxDepth;
  const std::int32_t minDepth = state.minDepth;
  const std::int32_t baseLevel = state.baseLevel;
  std::int32_t depth = state.depth;
  std::int32_t used = state.used;
  // The segment at hand, as far as it has room. A full one is left to the plain road.
  const std::int32_t segmentEnd = used | 0xffff;
  const std::int32_t usedLimit = segmentEnd < state.capacity ? segmentEnd + 1 : state.capacity;
  ElemPos* const segment = used < usedLimit ? segments[used >> 16] : nullptr;

  const auto record = [segments](std::int32_t index) -> ElemPos& {
    return segments[static_cast<std::uint32_t>(index) >> 16][index & 0xffff];
  };
  const auto write = [baseLevel](ElemPos& element, const OpenElement& open, std::int32_t parent,
                                 std::int32_t level, std::int64_t end, std::int32_t endTagLength,
                                 std::int32_t firstChild, std::int32_t next) {
    element.start = open.start;
    element.length = static_cast<std::int32_t>(end) - open.start;
    element.tagLengths = static_cast<std::uint32_t>(open.startTagLength) |
                         static_cast<std::uint32_t>(endTagLength) << 22;
    element.levelAndFlags = static_cast<std::uint32_t>(baseLevel + level) | open.flags |
                            (open.previous == open.index ? ElemPos::firstChildFlag : 0);
    element.parent = parent;
    element.firstChild = firstChild;
    element.next = next;
    element.previous = open.previous;
  };

  std::int64_t base = state.position;
  std::int64_t position = base;
  while (base <= lastBase) {
    Block block(text + base);
    Bits opens = block.equal('<');
    Bits closes = block.equal('>');
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
        const std::int32_t lastChild = top.lastChild;
        const std::int32_t firstChild = lastChild != 0 ? top.index + 1 : 0;
        position = base + end + 1;
        write(record(top.index), top, stack[depth - 2].index, depth - 2, position, end + 1 - open,
              firstChild, used);
        // Without children these two write the zeros that record 0 has there anyway.
        record(lastChild).next = 0;
        record(firstChild).previous = lastChild;
        --depth;
        opens &= bitsFrom(end);
        continue;
      }

      if (!beginsName(first) || depth >= maxDepth || used >= usedLimit) goto leave;
      Bits from = bitsFrom(open);
      Bits ends = closes & from;
      Bits quotes = block.equal('"');
      Bits single = block.equal('\'');
      if (ends == 0 || ((quotes | single) & from & bitsBelowLowest(ends)) != 0) {
        // A quote in the name itself means nothing. Names mostly end at a blank.
        const Bits blanks = block.equal(' ');
        if ((blanks & from & bitsBelowLowest((quotes | single) & from)) == 0) {
          if (open == 0) goto leave;
          break;  // to a block that begins with this tag
        }
        // Values in double quotes: bits inside one are those behind an odd number of quotes.
        Bits inside = Block::prefixXor(quotes & from);
        Bits equals = block.equal('=');
        Bits behindEquals = equals << 1;
        Bits unusual;
        for (;;) {
          ends = closes & from & ~inside;
          unusual = ((quotes & from & inside & ~behindEquals) | (single & from & ~inside)) &
                    bitsBelowLowest(ends);
          if ((ends | unusual) != 0) break;
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
        if (unusual != 0) {
          base = findTagEnd<Block>(text, start, lastBase);
          if (base < 0 || base > lastBase) goto leave;
          block = Block(text + base);
          ends = closes = block.equal('>');
        }
        if (base + blockUnits - start > ElemPos::maxStartTag) goto leave;
        opens = block.equal('<');
      }

      const int end = lowestBit(ends);
      OpenElement& parent = stack[depth - 1];
      // Written to the stack in any case; there it stays if the tag is not empty.
      OpenElement& opened = stack[depth];
      position = base + end + 1;
      opened.index = used;
      opened.lastChild = 0;
      opened.previous = parent.lastChild != 0 ? parent.lastChild : used;
      opened.start = static_cast<std::int32_t>(start);
      opened.startTagLength = static_cast<std::int32_t>(position - start);
      opened.flags = 0;
      parent.lastChild = used++;
      if (text[position - 2] == u'/') {
        write(segment[opened.index & 0xffff], opened, parent.index, depth - 1, position, 0, 0,
              used);
      } else {
        ++depth;
      }
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
// NOLINTEND(misc-definitions-in-headers)
