#include "kpx/support/files/StoredText.h"

#include <algorithm>
#include <bit>
#include <cstring>

#include "kpx/text/ByteOrderMark.h"
#include "kpx/text/SingleByte.h"
#include "kpx/text/UnitKernels.h"
#include "kpx/text/Utf.h"
#include "kpx/text/Utf8Sequence.h"

namespace kpx::detail {
namespace {

constexpr char16_t escapedBytes = 0xDC00;

constexpr bool isEscapedByte(char32_t code) noexcept { return code >= 0xDC80 && code <= 0xDCFF; }

bool isUtf16(int codePage) noexcept {
  return codePage == CodePage::utf16LittleEndian || codePage == CodePage::utf16BigEndian;
}

bool isSwapped(int codePage) noexcept {
  return (codePage == CodePage::utf16LittleEndian) != (std::endian::native == std::endian::little);
}

/// The mark, as far as such files have one: four bytes that could be UTF-32 are UTF-16 here.
StoredEncoding encodingOf(std::string_view bytes) noexcept {
  for (const int codePage :
       {CodePage::utf8, CodePage::utf16LittleEndian, CodePage::utf16BigEndian}) {
    if (bytes.starts_with(markOf(codePage))) return {codePage, true};
  }
  if (bytes.size() >= 2 && bytes[0] != 0 && bytes[1] == 0) {
    return {CodePage::utf16LittleEndian, false};
  }
  if (bytes.size() >= 2 && bytes[0] == 0 && bytes[1] != 0) {
    return {CodePage::utf16BigEndian, false};
  }
  return {};
}

void decodeUtf16(std::string_view bytes, bool swap, std::u16string& text) {
  const std::size_t units = bytes.size() / 2;
  text.resize(units);
  if (swap) {
    swapUnits(bytes.data(), units, text.data());
  } else if (units != 0) {
    std::memcpy(text.data(), bytes.data(), units * 2);
  }
}

void decodeDamagedUtf8(std::string_view bytes, std::u16string& text) {
  while (!bytes.empty()) {
    const DecodedSequence sequence = decodeUtf8(bytes.data(), bytes.size());
    if (sequence.code == invalidSequence) {
      text.push_back(static_cast<char16_t>(escapedBytes + static_cast<unsigned char>(bytes[0])));
    } else {
      appendCodePoint(text, sequence.code);
    }
    bytes.remove_prefix(sequence.length);
  }
}

void appendEscapedUtf8(std::u16string_view text, std::string& bytes) {
  std::size_t written = 0;
  for (std::size_t at = 0; at < text.size();) {
    // Only a unit of this range can stand for a byte, and hardly any text has one.
    if ((text[at] & 0xFC00) != escapedBytes && !isHighSurrogate(text[at])) {
      ++at;
      continue;
    }
    const std::size_t begin = at;
    const char32_t code = nextCodePoint(text, at);
    if (!isEscapedByte(code)) continue;
    appendUtf16(bytes, text.substr(written, begin - written));
    bytes.push_back(static_cast<char>(code - escapedBytes));
    written = at;
  }
  appendUtf16(bytes, text.substr(written));
}

bool isUtf8BeyondAscii(std::string_view bytes) {
  if (std::all_of(bytes.begin(), bytes.end(), [](char byte) { return byte >= 0; })) return false;
  std::u16string text;
  return appendUtf8(text, bytes) == std::string::npos;
}

}  // namespace

StoredText decodeStored(std::string_view bytes) {
  StoredText result;
  result.encoding = encodingOf(bytes);
  int& codePage = result.encoding.codePage;
  const std::size_t mark = result.encoding.mark ? markOf(codePage).size() : 0;
  bytes.remove_prefix(mark);
  if (isUtf16(codePage)) {
    decodeUtf16(bytes, isSwapped(codePage), result.text);
    if (bytes.size() % 2 != 0) {
      result.halfUnit = bytes.back();
      result.firstInvalid = mark + bytes.size() - 1;
    }
    return result;
  }
  result.text.reserve(bytes.size());
  const std::size_t invalid = appendUtf8(result.text, bytes);
  if (invalid == std::string::npos) return result;
  result.text.clear();
  if (result.encoding.mark) {
    decodeDamagedUtf8(bytes, result.text);
    result.firstInvalid = mark + invalid;
  } else {
    codePage = CodePage::windows1252;
    decodeSingleByte(codePage, bytes, result.text);
  }
  return result;
}

namespace {

std::string encodeUtf16(std::u16string_view text, StoredEncoding& encoding) {
  // Without a mark the first character has to tell the order of the bytes.
  if (text.empty() || text.front() == 0 || text.front() > 0xFF) encoding.mark = true;
  std::string bytes(encoding.mark ? markOf(encoding.codePage) : std::string_view());
  const std::size_t begin = bytes.size();
  bytes.resize(begin + text.size() * 2);
  if (isSwapped(encoding.codePage)) {
    swapUnits(text.data(), text.size(), bytes.data() + begin);
  } else if (!text.empty()) {
    std::memcpy(bytes.data() + begin, text.data(), text.size() * 2);
  }
  return bytes;
}

std::string encodeUtf8(std::u16string_view text, StoredEncoding& encoding) {
  std::string bytes(encoding.mark ? markOf(CodePage::utf8) : std::string_view());
  appendEscapedUtf8(text, bytes);
  return bytes;
}

}  // namespace

std::string encodeStored(std::u16string_view text, StoredEncoding& encoding) {
  if (isUtf16(encoding.codePage)) return encodeUtf16(text, encoding);
  std::string bytes;
  if (encoding.codePage == CodePage::windows1252) {
    const bool held = encodeSingleByte(encoding.codePage, text, bytes) == text.size();
    if (!held || isUtf8BeyondAscii(bytes)) encoding = {CodePage::utf8, !held};
  }
  if (encoding.codePage == CodePage::utf8) bytes = encodeUtf8(text, encoding);
  if (!encoding.mark && encodingOf(bytes) != StoredEncoding()) {
    // The text itself begins as a mark or as UTF-16 would.
    encoding = {CodePage::utf8, true};
    bytes = encodeUtf8(text, encoding);
  }
  return bytes;
}

bool hasLoneSurrogate(std::u16string_view text) noexcept {
  for (std::size_t at = 0; at < text.size();) {
    const char32_t code = nextCodePoint(text, at);
    if (code >= 0xD800 && code <= 0xDFFF) return true;
  }
  return false;
}

}  // namespace kpx::detail
