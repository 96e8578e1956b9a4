#include "kpx/text/Utf.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "kpx/text/Utf8Sequence.h"

#if defined(__SSE2__) || defined(_M_X64)
#define KPX_TEXT_SSE2
#include <emmintrin.h>
#endif

namespace kpx {
namespace {

// Texts are transcoded piece by piece through a buffer that stays in the first-level cache:
// growing the result first and writing into it would touch a large text twice.
constexpr std::size_t pieceLength = 4096;

// Both copy as long as the source is ASCII and answer how far they came. They may write up to
// 16 characters beyond that, so the target has room for as many as the source holds.
#ifdef KPX_TEXT_SSE2

std::size_t copyAscii(const char* from, std::size_t count, char16_t* to) noexcept {
  const __m128i zero = _mm_setzero_si128();
  std::size_t i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m128i bytes = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i), _mm_unpacklo_epi8(bytes, zero));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i + 8), _mm_unpackhi_epi8(bytes, zero));
    const int others = _mm_movemask_epi8(bytes);
    if (others != 0) return i + static_cast<std::size_t>(std::countr_zero(unsigned(others)));
  }
  for (; i < count && static_cast<unsigned char>(from[i]) < 0x80; ++i) {
    to[i] = static_cast<char16_t>(from[i]);
  }
  return i;
}

std::size_t copyAscii(const char16_t* from, std::size_t count, char* to) noexcept {
  const __m128i limit = _mm_set1_epi16(0x7F);
  std::size_t i = 0;
  for (; i + 16 <= count; i += 16) {
    const __m128i low = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i));
    const __m128i high = _mm_loadu_si128(reinterpret_cast<const __m128i*>(from + i + 8));
    _mm_storeu_si128(reinterpret_cast<__m128i*>(to + i), _mm_packus_epi16(low, high));
    // The saturating difference is 0 for ASCII only.
    const __m128i ascii = _mm_cmpeq_epi8(
        _mm_packs_epi16(_mm_cmpeq_epi16(_mm_subs_epu16(low, limit), _mm_setzero_si128()),
                        _mm_cmpeq_epi16(_mm_subs_epu16(high, limit), _mm_setzero_si128())),
        _mm_setzero_si128());
    const int others = _mm_movemask_epi8(ascii);
    if (others != 0) return i + static_cast<std::size_t>(std::countr_zero(unsigned(others)));
  }
  for (; i < count && from[i] < 0x80; ++i) to[i] = static_cast<char>(from[i]);
  return i;
}

#else

template <class From, class To>
std::size_t copyAscii(const From* from, std::size_t count, To* to) noexcept {
  std::size_t i = 0;
  for (; i < count && static_cast<std::make_unsigned_t<From>>(from[i]) < 0x80; ++i) {
    to[i] = static_cast<To>(from[i]);
  }
  return i;
}

#endif

inline char32_t decode(std::u16string_view text, std::size_t& position) noexcept {
  const char16_t unit = text[position++];
  if (isHighSurrogate(unit) && position < text.size() && isLowSurrogate(text[position])) {
    return (static_cast<char32_t>(unit) << 10) + text[position++] - 0x35FDC00;
  }
  return unit;
}

}  // namespace

char32_t nextCodePoint(std::u16string_view text, std::size_t& position) noexcept {
  return decode(text, position);
}

void appendCodePoint(std::u16string& text, char32_t code) {
  char16_t units[2];
  text.append(units, encodeUtf16(code, units));
}

std::size_t appendUtf8(std::u16string& text, std::string_view bytes) {
  char16_t piece[pieceLength];
  // Two units of room are enough for any character.
  const char16_t* const full = piece + pieceLength - 1;
  std::size_t firstInvalid = std::string_view::npos;
  const char* at = bytes.data();
  const char* const end = at + bytes.size();
  const auto byteAt = [](const char* place) { return static_cast<unsigned char>(*place); };
  text.reserve(text.size() + bytes.size());
  while (at != end) {
    char16_t* to = piece;
    while (at != end && to < full) {
      const std::size_t ascii = copyAscii(
          at, std::min(static_cast<std::size_t>(end - at), pieceLength - (to - piece)), to);
      at += ascii;
      to += ascii;
      // Single ASCII characters among others, as the blanks of Greek and Cyrillic text, are taken
      // here as well; two of them are taken for the beginning of more.
      while (at != end && to < full) {
        const unsigned char lead = byteAt(at);
        if (lead < 0x80) {
          if (at + 1 != end && byteAt(at + 1) < 0x80) break;
          *to++ = lead;
          ++at;
        } else if (lead >= 0xC2 && lead < 0xE0 && at + 1 != end &&
                   (byteAt(at + 1) & 0xC0) == 0x80) {
          *to++ = static_cast<char16_t>(((lead & 0x1F) << 6) | (byteAt(at + 1) & 0x3F));
          at += 2;
        } else {
          const auto [code, length] = detail::decodeUtf8(at, static_cast<std::size_t>(end - at));
          if (code == detail::invalidSequence && firstInvalid == std::string_view::npos) {
            firstInvalid = static_cast<std::size_t>(at - bytes.data());
          }
          to += encodeUtf16(code, to);
          at += length;
        }
      }
    }
    text.append(piece, to);
  }
  return firstInvalid;
}

void appendUtf16(std::string& bytes, std::u16string_view text) {
  char piece[pieceLength];
  // Four bytes of room are enough for any character.
  const char* const full = piece + pieceLength - 3;
  const std::size_t size = text.size();
  bytes.reserve(bytes.size() + size);
  for (std::size_t i = 0; i < size;) {
    char* to = piece;
    while (i < size && to < full) {
      const std::size_t ascii =
          copyAscii(text.data() + i, std::min(size - i, pieceLength - (to - piece)), to);
      i += ascii;
      to += ascii;
      while (i < size && to < full) {
        if (text[i] < 0x80 && i + 1 < size && text[i + 1] < 0x80) break;
        to += detail::encodeUtf8(decode(text, i), to);
      }
    }
    bytes.append(piece, to);
  }
}

std::string utf8FromUtf16(std::u16string_view text) {
  std::string bytes;
  appendUtf16(bytes, text);
  return bytes;
}

void appendWide(std::u16string& text, std::wstring_view wide) {
  if constexpr (wideIsUtf16) {
    if (wide.empty()) return;
    const std::size_t length = text.size();
    text.resize(length + wide.size());
    std::memcpy(text.data() + length, wide.data(), wide.size() * sizeof(char16_t));
  } else {
    text.reserve(text.size() + wide.size());
    for (const wchar_t code : wide) appendCodePoint(text, static_cast<char32_t>(code));
  }
}

std::wstring wideFromUtf16(std::u16string_view text) {
  std::wstring wide;
  if constexpr (wideIsUtf16) {
    if (text.empty()) return wide;
    wide.resize(text.size());
    std::memcpy(wide.data(), text.data(), text.size() * sizeof(char16_t));
  } else {
    wide.reserve(text.size());
    for (std::size_t i = 0; i < text.size();) wide.push_back(static_cast<wchar_t>(decode(text, i)));
  }
  return wide;
}

}  // namespace kpx
