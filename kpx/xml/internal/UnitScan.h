#pragma once

#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

// Processor kernels, chosen when compiling: every x86-64 processor has SSE2.
#if defined(__SSE2__) || defined(_M_X64)
#define KPX_UNIT_SCAN_SSE2 1
#include <emmintrin.h>
#endif

namespace kpx::detail {

/// Sixteen UTF-16 units of a text, looked at together. The answers are bit masks, bit 0 for the
/// first unit.
class UnitBlock {
 public:
  static constexpr int units = 16;

#ifdef KPX_UNIT_SCAN_SSE2
  explicit UnitBlock(const char16_t* text) noexcept {
    const auto* from = reinterpret_cast<const __m128i*>(text);
    // Saturation makes 255 of units above it and 0 of those above 0x7fff; neither is searched for.
    bytes_ = _mm_packus_epi16(_mm_loadu_si128(from), _mm_loadu_si128(from + 1));
  }
  /// Where the unit is `unit`, which must be from 1 to 254.
  std::uint32_t equal(char unit) const noexcept {
    return mask(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8(unit)));
  }
  /// Where a reference has to stand for the unit in data.
  std::uint32_t dataSpecials() const noexcept { return mask(dataSpecialBytes()); }
  /// The same in attribute values.
  std::uint32_t attributeSpecials() const noexcept {
    const __m128i quotes = _mm_or_si128(_mm_cmpeq_epi8(bytes_, _mm_set1_epi8('"')),
                                        _mm_cmpeq_epi8(bytes_, _mm_set1_epi8('\'')));
    return mask(_mm_or_si128(quotes, dataSpecialBytes()));
  }

 private:
  __m128i dataSpecialBytes() const noexcept {
    // "<" and ">" differ in one bit only.
    const __m128i brackets = _mm_or_si128(bytes_, _mm_set1_epi8('<' ^ '>'));
    return _mm_or_si128(_mm_cmpeq_epi8(brackets, _mm_set1_epi8('>')),
                        _mm_cmpeq_epi8(bytes_, _mm_set1_epi8('&')));
  }
  static std::uint32_t mask(__m128i bytes) noexcept {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(bytes));
  }

  __m128i bytes_;
#else
  explicit UnitBlock(const char16_t* text) noexcept : text_(text) {}
  std::uint32_t equal(char unit) const noexcept {
    return where([unit](char16_t each) { return each == static_cast<unsigned char>(unit); });
  }
  std::uint32_t dataSpecials() const noexcept {
    return where([](char16_t each) { return each == u'&' || each == u'<' || each == u'>'; });
  }
  std::uint32_t attributeSpecials() const noexcept {
    return dataSpecials() | equal('"') | equal('\'');
  }

 private:
  template <class Test>
  std::uint32_t where(Test test) const noexcept {
    std::uint32_t found = 0;
    for (int i = 0; i < units; ++i) found |= static_cast<std::uint32_t>(test(text_[i])) << i;
    return found;
  }

  const char16_t* text_;
#endif
};

/// Calls `visit(position)` for every unit that `specials(block)` marks, in ascending order; it
/// answers the position at which the search goes on, at least one behind, or `end` to stop.
template <class Specials, class Visit>
void visitUnits(const char16_t* position, const char16_t* end, Specials specials, Visit visit) {
  while (position < end) {
    const std::ptrdiff_t left = end - position;
    char16_t rest[UnitBlock::units];
    const char16_t* block = position;
    if (left < UnitBlock::units) {
      std::memset(rest, 0, sizeof rest);
      std::memcpy(rest, position, static_cast<std::size_t>(left) * sizeof(char16_t));
      block = rest;
    }
    std::uint32_t found = specials(UnitBlock(block));
    const char16_t* const blockStart = position;
    const char16_t* next = blockStart + (left < UnitBlock::units ? left : UnitBlock::units);
    while (found != 0) {
      const int bit = std::countr_zero(found);
      const char16_t* const goOn = visit(blockStart + bit);
      if (goOn >= next) {
        next = goOn;
        break;
      }
      // What the visitor passed over is not visited.
      found &= ~std::uint32_t{0} << (goOn - blockStart);
    }
    position = next;
  }
}

}  // namespace kpx::detail
