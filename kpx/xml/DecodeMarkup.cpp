#include <algorithm>
#include <array>
#include <bit>
#include <climits>
#include <cstdint>
#include <cstring>
#include <functional>
#include <numeric>
#include <utility>

#include "kpx/platform/EncodingConverter.h"
#include "kpx/platform/Memory.h"
#include "kpx/text/ByteOrderMark.h"
#include "kpx/text/SingleByte.h"
#include "kpx/text/UnitKernels.h"
#include "kpx/text/Utf.h"
#include "kpx/xml/Encoding.h"

namespace kpx {

namespace {

using namespace detail;

constexpr std::string_view utf8Replacement = "\xEF\xBF\xBD";

constexpr bool isWide(int codePage) noexcept {
  return codePage == CodePage::utf16LittleEndian || codePage == CodePage::utf16BigEndian ||
         codePage == CodePage::utf32LittleEndian || codePage == CodePage::utf32BigEndian;
}

// Where UTF-16 or UTF-32 has no mark: every document begins with an ASCII character.
int wideWithoutMark(std::string_view bytes) noexcept {
  const auto isZero = [&](std::size_t first, std::size_t end) {
    return std::all_of(bytes.begin() + static_cast<std::ptrdiff_t>(first),
                       bytes.begin() + static_cast<std::ptrdiff_t>(end),
                       [](char byte) { return byte == 0; });
  };
  const auto begins = [&](std::size_t at) {
    return bytes[at] == '<' || bytes[at] == ' ' || bytes[at] == '\r' || bytes[at] == '\n';
  };
  if (bytes.size() >= 4) {
    if (begins(0) && isZero(1, 4)) return CodePage::utf32LittleEndian;
    if (isZero(0, 3) && begins(3)) return CodePage::utf32BigEndian;
  }
  if (bytes.size() >= 2) {
    if (begins(0) && isZero(1, 2)) return CodePage::utf16LittleEndian;
    if (isZero(0, 1) && begins(1)) return CodePage::utf16BigEndian;
  }
  return 0;
}

// The name in the declaration of bytes that extend ASCII.
CString declaredInBytes(std::string_view bytes) {
  constexpr std::size_t longestDeclaration = 1024;
  std::u16string beginning;
  decodeSingleByte(CodePage::latin1, bytes.substr(0, longestDeclaration), beginning);
  return declaredEncoding(beginning);
}

// Text may have lost a sector or caught a stray zero; with more it is something else.
bool isBinary(std::size_t zeros, std::size_t characters) noexcept {
  return zeros >= 8 && zeros > characters / 512;
}

struct Zeros {
  std::size_t count = 0;
  std::size_t first = DecodedText::none;
};

template <class Unit>
Zeros findZeros(std::string_view bytes) noexcept {
  Zeros zeros;
  for (std::size_t at = 0; bytes.size() - at >= sizeof(Unit); at += sizeof(Unit)) {
    Unit unit;
    std::memcpy(&unit, bytes.data() + at, sizeof unit);
    if (unit == 0 && zeros.count++ == 0) zeros.first = at;
  }
  return zeros;
}

bool hasZeroUnit(std::string_view bytes) noexcept {
  constexpr std::size_t block = 2 * kernelUnits;
  for (; bytes.size() >= block; bytes.remove_prefix(block)) {
    if (blockHasZero(bytes.data())) return true;
  }
  return findZeros<std::uint16_t>(bytes).count != 0;
}

bool hasZeroByte(std::string_view bytes) noexcept {
  return !bytes.empty() && std::memchr(bytes.data(), 0, bytes.size()) != nullptr;
}

/// Whether bytes in an encoding may declare that name. A name without a byte order means either.
bool mayDeclare(const CString& name, int codePage) noexcept {
  const int declared = encodingCodePage(name);
  if (declared == codePage || codePage == CodePage::ascii) return true;
  const bool hasOrder = name.Right(2).CompareNoCase(u"LE") == 0;
  const bool isOpposite =
      (declared == CodePage::utf16LittleEndian && codePage == CodePage::utf16BigEndian) ||
      (declared == CodePage::utf32LittleEndian && codePage == CodePage::utf32BigEndian);
  return isOpposite && !hasOrder;
}

/// Fills a DecodedText from bytes behind the mark.
class Decoder {
 public:
  Decoder(DecodedText& result, std::string_view bytes, std::size_t markBytes)
      : result_(result), text_(result.text.units()), bytes_(bytes), markBytes_(markBytes) {
    if (result_.codePage == 0) result_.codePage = wideWithoutMark(bytes_);
  }

  /// Judges the bytes; to be called first.
  DecodingRefusal refusal() {
    if (mostUnits() > static_cast<std::size_t>(INT_MAX)) return DecodingRefusal::tooLarge;
    Zeros zeros;
    if (is32()) {
      zeros = findZeros<std::uint32_t>(bytes_);
    } else if (isWide(result_.codePage)) {
      if (hasZeroUnit(bytes_)) zeros = findZeros<std::uint16_t>(bytes_);
    } else if (hasZeroByte(bytes_)) {
      zeros = findZeros<std::uint8_t>(bytes_);
    }
    result_.nulls = zeros.count;
    result_.firstNull = zeros.first;
    return isBinary(result_.nulls, mostUnits()) ? DecodingRefusal::binary : DecodingRefusal::none;
  }

  /// No more units can come of the bytes.
  std::size_t mostUnits() const noexcept {
    return isWide(result_.codePage) ? bytes_.size() / 2 : bytes_.size();
  }

  /// Fills the text, for which there is room.
  void decode() {
    if (isWide(result_.codePage)) {
      if (is32()) {
        decodeUtf32();
      } else {
        decodeUtf16();
      }
      result_.cutShort = bytes_.size() % (is32() ? 4 : 2) != 0;
    } else {
      decodeNarrow();
    }
    // The system's converter may see zeros that were not counted as such.
    if (result_.nulls != 0 || bySystem_) result_.nulls = std::erase(text_, u'\0');
    if (result_.nulls != 0) result_.firstNull = std::min(result_.firstNull, bytes_.size());
    if (isWide(result_.codePage)) result_.declared = declaredEncoding(text_);
    if (!result_.declared.IsEmpty() && !result_.declarationWrong) {
      result_.declarationWrong = !mayDeclare(result_.declared, result_.codePage);
    }
    for (std::size_t* place :
         {&result_.firstInvalid, &result_.firstNull, &result_.firstRespelled}) {
      if (*place != DecodedText::none) *place += markBytes_;
    }
  }

 private:
  bool is32() const noexcept {
    return result_.codePage == CodePage::utf32LittleEndian ||
           result_.codePage == CodePage::utf32BigEndian;
  }

  void decodeUtf16() {
    const bool littleEndian = result_.codePage == CodePage::utf16LittleEndian;
    const bool swap = littleEndian != (std::endian::native == std::endian::little);
    std::array<char16_t, 2048> piece;
    std::size_t position = 0;
    while (bytes_.size() - position >= 2) {
      const std::size_t units = std::min(piece.size(), (bytes_.size() - position) / 2);
      if (swap) {
        swapUnits(bytes_.data() + position, units, piece.data());
      } else {
        std::memcpy(piece.data(), bytes_.data() + position, units * 2);
      }
      text_.append(piece.data(), units);
      position += units * 2;
    }
    if (position != bytes_.size()) {
      result_.firstInvalid = position;
      result_.invalid = 1;
    }
  }

  void decodeUtf32() {
    if (decodeBySystem()) return;
    result_.firstInvalid = 0;
    result_.invalid = bytes_.size();
  }

  void decodeNarrow() {
    result_.declared = declaredInBytes(bytes_);
    if (result_.codePage == CodePage::utf8) return decodeUtf8();  // as the mark says
    const int declared = encodingCodePage(result_.declared);
    if (declared == CodePage::utf8) return decodeUtf8();
    if (declared == CodePage::latin1 || declared == CodePage::windows1252) {
      result_.codePage = declared;
      return decodeSingleByte(declared, bytes_, text_);
    }
    if (declared != 0 && declared != CodePage::ascii && !isWide(declared)) {
      result_.codePage = declared;
      if (decodeBySystem()) return;
    }
    decodeGuessed(declared);
  }

  void decodeGuessed(int declared) {
    const bool undeclared = result_.declared.IsEmpty();
    const bool valid = appendUtf8(text_, bytes_) == std::string_view::npos;
    const bool allAscii = valid && text_.size() == bytes_.size();
    if (valid) {
      // A file that declares some other encoding and is ASCII so far stays ASCII when it is
      // saved: that is right whatever the declared encoding is.
      result_.codePage = allAscii && !undeclared ? CodePage::ascii : CodePage::utf8;
    } else {
      text_.clear();
      decodeSingleByte(CodePage::windows1252, bytes_, text_);
      result_.codePage = CodePage::windows1252;
    }
    result_.guessed = !allAscii;
    result_.declarationWrong = !undeclared && !(allAscii && declared == CodePage::ascii);
  }

  void decodeUtf8() {
    result_.codePage = CodePage::utf8;
    result_.firstInvalid = appendUtf8(text_, bytes_);
    if (result_.firstInvalid == std::string_view::npos) return;
    // Each invalid byte became U+FFFD; the valid ones among them are counted out.
    std::size_t valid = 0;
    for (std::size_t at = 0; (at = bytes_.find(utf8Replacement, at)) != bytes_.npos; at += 3) {
      ++valid;
    }
    const auto all = std::count(text_.begin(), text_.end(), static_cast<char16_t>(0xFFFD));
    result_.invalid = static_cast<std::size_t>(all) - valid;
    result_.cutShort = endsInsideCharacter();
  }

  bool endsInsideCharacter() const noexcept {
    for (std::size_t back = 1; back <= std::min<std::size_t>(3, bytes_.size()); ++back) {
      const auto byte = static_cast<unsigned char>(bytes_[bytes_.size() - back]);
      if ((byte & 0xC0) == 0x80) continue;
      const std::size_t needed = byte < 0xC2   ? 1
                                 : byte < 0xE0 ? 2
                                 : byte < 0xF0 ? 3
                                 : byte < 0xF5 ? 4
                                               : 1;
      return back < needed;
    }
    return false;
  }

  bool decodeBySystem() {
    DecodingLoss loss;
    if (!decodeCodePage(result_.codePage, bytes_, text_, loss)) return false;
    result_.firstInvalid = loss.firstByte;
    result_.invalid = loss.count;
    bySystem_ = true;
    if (loss.count == 0) findRespelled();
    return true;
  }

  // Several encodings of the Far East have more than one way to write a character.
  void findRespelled() {
    std::string again;
    again.reserve(bytes_.size());
    CodePageEncoder encoder(result_.codePage);
    std::u16string_view rest = text_;
    rest.remove_prefix(encoder.encode(rest, again));
    encoder.finish(again);
    if (bytes_ == again && rest.empty()) return;
    const auto first = std::mismatch(bytes_.begin(), bytes_.end(), again.begin(), again.end());
    result_.firstRespelled = static_cast<std::size_t>(first.first - bytes_.begin());
    // With one more or less, all that follow stand elsewhere.
    result_.respelled = bytes_.size() - result_.firstRespelled;
    if (bytes_.size() == again.size()) {
      const auto same = std::transform_reduce(first.first, bytes_.end(), first.second,
                                              std::size_t{0}, std::plus<>(), std::equal_to<>());
      result_.respelled -= same;
    }
    result_.respelled = std::max<std::size_t>(result_.respelled, 1);
  }

  DecodedText& result_;
  std::u16string& text_;
  std::string_view bytes_;
  std::size_t markBytes_;
  bool bySystem_ = false;
};

}  // namespace

DecodedText decodeMarkupBytes(std::string_view bytes) { return decodeMarkupBytes(bytes, {}); }

DecodedText decodeMarkupBytes(std::string_view bytes, CString&& reuse) {
  DecodedText result;
  const ByteOrderMark* const mark = markAtStart(bytes);
  result.mark = mark != nullptr;
  result.codePage = mark != nullptr ? mark->codePage : 0;
  const std::size_t markBytes = mark != nullptr ? mark->bytes.size() : 0;
  Decoder decoder(result, bytes.substr(markBytes), markBytes);
  result.refusal = decoder.refusal();
  if (result.refusal != DecodingRefusal::none) return result;

  std::u16string& text = result.text.units();
  const std::size_t units = decoder.mostUnits();
  const std::size_t offered = reuse.units().capacity();
  // A short text does not keep the memory of a long one.
  constexpr std::size_t smallText = 4096;
  if (offered >= units && offered / 4 <= std::max(units, smallText)) {
    text = std::move(reuse.units());
    text.clear();
  } else {
    text.reserve(units);
    preferLargePages(text.data(), (units + 1) * sizeof(char16_t));
  }
  decoder.decode();
  return result;
}

}  // namespace kpx
