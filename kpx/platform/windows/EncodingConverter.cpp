#include "kpx/platform/EncodingConverter.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <iterator>
#include <optional>

#include "kpx/text/Utf.h"

namespace kpx {

namespace {

/// How an encoding is put together. The system's functions convert code pages of one or two bytes
/// a character and GB 18030, and tell what is no character. For the others they are silent about
/// that, or do not know the encoding, so they serve only as the table of the Japanese characters.
enum class Scheme : std::uint8_t {
  table,
  gb18030,
  ascii,
  utf32LittleEndian,
  utf32BigEndian,
  eucJapanese,
  iso2022Japanese,
};

/// Japanese characters of two bytes: those of JIS X 0208 as in EUC-JP, those of JIS X 0212 without
/// the byte 0x8F before them and without the highest bit of the second.
constexpr UINT japaneseTable = 20932;

constexpr char16_t firstKana = 0xFF61;  // the half-width ones, which EUC-JP has from 0x8EA1 on
constexpr char16_t lastKana = 0xFF9F;
// EUC-JP has the control characters from 0x80 on as one byte, but for the two that begin others.
constexpr unsigned char lastControl = 0x9F;

// How much is converted at once.
constexpr std::size_t pieceSize = 2048;

struct SystemCodePage {
  Scheme scheme = Scheme::table;
  UINT number = 0;                 // of the system's table
  std::array<bool, 256> isLead{};  // first bytes of two, where the scheme is a table

  bool convertsPieces() const noexcept {
    return scheme == Scheme::table || scheme == Scheme::gb18030;
  }
};

SystemCodePage schemeOf(int codePage) noexcept {
  switch (codePage) {
    case 12000:
      return {Scheme::utf32LittleEndian};
    case 12001:
      return {Scheme::utf32BigEndian};
    case 20127:
      return {Scheme::ascii};
    case 20932:
    case 51932:
      return {Scheme::eucJapanese, japaneseTable};
    case 50220:
      return {Scheme::iso2022Japanese, japaneseTable};
    case 51936:
      return {Scheme::table, 20936};
    case 51949:
      return {Scheme::table, 20949};
    case 54936:
      return {Scheme::gb18030, 54936};
    default:
      return {Scheme::table, static_cast<UINT>(codePage)};
  }
}

/// None when the system does not know the code page.
std::optional<SystemCodePage> findCodePage(int codePage) noexcept {
  SystemCodePage page = schemeOf(codePage);
  if (page.number == 0 && page.scheme != Scheme::table) return page;
  // Lower numbers, and 42, mean settings of this computer or fonts of symbols.
  if (codePage < 37 || codePage == CP_SYMBOL) return std::nullopt;
  CPINFOEXW info = {};
  if (!::GetCPInfoExW(page.number, 0, &info)) return std::nullopt;
  if (page.scheme != Scheme::table) return page;
  if (info.MaxCharSize > 2) return std::nullopt;
  for (std::size_t i = 0; i + 1 < MAX_LEADBYTES && info.LeadByte[i] != 0; i += 2) {
    std::fill(page.isLead.begin() + info.LeadByte[i],
              page.isLead.begin() + info.LeadByte[i + 1] + 1, true);
  }
  return page;
}

constexpr bool isHighByte(unsigned char byte) noexcept { return byte >= 0xA1 && byte <= 0xFE; }

/// Bytes of one encoding, character by character.
class ByteReader {
 public:
  ByteReader(const SystemCodePage& page, std::string_view bytes) noexcept
      : page_(page), bytes_(bytes) {}

  /// How many bytes a character takes that begins here, if it is one; they may reach behind the
  /// end.
  std::size_t lengthAt(std::size_t at) const noexcept {
    const unsigned char first = byteAt(at);
    switch (page_.scheme) {
      case Scheme::table:
        return page_.isLead[first] ? 2 : 1;
      case Scheme::gb18030:
        if (first <= 0x80 || first == 0xFF) return 1;
        return byteAt(at + 1) >= '0' && byteAt(at + 1) <= '9' ? 4 : 2;
      case Scheme::utf32LittleEndian:
      case Scheme::utf32BigEndian:
        return 4;
      case Scheme::eucJapanese:
        if (first == 0x8F) return 3;
        return first == 0x8E || isHighByte(first) ? 2 : 1;
      case Scheme::ascii:
      case Scheme::iso2022Japanese:
        break;
    }
    return 1;
  }

  /// Appends the character of so many bytes; false if they are none.
  bool decodeAt(std::size_t at, std::size_t length, std::u16string& text) const {
    if (length > bytes_.size() - at) return false;
    const unsigned char first = byteAt(at);
    switch (page_.scheme) {
      case Scheme::table:
      case Scheme::gb18030:
        return decodeBySystem(bytes_.substr(at, length), text);
      case Scheme::utf32LittleEndian:
      case Scheme::utf32BigEndian:
        return decodeUtf32At(at, text);
      case Scheme::eucJapanese:
        if (length > 1) return decodeEucAt(at, text);
        if (first > lastControl) return false;
        text.push_back(first);
        return true;
      case Scheme::ascii:
      case Scheme::iso2022Japanese:
        break;
    }
    if (first >= 0x80) return false;
    text.push_back(first);
    return true;
  }

  /// Appends the character of two 7-bit bytes of JIS X 0208.
  bool decodeKanjiAt(std::size_t at, std::u16string& text) const {
    const auto first = static_cast<unsigned char>(byteAt(at) | 0x80);
    const auto second = static_cast<unsigned char>(byteAt(at + 1) | 0x80);
    if (byteAt(at + 1) >= 0x80 || !isHighByte(first) || !isHighByte(second)) return false;
    return decodePair(first, second, text);
  }

  /// Appends whole characters; false, and nothing appended, if there is anything else.
  bool decodeBySystem(std::string_view piece, std::u16string& text) const {
    // No character takes more units than bytes.
    wchar_t units[pieceSize + 4];
    const int count = ::MultiByteToWideChar(page_.number, MB_ERR_INVALID_CHARS, piece.data(),
                                            static_cast<int>(piece.size()), units,
                                            static_cast<int>(std::size(units)));
    if (count <= 0) return false;
    text.append(units, units + count);
    return true;
  }

  /// 0 behind the end.
  unsigned char byteAt(std::size_t at) const noexcept {
    return at < bytes_.size() ? static_cast<unsigned char>(bytes_[at]) : 0;
  }

 private:
  bool decodeUtf32At(std::size_t at, std::u16string& text) const {
    char32_t code = 0;
    for (std::size_t i = 0; i < 4; ++i) {
      code = (code << 8) | byteAt(page_.scheme == Scheme::utf32LittleEndian ? at + 3 - i : at + i);
    }
    if (code > 0x10FFFF || (code >= 0xD800 && code <= 0xDFFF)) return false;
    appendCodePoint(text, code);
    return true;
  }

  bool decodeEucAt(std::size_t at, std::u16string& text) const {
    const unsigned char first = byteAt(at);
    const unsigned char second = byteAt(at + 1);
    if (!isHighByte(second)) return false;
    if (first == 0x8E) {
      if (second > 0xDF) return false;
      text.push_back(static_cast<char16_t>(firstKana + (second - 0xA1)));
      return true;
    }
    if (first != 0x8F) return decodePair(first, second, text);
    const unsigned char third = byteAt(at + 2);
    return isHighByte(third) && decodePair(second, third & 0x7F, text);
  }

  bool decodePair(unsigned char first, unsigned char second, std::u16string& text) const {
    const char pair[] = {static_cast<char>(first), static_cast<char>(second)};
    return decodeBySystem({pair, sizeof pair}, text);
  }

  const SystemCodePage& page_;
  std::string_view bytes_;
};

void lose(std::size_t at, std::size_t count, std::u16string& text, DecodingLoss& loss) {
  if (loss.firstByte == DecodingLoss::none) loss.firstByte = at;
  loss.count += count;
  text.push_back(static_cast<char16_t>(replacementCharacter));
}

void decodeCharacters(const SystemCodePage& page, std::string_view bytes, std::u16string& text,
                      DecodingLoss& loss) {
  const ByteReader reader(page, bytes);
  const bool isUtf32 =
      page.scheme == Scheme::utf32LittleEndian || page.scheme == Scheme::utf32BigEndian;
  for (std::size_t at = 0; at < bytes.size();) {
    std::size_t end = at;
    while (end < bytes.size() && end - at < pieceSize) end += reader.lengthAt(end);
    end = std::min(end, bytes.size());
    if (page.convertsPieces() && reader.decodeBySystem(bytes.substr(at, end - at), text)) {
      at = end;
      continue;
    }
    while (at < end) {
      std::size_t length = reader.lengthAt(at);
      if (!reader.decodeAt(at, length, text)) {
        length = isUtf32 ? std::min<std::size_t>(length, bytes.size() - at) : 1;
        lose(at, length, text, loss);
      }
      at += length;
    }
  }
}

/// The character sets that ISO-2022-JP switches between.
enum class JapaneseSet : std::uint8_t { ascii, roman, kanji };

std::optional<JapaneseSet> setOfEscape(std::string_view bytes) noexcept {
  const std::string_view escape = bytes.substr(0, 3);
  if (escape == "\x1B(B") return JapaneseSet::ascii;
  if (escape == "\x1B(J") return JapaneseSet::roman;
  if (escape == "\x1B$@" || escape == "\x1B$B") return JapaneseSet::kanji;
  return std::nullopt;
}

std::string_view escapeOf(JapaneseSet set) noexcept {
  switch (set) {
    case JapaneseSet::roman:
      return "\x1B(J";
    case JapaneseSet::kanji:
      return "\x1B$B";
    case JapaneseSet::ascii:
      break;
  }
  return "\x1B(B";
}

// The two characters that the Japanese variant of ASCII has in the place of others.
constexpr char16_t yenSign = 0x00A5;
constexpr char16_t overline = 0x203E;

void decodeIso2022(const SystemCodePage& page, std::string_view bytes, std::u16string& text,
                   DecodingLoss& loss) {
  const ByteReader reader(page, bytes);
  JapaneseSet set = JapaneseSet::ascii;
  for (std::size_t at = 0; at < bytes.size();) {
    const unsigned char byte = reader.byteAt(at);
    const bool isControl = byte < 0x21 || byte == 0x7F;
    if (byte == 0x1B) {
      const auto chosen = setOfEscape(bytes.substr(at));
      if (chosen) set = *chosen;
      if (!chosen) lose(at, 1, text, loss);
      at += chosen ? 3 : 1;
    } else if (set == JapaneseSet::kanji && !isControl) {
      const bool isCharacter = byte < 0x80 && reader.decodeKanjiAt(at, text);
      if (!isCharacter) lose(at, 1, text, loss);
      at += isCharacter ? 2 : 1;
    } else {
      if (set == JapaneseSet::roman && (byte == '\\' || byte == '~')) {
        text.push_back(byte == '~' ? overline : yenSign);
      } else if (!reader.decodeAt(at, 1, text)) {
        lose(at, 1, text, loss);
      }
      ++at;
    }
  }
}

/// What stands behind a CodePageEncoder's handle.
class CharacterWriter {
 public:
  explicit CharacterWriter(const SystemCodePage& page) noexcept : page_(page) {}

  std::size_t encode(std::u16string_view text, std::string& bytes) {
    // Pieces grow from few units, so that a text that has to be taken up again behind each of
    // its characters costs no more than one that can be written.
    std::size_t piece = 16;
    for (std::size_t position = 0; position < text.size();) {
      std::size_t units = std::min(piece, text.size() - position);
      if (units > 1 && isHighSurrogate(text[position + units - 1])) --units;
      if (page_.convertsPieces() && encodeBySystem(text.substr(position, units), bytes)) {
        position += units;
        piece = std::min(piece * 2, pieceSize);
        continue;
      }
      for (const std::size_t end = position + units; position < end;) {
        std::size_t next = position;
        const char32_t code = nextCodePoint(text, next);
        const bool isHalf = code >= 0xD800 && code <= 0xDFFF;
        if (isHalf || !encodeCharacter(code, text.substr(position, next - position), bytes)) {
          return position;
        }
        position = next;
      }
    }
    return text.size();
  }

  void finish(std::string& bytes) {
    if (page_.scheme == Scheme::iso2022Japanese) enter(JapaneseSet::ascii, bytes);
  }

 private:
  /// Appends all of the text; false, and nothing appended, if the encoding lacks any of it.
  bool encodeBySystem(std::u16string_view text, std::string& bytes) const {
    char encoded[pieceSize * 4];
    // The system refuses to tell of GB 18030, which has every character, that one was missing.
    const bool isComplete = page_.scheme == Scheme::gb18030;
    BOOL isMissing = FALSE;
    const int count = ::WideCharToMultiByte(
        page_.number, isComplete ? WC_ERR_INVALID_CHARS : WC_NO_BEST_FIT_CHARS,
        reinterpret_cast<const wchar_t*>(text.data()), static_cast<int>(text.size()), encoded,
        static_cast<int>(sizeof encoded), nullptr, isComplete ? nullptr : &isMissing);
    if (count <= 0 || isMissing) return false;
    bytes.append(encoded, static_cast<std::size_t>(count));
    return true;
  }

  bool encodeCharacter(char32_t code, std::u16string_view units, std::string& bytes) {
    switch (page_.scheme) {
      case Scheme::table:
      case Scheme::gb18030:
        return encodeBySystem(units, bytes);
      case Scheme::utf32LittleEndian:
        for (int shift = 0; shift < 32; shift += 8) bytes.push_back(byteOf(code >> shift));
        return true;
      case Scheme::utf32BigEndian:
        for (int shift = 24; shift >= 0; shift -= 8) bytes.push_back(byteOf(code >> shift));
        return true;
      case Scheme::eucJapanese:
        if (code > lastControl || code == 0x8E || code == 0x8F) {
          return encodeEuc(code, units, bytes);
        }
        bytes.push_back(byteOf(code));
        return true;
      case Scheme::iso2022Japanese:
        return encodeIso2022(code, units, bytes);
      case Scheme::ascii:
        break;
    }
    if (code >= 0x80) return false;
    bytes.push_back(byteOf(code));
    return true;
  }

  bool encodeEuc(char32_t code, std::u16string_view units, std::string& bytes) const {
    if (code >= firstKana && code <= lastKana) {
      bytes.push_back('\x8E');
      bytes.push_back(byteOf(code - firstKana + 0xA1));
      return true;
    }
    std::string pair;
    if (!encodePair(units, pair)) return false;
    if (!isOfJis0208(pair)) bytes.push_back('\x8F');
    bytes.push_back(pair[0]);
    bytes.push_back(highByte(pair[1]));
    return true;
  }

  bool encodeIso2022(char32_t code, std::u16string_view units, std::string& bytes) {
    if (code == 0x1B) return false;  // would be read as the beginning of a switch
    if (code < 0x80 || code == yenSign || code == overline) {
      enter(code < 0x80 ? JapaneseSet::ascii : JapaneseSet::roman, bytes);
      bytes.push_back(code == yenSign ? '\\' : code == overline ? '~' : byteOf(code));
      return true;
    }
    std::string pair;
    if (!encodePair(units, pair) || !isOfJis0208(pair)) return false;
    enter(JapaneseSet::kanji, bytes);
    for (const char byte : pair) bytes.push_back(byteOf(static_cast<unsigned char>(byte) & 0x7F));
    return true;
  }

  bool encodePair(std::u16string_view units, std::string& pair) const {
    return encodeBySystem(units, pair) && pair.size() == 2 &&
           isHighByte(static_cast<unsigned char>(pair[0])) &&
           isHighByte(static_cast<unsigned char>(highByte(pair[1])));
  }

  static bool isOfJis0208(std::string_view pair) noexcept {
    return isHighByte(static_cast<unsigned char>(pair[1]));
  }

  void enter(JapaneseSet set, std::string& bytes) {
    if (set_ != set) bytes.append(escapeOf(set));
    set_ = set;
  }

  static char byteOf(char32_t code) noexcept { return static_cast<char>(code & 0xFF); }
  static char highByte(char byte) noexcept {
    return byteOf(static_cast<unsigned char>(byte) | 0x80U);
  }

  SystemCodePage page_;
  JapaneseSet set_ = JapaneseSet::ascii;
};

}  // namespace

bool decodeCodePage(int codePage, std::string_view bytes, std::u16string& text,
                    DecodingLoss& loss) {
  const std::optional<SystemCodePage> page = findCodePage(codePage);
  if (!page) return false;
  if (page->scheme == Scheme::iso2022Japanese) {
    decodeIso2022(*page, bytes, text, loss);
  } else {
    decodeCharacters(*page, bytes, text, loss);
  }
  return true;
}

CodePageEncoder::CodePageEncoder(int codePage) {
  if (const auto page = findCodePage(codePage)) handle_ = new CharacterWriter(*page);
}

CodePageEncoder::~CodePageEncoder() { delete static_cast<CharacterWriter*>(handle_); }

std::size_t CodePageEncoder::encode(std::u16string_view text, std::string& bytes) {
  return handle_ != nullptr ? static_cast<CharacterWriter*>(handle_)->encode(text, bytes) : 0;
}

void CodePageEncoder::finish(std::string& bytes) {
  if (handle_ != nullptr) static_cast<CharacterWriter*>(handle_)->finish(bytes);
}

}  // namespace kpx
