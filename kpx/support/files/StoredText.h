#pragma once

#include <cstddef>
#include <string>
#include <string_view>

#include "kpx/text/CodePage.h"

namespace kpx::detail {

/// How a text file is stored.
struct StoredEncoding {
  int codePage = CodePage::utf8;
  bool mark = false;  // begins with a byte-order mark

  friend bool operator==(const StoredEncoding&, const StoredEncoding&) = default;
};

/// The bytes of a text file as text, so that the text gives the same bytes again whatever they
/// were.
struct StoredText {
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  std::u16string text;  // without the mark
  StoredEncoding encoding;
  std::string halfUnit;             // the last byte of UTF-16 with an odd number of them
  std::size_t firstInvalid = none;  // offset of the first byte that is no text in the encoding
};

/// The encoding is taken from the mark; without one it is UTF-16 when one of the first two bytes
/// is zero, UTF-8 where the bytes allow it, and else Windows-1252. Behind a mark of UTF-8, bytes
/// that are part of no character become the lone surrogates U+DC80 to U+DCFF.
StoredText decodeStored(std::string_view bytes);

/// The bytes of a text. What the encoding cannot hold, or what would be read back as something
/// else, is written as UTF-8 instead; `encoding` tells.
std::string encodeStored(std::u16string_view text, StoredEncoding& encoding);

/// Whether a text holds half of a pair, which only UTF-16 files can keep.
bool hasLoneSurrogate(std::u16string_view text) noexcept;

}  // namespace kpx::detail
