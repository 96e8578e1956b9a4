#include "kpx/xml/internal/TagScan.h"

#if defined(__SSE2__) || defined(_M_X64)
#include <emmintrin.h>

#include "kpx/xml/internal/TagScanLoop.h"

namespace kpx::detail {
namespace {

class Sse2Block {
 public:
  // Saturation makes 255 of units above it and 0 of those above 0x7fff; neither is searched for.
  explicit Sse2Block(const char16_t* text) noexcept
      : first_(packed(text)),
        second_(packed(text + 16)),
        third_(packed(text + 32)),
        fourth_(packed(text + 48)) {}

  Bits equal(char unit) const noexcept {
    const __m128i wanted = _mm_set1_epi8(unit);
    const Bits low = mask(first_, wanted) | mask(second_, wanted) << 16;
    const Bits high = mask(third_, wanted) | mask(fourth_, wanted) << 16;
    return low | high << 32;
  }

  static Bits prefixXor(Bits bits) noexcept {
    bits ^= bits << 1;
    bits ^= bits << 2;
    bits ^= bits << 4;
    bits ^= bits << 8;
    bits ^= bits << 16;
    bits ^= bits << 32;
    return bits;
  }

  // Reads 16 units of both, whatever the length; at most 64 are compared.
  static bool equalNames(const char16_t* left, const char16_t* right, int length) noexcept {
    for (; length > 16; length -= 16, left += 16, right += 16) {
      if (differences(left, right) != 0) return false;
    }
    return (differences(left, right) & ((1u << length) - 1)) == 0;
  }

 private:
  static __m128i packed(const char16_t* text) noexcept {
    const auto* from = reinterpret_cast<const __m128i*>(text);
    return _mm_packus_epi16(_mm_loadu_si128(from), _mm_loadu_si128(from + 1));
  }
  static Bits mask(__m128i bytes, __m128i wanted) noexcept {
    return static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_cmpeq_epi8(bytes, wanted)));
  }
  static std::uint32_t differences(const char16_t* left, const char16_t* right) noexcept {
    const auto* a = reinterpret_cast<const __m128i*>(left);
    const auto* b = reinterpret_cast<const __m128i*>(right);
    const __m128i low = _mm_cmpeq_epi16(_mm_loadu_si128(a), _mm_loadu_si128(b));
    const __m128i high = _mm_cmpeq_epi16(_mm_loadu_si128(a + 1), _mm_loadu_si128(b + 1));
    return ~static_cast<std::uint32_t>(_mm_movemask_epi8(_mm_packs_epi16(low, high)));
  }

  __m128i first_;
  __m128i second_;
  __m128i third_;
  __m128i fourth_;
};

}  // namespace

void scanTagsSse2(ParseState& state) noexcept { scanTagsWith<Sse2Block>(state); }

}  // namespace kpx::detail
#endif
