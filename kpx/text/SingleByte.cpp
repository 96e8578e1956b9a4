#include "kpx/text/SingleByte.h"

#include <algorithm>
#include <iterator>

#include "kpx/text/CodePage.h"
#include "kpx/text/UnitKernels.h"

namespace kpx {

using namespace detail;

namespace {

constexpr std::size_t pieceUnits = 1024;

// Windows-1252 from 0x80 to 0x9F; elsewhere it is ISO-8859-1. The five undefined bytes stand for
// the control characters of the same number, so that reading and writing them changes nothing.
constexpr char16_t windowsUnits[32] = {
    0x20AC, 0x0081, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0x008D, 0x017D, 0x008F, 0x0090, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0x009D, 0x017E, 0x0178};

char16_t windowsUnit(unsigned char byte) noexcept {
  return byte >= 0x80 && byte <= 0x9F ? windowsUnits[byte - 0x80] : byte;
}

// The byte of a unit from 0x80 up, or 0 if Windows-1252 has none.
unsigned char windowsByte(char16_t unit) noexcept {
  if (unit >= 0xA0 && unit <= 0xFF) return static_cast<unsigned char>(unit);
  const char16_t* const found = std::find(std::begin(windowsUnits), std::end(windowsUnits), unit);
  return found != std::end(windowsUnits) ? static_cast<unsigned char>(0x80 + (found - windowsUnits))
                                         : 0;
}

// Writes up to `count` units as bytes, up to the first that has none; answers how many.
std::size_t encodePiece(int codePage, const char16_t* from, std::size_t count, char* to) noexcept {
  // Below the limit, a unit is its byte.
  const unsigned limit = codePage == CodePage::latin1 ? 0x100 : 0x80;
  std::size_t position = 0;
  while (position < count) {
    if (count - position >= kernelUnits && blockIsBelow(from + position, limit)) {
      narrowBlock(from + position, to + position);
      position += kernelUnits;
      continue;
    }
    for (const std::size_t end = std::min(position + kernelUnits, count); position < end;
         ++position) {
      const char16_t unit = from[position];
      const unsigned char byte = unit < limit ? static_cast<unsigned char>(unit)
                                 : codePage == CodePage::windows1252 ? windowsByte(unit)
                                                                     : 0;
      if (byte == 0 && unit != 0) return position;
      to[position] = static_cast<char>(byte);
    }
  }
  return count;
}

}  // namespace

bool isSingleByte(int codePage) noexcept {
  return codePage == CodePage::latin1 || codePage == CodePage::windows1252 ||
         codePage == CodePage::ascii;
}

void decodeSingleByte(int codePage, std::string_view bytes, std::u16string& text) {
  text.reserve(text.size() + bytes.size());
  char16_t piece[pieceUnits];
  while (!bytes.empty()) {
    const std::size_t count = std::min(bytes.size(), pieceUnits);
    std::size_t position = 0;
    while (position < count) {
      const char* const from = bytes.data() + position;
      if (count - position >= kernelUnits &&
          (codePage != CodePage::windows1252 || blockIsAscii(from))) {
        widenBlock(from, piece + position);
        position += kernelUnits;
        continue;
      }
      for (const std::size_t end = std::min(position + kernelUnits, count); position < end;
           ++position) {
        const auto byte = static_cast<unsigned char>(bytes[position]);
        piece[position] = codePage == CodePage::windows1252 ? windowsUnit(byte) : byte;
      }
    }
    text.append(piece, count);
    bytes.remove_prefix(count);
  }
}

std::size_t encodeSingleByte(int codePage, std::u16string_view text, std::string& bytes) {
  char piece[pieceUnits];
  std::size_t taken = 0;
  while (taken < text.size()) {
    const std::size_t count = std::min(text.size() - taken, pieceUnits);
    const std::size_t encoded = encodePiece(codePage, text.data() + taken, count, piece);
    bytes.append(piece, encoded);
    taken += encoded;
    if (encoded < count) break;
  }
  return taken;
}

}  // namespace kpx
