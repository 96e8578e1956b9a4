#pragma once

#include <string_view>

#include "kpx/text/CodePage.h"

namespace kpx {

/// The bytes that say at the beginning of a file which encoding it is in.
struct ByteOrderMark {
  int codePage;
  std::string_view bytes;
};

/// UTF-32 first: its little-endian mark begins like the one of UTF-16.
inline constexpr ByteOrderMark byteOrderMarks[] = {
    {CodePage::utf32LittleEndian, {"\xFF\xFE\0\0", 4}},
    {CodePage::utf32BigEndian, {"\0\0\xFE\xFF", 4}},
    {CodePage::utf8, "\xEF\xBB\xBF"},
    {CodePage::utf16LittleEndian, "\xFF\xFE"},
    {CodePage::utf16BigEndian, "\xFE\xFF"},
};

/// The mark that the bytes begin with, or nullptr.
inline const ByteOrderMark* markAtStart(std::string_view bytes) noexcept {
  for (const ByteOrderMark& mark : byteOrderMarks) {
    if (bytes.starts_with(mark.bytes)) return &mark;
  }
  return nullptr;
}

/// The mark of a code page; empty if it has none.
inline std::string_view markOf(int codePage) noexcept {
  for (const ByteOrderMark& mark : byteOrderMarks) {
    if (mark.codePage == codePage) return mark.bytes;
  }
  return {};
}

}  // namespace kpx
