#include "kpx/platform/EncodingConverter.h"

#include <iconv.h>

#include <algorithm>
#include <bit>
#include <cerrno>
#include <iterator>
#include <utility>

namespace kpx {

namespace {

// Code pages that the system does not know as "CP" and their number.
constexpr std::pair<int, const char*> systemNames[] = {
    {10000, "MACINTOSH"},   {12000, "UTF-32LE"},    {12001, "UTF-32BE"},    {20127, "ASCII"},
    {20866, "KOI8-R"},      {20932, "EUC-JP"},      {21866, "KOI8-U"},      {28591, "ISO-8859-1"},
    {28592, "ISO-8859-2"},  {28593, "ISO-8859-3"},  {28594, "ISO-8859-4"},  {28595, "ISO-8859-5"},
    {28596, "ISO-8859-6"},  {28597, "ISO-8859-7"},  {28598, "ISO-8859-8"},  {28599, "ISO-8859-9"},
    {28600, "ISO-8859-10"}, {28603, "ISO-8859-13"}, {28604, "ISO-8859-14"}, {28605, "ISO-8859-15"},
    {28606, "ISO-8859-16"}, {50220, "ISO-2022-JP"}, {51932, "EUC-JP"},      {51936, "EUC-CN"},
    {51949, "EUC-KR"},      {54936, "GB18030"},
};

constexpr const char* utf16Name =
    std::endian::native == std::endian::little ? "UTF-16LE" : "UTF-16BE";

std::string systemName(int codePage) {
  const auto* const found = std::find_if(std::begin(systemNames), std::end(systemNames),
                                         [&](const auto& each) { return each.first == codePage; });
  return found != std::end(systemNames) ? found->second : "CP" + std::to_string(codePage);
}

// NOLINTNEXTLINE(performance-no-int-to-ptr): so the interface tells a failure
iconv_t noConverter() noexcept { return reinterpret_cast<iconv_t>(-1); }

// How much is converted at once.
constexpr std::size_t pieceUnits = 4096;

}  // namespace

bool decodeCodePage(int codePage, std::string_view bytes, std::u16string& text,
                    DecodingLoss& loss) {
  const iconv_t converter = iconv_open(utf16Name, systemName(codePage).c_str());
  if (converter == noConverter()) return false;
  struct Closer {
    iconv_t converter;
    ~Closer() { iconv_close(converter); }
  } closer{converter};

  const std::size_t unitBytes = codePage == 12000 || codePage == 12001 ? 4 : 1;
  char* in = const_cast<char*>(bytes.data());  // the interface is older than const
  std::size_t left = bytes.size();
  char16_t piece[pieceUnits];
  for (;;) {
    char* out = reinterpret_cast<char*>(piece);
    std::size_t room = sizeof piece;
    // Without input left, what the converter still holds back is asked for.
    const bool last = left == 0;
    const std::size_t answer = last ? iconv(converter, nullptr, nullptr, &out, &room)
                                    : iconv(converter, &in, &left, &out, &room);
    const int error = answer == static_cast<std::size_t>(-1) ? errno : 0;
    text.append(piece, (sizeof piece - room) / sizeof(char16_t));
    if (error == EILSEQ || error == EINVAL) {
      if (loss.firstByte == DecodingLoss::none) loss.firstByte = bytes.size() - left;
      const std::size_t lost = std::min(unitBytes, left);
      loss.count += lost;
      text.push_back(u'\xFFFD');
      in += lost;
      left -= lost;
    } else if (last) {
      return true;
    }
  }
}

CodePageEncoder::CodePageEncoder(int codePage) {
  const iconv_t converter = iconv_open(systemName(codePage).c_str(), utf16Name);
  if (converter != noConverter()) handle_ = converter;
}

CodePageEncoder::~CodePageEncoder() {
  if (handle_ != nullptr) iconv_close(handle_);
}

std::size_t CodePageEncoder::encode(std::u16string_view text, std::string& bytes) {
  if (handle_ == nullptr) return 0;
  char* in = reinterpret_cast<char*>(const_cast<char16_t*>(text.data()));
  std::size_t left = text.size() * sizeof(char16_t);
  char piece[pieceUnits];
  int error = E2BIG;
  while (left != 0 && error == E2BIG) {
    char* out = piece;
    std::size_t room = sizeof piece;
    const std::size_t answer = iconv(handle_, &in, &left, &out, &room);
    error = answer == static_cast<std::size_t>(-1) ? errno : 0;
    bytes.append(piece, sizeof piece - room);
  }
  return text.size() - left / sizeof(char16_t);
}

void CodePageEncoder::finish(std::string& bytes) {
  if (handle_ == nullptr) return;
  char piece[pieceUnits];
  char* out = piece;
  std::size_t room = sizeof piece;
  iconv(handle_, nullptr, nullptr, &out, &room);
  bytes.append(piece, sizeof piece - room);
}

}  // namespace kpx
