#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kpx::detail {

/// Appends the Base64 text of the bytes in the layout of stored documents: a line break (CR LF)
/// before everything, after every 64 characters, and after a padded last group.
void encodeBase64(std::u16string& out, const unsigned char* data, std::size_t bytes);

/// Decodes into `out` and answers how many bytes that were; 0 when they are more than
/// `capacity`. Line breaks are passed over, other characters outside the alphabet count as
/// value 0, an unfinished group at the end is dropped.
std::size_t decodeBase64(std::u16string_view text, unsigned char* out, std::size_t capacity);

}  // namespace kpx::detail
