#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kpx {

/// Whether the library reads and writes this code page of one byte a character itself.
bool isSingleByte(int codePage) noexcept;

/// Appends the bytes as units. Every byte of ISO-8859-1 and Windows-1252 is a character.
void decodeSingleByte(int codePage, std::string_view bytes, std::u16string& text);

/// Appends the units up to the first that the code page cannot hold; answers how many.
std::size_t encodeSingleByte(int codePage, std::u16string_view text, std::string& bytes);

}  // namespace kpx
