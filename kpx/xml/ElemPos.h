#pragma once

#include <cstdint>

namespace kpx {

/// The record of one element: where it lies in the document text and how it is linked. Offsets
/// and lengths count UTF-16 units. docs/xml-index.md draws an example.
struct ElemPos {
  // Bits of levelAndFlags above the level.
  static constexpr std::uint32_t noTextFlag = 0x10000;  // known to hold no text but blanks
  static constexpr std::uint32_t firstChildFlag = 0x80000;
  static constexpr std::uint32_t unendedFlag = 0x100000;
  static constexpr std::uint32_t loneEndFlag = 0x200000;
  static constexpr std::uint32_t illFormedFlag = 0x800000;
  static constexpr std::uint32_t callerFlags = 0x0f000000;

  // What the packed fields can hold; anything larger is refused.
  static constexpr int maxStartTag = (1 << 22) - 1;
  static constexpr int maxEndTag = (1 << 10) - 1;
  static constexpr int maxLevel = 0xffff;

  std::int32_t start = 0;           // offset of the opening "<"
  std::int32_t length = 0;          // through the end tag; the start tag alone if empty or unended
  std::uint32_t tagLengths = 0;     // low 22 bits start tag, high 10 bits end tag
  std::uint32_t levelAndFlags = 0;  // low 16 bits level, root element 0
  std::int32_t parent = 0;          // 0: the document
  std::int32_t firstChild = 0;      // 0: none
  std::int32_t next = 0;            // next sibling, 0 after the last; also links the free list
  std::int32_t previous = 0;        // previous sibling; of a first child: the LAST child

  int startTagLength() const noexcept { return static_cast<int>(tagLengths & 0x3fffff); }
  int endTagLength() const noexcept { return static_cast<int>(tagLengths >> 22); }
  void setTagLengths(int startTag, int endTag) noexcept {
    tagLengths = static_cast<std::uint32_t>(startTag) | static_cast<std::uint32_t>(endTag) << 22;
  }

  int level() const noexcept { return static_cast<int>(levelAndFlags & 0xffff); }
  void setLevel(int level) noexcept {
    levelAndFlags = (levelAndFlags & 0xffff0000u) | static_cast<std::uint32_t>(level);
  }
  bool hasFlag(std::uint32_t flag) const noexcept { return (levelAndFlags & flag) != 0; }
  void setFlag(std::uint32_t flag) noexcept { levelAndFlags |= flag; }
  void clearFlag(std::uint32_t flag) noexcept { levelAndFlags &= ~flag; }

  int end() const noexcept { return start + length; }
  int contentStart() const noexcept { return start + startTagLength(); }
  int contentEnd() const noexcept { return start + length - endTagLength(); }
  /// Whether the element is only a start tag: "<a/>", or a start tag that was never closed.
  bool isTagOnly() const noexcept { return startTagLength() == length; }
};
static_assert(sizeof(ElemPos) == 32);

}  // namespace kpx
