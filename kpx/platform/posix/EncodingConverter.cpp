#include "kpx/platform/EncodingConverter.h"

#include <iconv.h>

#include <algorithm>
#include <bit>
#include <bitset>
#include <cerrno>
#include <iterator>
#include <memory>
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

/// What stands behind a CodePageEncoder's handle. The system writes some characters as others that
/// look alike (in Shift_JIS the yen sign as a backslash); those are not written.
class CharacterWriter {
 public:
  explicit CharacterWriter(int codePage) noexcept
      : encoder_(iconv_open(systemName(codePage).c_str(), utf16Name)),
        checkEncoder_(iconv_open(systemName(codePage).c_str(), utf16Name)),
        checkDecoder_(iconv_open(utf16Name, systemName(codePage).c_str())) {}
  ~CharacterWriter() {
    for (const iconv_t each : {encoder_, checkEncoder_, checkDecoder_}) {
      if (each != noConverter()) iconv_close(each);
    }
  }
  CharacterWriter(const CharacterWriter&) = delete;
  CharacterWriter& operator=(const CharacterWriter&) = delete;

  bool usable() const noexcept {
    return encoder_ != noConverter() && checkEncoder_ != noConverter() &&
           checkDecoder_ != noConverter();
  }

  std::size_t encode(std::u16string_view text, std::string& bytes) {
    // Looked through in pieces that grow, so that a text that has to be taken up again behind each
    // of its characters costs no more than one that can be written.
    std::size_t piece = 16;
    for (std::size_t position = 0; position < text.size();) {
      std::size_t units = std::min(piece, text.size() - position);
      const bool splitsPair =
          position + units < text.size() && (text[position + units - 1] & 0xFC00) == 0xD800;
      if (splitsPair) ++units;
      const std::u16string_view part = text.substr(position, units);
      const auto altered =
          std::find_if(part.begin(), part.end(), [this](char16_t unit) { return isAltered(unit); });
      const auto kept = static_cast<std::size_t>(altered - part.begin());
      const std::size_t written = encodeKept(part.substr(0, kept), bytes);
      position += written;
      if (written < units) return position;
      piece = std::min(piece * 2, pieceUnits);
    }
    return text.size();
  }

  void finish(std::string& bytes) {
    char piece[pieceUnits];
    char* out = piece;
    std::size_t room = sizeof piece;
    iconv(encoder_, nullptr, nullptr, &out, &room);
    bytes.append(piece, sizeof piece - room);
  }

 private:
  std::size_t encodeKept(std::u16string_view text, std::string& bytes) {
    char* in = reinterpret_cast<char*>(const_cast<char16_t*>(text.data()));
    std::size_t left = text.size() * sizeof(char16_t);
    char piece[pieceUnits];
    int error = E2BIG;
    while (left != 0 && error == E2BIG) {
      char* out = piece;
      std::size_t room = sizeof piece;
      const std::size_t answer = iconv(encoder_, &in, &left, &out, &room);
      error = answer == static_cast<std::size_t>(-1) ? errno : 0;
      bytes.append(piece, sizeof piece - room);
    }
    return text.size() - left / sizeof(char16_t);
  }

  /// Whether a unit that is written comes back as something else. Halves of pairs are not looked
  /// at: the encodings that have such characters have all of them.
  bool isAltered(char16_t unit) noexcept {
    if (!known_[unit]) {
      known_[unit] = true;
      altered_[unit] = (unit & 0xF800) != 0xD800 && comesBackAltered(unit);
    }
    return altered_[unit];
  }

  bool comesBackAltered(char16_t unit) const noexcept {
    char bytes[32];
    std::size_t length = 0;
    if (!convert(checkEncoder_, &unit, sizeof unit, bytes, sizeof bytes, length)) return false;
    char16_t units[8];
    std::size_t size = 0;
    return !convert(checkDecoder_, bytes, length, units, sizeof units, size) ||
           size != sizeof unit || units[0] != unit;
  }

  /// Converts the whole input from and to the initial state; false if that is not possible.
  static bool convert(iconv_t converter, const void* from, std::size_t size, void* to,
                      std::size_t room, std::size_t& written) noexcept {
    iconv(converter, nullptr, nullptr, nullptr, nullptr);
    char* in = static_cast<char*>(const_cast<void*>(from));
    char* out = static_cast<char*>(to);
    const std::size_t all = room;
    const auto failed = static_cast<std::size_t>(-1);
    if (iconv(converter, &in, &size, &out, &room) == failed ||
        iconv(converter, nullptr, nullptr, &out, &room) == failed) {
      return false;
    }
    written = all - room;
    return true;
  }

  iconv_t encoder_;
  iconv_t checkEncoder_;
  iconv_t checkDecoder_;
  std::bitset<0x10000> known_;
  std::bitset<0x10000> altered_;
};

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
  auto writer = std::make_unique<CharacterWriter>(codePage);
  if (writer->usable()) handle_ = writer.release();
}

CodePageEncoder::~CodePageEncoder() { delete static_cast<CharacterWriter*>(handle_); }

std::size_t CodePageEncoder::encode(std::u16string_view text, std::string& bytes) {
  return handle_ != nullptr ? static_cast<CharacterWriter*>(handle_)->encode(text, bytes) : 0;
}

void CodePageEncoder::finish(std::string& bytes) {
  if (handle_ != nullptr) static_cast<CharacterWriter*>(handle_)->finish(bytes);
}

}  // namespace kpx
