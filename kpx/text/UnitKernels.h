#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>

// Every x86-64 processor has SSE2.
#if defined(__SSE2__) || defined(_M_X64)
#define KPX_UNIT_KERNELS_SSE2
#include <emmintrin.h>
#endif

namespace kpx::detail {

/// How many units or bytes the functions below work on at once.
inline constexpr std::size_t kernelUnits = 16;

#ifdef KPX_UNIT_KERNELS_SSE2

namespace kernel {
inline __m128i load(const void* from) noexcept {
  return _mm_loadu_si128(static_cast<const __m128i*>(from));
}
inline void store(void* to, __m128i units) noexcept {
  _mm_storeu_si128(static_cast<__m128i*>(to), units);
}
inline bool any(__m128i mask) noexcept { return _mm_movemask_epi8(mask) != 0; }
inline __m128i swapped(__m128i units) noexcept {
  return _mm_or_si128(_mm_slli_epi16(units, 8), _mm_srli_epi16(units, 8));
}
}  // namespace kernel

/// Whether one of 16 units, at an address of any alignment, is 0.
inline bool blockHasZero(const void* units) noexcept {
  const __m128i zero = _mm_setzero_si128();
  const auto* const bytes = static_cast<const char*>(units);
  return kernel::any(_mm_or_si128(_mm_cmpeq_epi16(kernel::load(bytes), zero),
                                  _mm_cmpeq_epi16(kernel::load(bytes + 16), zero)));
}

/// Whether one of 16 units is half of a pair.
inline bool blockHasSurrogate(const char16_t* units) noexcept {
  const __m128i high = _mm_packus_epi16(_mm_srli_epi16(kernel::load(units), 8),
                                        _mm_srli_epi16(kernel::load(units + 8), 8));
  return kernel::any(_mm_cmpeq_epi8(_mm_and_si128(high, _mm_set1_epi8(static_cast<char>(0xF8))),
                                    _mm_set1_epi8(static_cast<char>(0xD8))));
}

/// Whether one of 16 units is 0 or half of a pair.
inline bool blockHasSurrogateOrZero(const char16_t* units) noexcept {
  const __m128i first = kernel::load(units);
  const __m128i second = kernel::load(units + 8);
  const __m128i high = _mm_packus_epi16(_mm_srli_epi16(first, 8), _mm_srli_epi16(second, 8));
  const __m128i surrogates =
      _mm_cmpeq_epi8(_mm_and_si128(high, _mm_set1_epi8(static_cast<char>(0xF8))),
                     _mm_set1_epi8(static_cast<char>(0xD8)));
  const __m128i zero = _mm_setzero_si128();
  const __m128i zeros = _mm_or_si128(_mm_cmpeq_epi16(first, zero), _mm_cmpeq_epi16(second, zero));
  return kernel::any(_mm_or_si128(surrogates, zeros));
}

/// Whether all of 16 units are below `limit`, 0x80 or 0x100.
inline bool blockIsBelow(const char16_t* units, unsigned limit) noexcept {
  const __m128i all = _mm_or_si128(kernel::load(units), kernel::load(units + 8));
  const __m128i others = _mm_and_si128(all, _mm_set1_epi16(static_cast<short>(0x10000 - limit)));
  return !kernel::any(_mm_xor_si128(_mm_cmpeq_epi8(others, _mm_setzero_si128()),
                                    _mm_set1_epi8(static_cast<char>(0xFF))));
}

/// Whether all of 16 bytes are ASCII.
inline bool blockIsAscii(const char* bytes) noexcept { return !kernel::any(kernel::load(bytes)); }

/// Writes 16 bytes as units.
inline void widenBlock(const char* bytes, char16_t* units) noexcept {
  const __m128i block = kernel::load(bytes);
  kernel::store(units, _mm_unpacklo_epi8(block, _mm_setzero_si128()));
  kernel::store(units + 8, _mm_unpackhi_epi8(block, _mm_setzero_si128()));
}

/// Writes 16 units below 0x100 as bytes.
inline void narrowBlock(const char16_t* units, char* bytes) noexcept {
  kernel::store(bytes, _mm_packus_epi16(kernel::load(units), kernel::load(units + 8)));
}

/// Writes 16 units with their bytes in the other order; either address of any alignment.
inline void swapBlock(const void* from, void* to) noexcept {
  const auto* const source = static_cast<const char*>(from);
  auto* const target = static_cast<char*>(to);
  kernel::store(target, kernel::swapped(kernel::load(source)));
  kernel::store(target + 16, kernel::swapped(kernel::load(source + 16)));
}

#else

inline bool blockHasZero(const void* units) noexcept {
  char16_t block[kernelUnits];
  std::memcpy(block, units, sizeof block);
  bool found = false;
  for (const char16_t unit : block) found |= unit == 0;
  return found;
}

inline bool blockHasSurrogate(const char16_t* units) noexcept {
  bool found = false;
  for (std::size_t i = 0; i < kernelUnits; ++i) found |= (units[i] & 0xF800) == 0xD800;
  return found;
}

inline bool blockHasSurrogateOrZero(const char16_t* units) noexcept {
  return blockHasSurrogate(units) || blockHasZero(units);
}

inline bool blockIsBelow(const char16_t* units, unsigned limit) noexcept {
  unsigned all = 0;
  for (std::size_t i = 0; i < kernelUnits; ++i) all |= units[i];
  return all < limit;
}

inline bool blockIsAscii(const char* bytes) noexcept {
  unsigned all = 0;
  for (std::size_t i = 0; i < kernelUnits; ++i) all |= static_cast<unsigned char>(bytes[i]);
  return all < 0x80;
}

inline void widenBlock(const char* bytes, char16_t* units) noexcept {
  for (std::size_t i = 0; i < kernelUnits; ++i) units[i] = static_cast<unsigned char>(bytes[i]);
}

inline void narrowBlock(const char16_t* units, char* bytes) noexcept {
  for (std::size_t i = 0; i < kernelUnits; ++i) bytes[i] = static_cast<char>(units[i]);
}

inline void swapBlock(const void* from, void* to) noexcept {
  char16_t block[kernelUnits];
  std::memcpy(block, from, sizeof block);
  for (char16_t& unit : block) unit = static_cast<char16_t>(unit << 8 | unit >> 8);
  std::memcpy(to, block, sizeof block);
}

#endif

/// Copies units with their bytes in the other order; either address of any alignment.
inline void swapUnits(const void* from, std::size_t units, void* to) noexcept {
  const auto* source = static_cast<const char*>(from);
  auto* target = static_cast<char*>(to);
  for (; units >= kernelUnits; units -= kernelUnits) {
    swapBlock(source, target);
    source += 2 * kernelUnits;
    target += 2 * kernelUnits;
  }
  for (; units != 0; --units, source += 2, target += 2) {
    const char first = source[0];
    target[0] = source[1];
    target[1] = first;
  }
}

}  // namespace kpx::detail
