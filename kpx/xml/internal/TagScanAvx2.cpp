// Compiled for processors with AVX2; nothing in here runs on others, see TagScan.cpp.
#include "kpx/xml/internal/TagScan.h"

#ifdef KPX_TAG_SCAN_AVX2
#include <immintrin.h>

#include "kpx/xml/internal/TagScanLoop.h"

namespace kpx::detail {
namespace {

class Avx2Block {
 public:
  explicit Avx2Block(const char16_t* text) noexcept
      : low_(packed(text)), high_(packed(text + 32)) {}

  Bits equal(char unit) const noexcept {
    const __m256i wanted = _mm256_set1_epi8(unit);
    return mask(low_, wanted) | mask(high_, wanted) << 32;
  }

  static Bits prefixXor(Bits bits) noexcept {
    const __m128i product = _mm_clmulepi64_si128(_mm_set_epi64x(0, static_cast<std::int64_t>(bits)),
                                                 _mm_set1_epi8(-1), 0);
    return static_cast<Bits>(_mm_cvtsi128_si64(product));
  }

  // Reads 16 units of both, whatever the length; at most 64 are compared.
  static bool equalNames(const char16_t* left, const char16_t* right, int length) noexcept {
    for (; length > 16; length -= 16, left += 16, right += 16) {
      if (differences(left, right) != 0) return false;
    }
    // Two bits for each unit.
    return (differences(left, right) & ((Bits{1} << (2 * length)) - 1)) == 0;
  }

 private:
  // Packing works in halves of a register, so the quarters come out in the order 0, 2, 1, 3.
  static __m256i packed(const char16_t* text) noexcept {
    const auto* from = reinterpret_cast<const __m256i*>(text);
    const __m256i halves =
        _mm256_packus_epi16(_mm256_loadu_si256(from), _mm256_loadu_si256(from + 1));
    return _mm256_permute4x64_epi64(halves, 0xD8);
  }
  static Bits mask(__m256i bytes, __m256i wanted) noexcept {
    return static_cast<std::uint32_t>(_mm256_movemask_epi8(_mm256_cmpeq_epi8(bytes, wanted)));
  }
  static Bits differences(const char16_t* left, const char16_t* right) noexcept {
    const __m256i equal =
        _mm256_cmpeq_epi16(_mm256_loadu_si256(reinterpret_cast<const __m256i*>(left)),
                           _mm256_loadu_si256(reinterpret_cast<const __m256i*>(right)));
    return static_cast<std::uint32_t>(~_mm256_movemask_epi8(equal));
  }

  __m256i low_;
  __m256i high_;
};

}  // namespace

void scanTagsAvx2(ParseState& state) noexcept { scanTagsWith<Avx2Block>(state); }

}  // namespace kpx::detail
#endif
