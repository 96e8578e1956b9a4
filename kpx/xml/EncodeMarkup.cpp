#include <algorithm>
#include <bit>

#include "kpx/platform/EncodingConverter.h"
#include "kpx/text/ByteOrderMark.h"
#include "kpx/text/SingleByte.h"
#include "kpx/text/UnitKernels.h"
#include "kpx/text/Utf.h"
#include "kpx/xml/Encoding.h"
#include "kpx/xml/internal/MarkupPlace.h"
#include "kpx/xml/internal/Outcome.h"
#include "kpx/xml/internal/XmlCharacters.h"

namespace kpx {

namespace {

// Long enough that a piece costs nothing, short enough to stay in the processor's cache.
constexpr std::size_t pieceUnits = std::size_t{1} << 16;

// The offset of the first unit that UTF-8 does not carry, a 0 or a surrogate without its other
// half, or the size of the text.
std::size_t findUnwritable(std::u16string_view text) noexcept {
  std::size_t position = 0;
  while (position < text.size()) {
    if (text.size() - position >= detail::kernelUnits &&
        !detail::blockHasSurrogateOrZero(text.data() + position)) {
      position += detail::kernelUnits;
      continue;
    }
    // A pair may reach into the next block.
    const std::size_t end = std::min(position + detail::kernelUnits, text.size());
    while (position < end) {
      std::size_t next = position;
      const char32_t code = nextCodePoint(text, next);
      if (code == 0 || (code >= 0xD800 && code <= 0xDFFF)) return position;
      position = next;
    }
  }
  return text.size();
}

// The offset of the first unit 0, or the size of the text.
std::size_t findNull(std::u16string_view text) noexcept {
  std::size_t position = 0;
  while (text.size() - position >= detail::kernelUnits &&
         !detail::blockHasZero(text.data() + position)) {
    position += detail::kernelUnits;
  }
  return std::min(text.find(u'\0', position), text.size());
}

void appendUtf16Bytes(std::string& bytes, std::u16string_view text, bool littleEndian) {
  if (littleEndian == (std::endian::native == std::endian::little)) {
    bytes.append(reinterpret_cast<const char*>(text.data()), text.size() * sizeof(char16_t));
    return;
  }
  char16_t piece[1024];
  while (!text.empty()) {
    const std::size_t units = std::min(text.size(), std::size(piece));
    detail::swapUnits(text.data(), units, piece);
    bytes.append(reinterpret_cast<const char*>(piece), units * sizeof(char16_t));
    text.remove_prefix(units);
  }
}

}  // namespace

struct MarkupEncoder::State {
  State(std::u16string_view whole, MarkupEncoding wanted)
      : text(whole),
        codePage(wanted.codePage),
        mark(wanted.mark),
        places(whole),
        system(isOwn() ? nullptr : std::make_unique<CodePageEncoder>(codePage)) {}

  bool isUtf16() const noexcept {
    return codePage == CodePage::utf16LittleEndian || codePage == CodePage::utf16BigEndian;
  }
  bool isOwn() const noexcept {
    return codePage == CodePage::utf8 || isUtf16() || isSingleByte(codePage);
  }
  bool usable() const noexcept { return system == nullptr || system->usable(); }

  /// Appends the units up to the first that the encoding cannot hold; answers how many.
  std::size_t encode(std::u16string_view part, std::string& bytes) {
    if (codePage == CodePage::utf8) {
      const std::size_t units = findUnwritable(part);
      appendUtf16(bytes, part.substr(0, units));
      return units;
    }
    if (isUtf16()) {
      appendUtf16Bytes(bytes, part, codePage == CodePage::utf16LittleEndian);
      return part.size();
    }
    if (system == nullptr) return encodeSingleByte(codePage, part, bytes);
    return system->encode(part, bytes);
  }

  /// Writes ASCII text in the encoding.
  void encodePlain(std::u16string_view plain, std::string& bytes) { encode(plain, bytes); }

  /// Writes something else for the character at `position`, and moves behind it.
  void replaceCharacter(std::string& bytes) {
    const std::size_t at = position;
    const char32_t code = nextCodePoint(text, position);
    // A reference to what is no character of XML would be read as text.
    if (!detail::isXmlCharacter(code)) {
      lose(at);
      if (encode(u"\xFFFD", bytes) == 0) encodePlain(u"?", bytes);
      return;
    }
    std::u16string reference(u"&#");
    detail::appendNumber(reference, static_cast<std::int64_t>(code));
    reference.push_back(u';');
    switch (places.at(at)) {
      case detail::MarkupPlace::value:
        ++references;
        return encodePlain(reference, bytes);
      case detail::MarkupPlace::cdata:
        ++references;
        return encodePlain(u"]]>" + reference + u"<![CDATA[", bytes);
      case detail::MarkupPlace::name:
        lose(at);
        return encodePlain(u"_", bytes);
      case detail::MarkupPlace::verbatim:
        lose(at);
        return encodePlain(reference, bytes);
    }
  }

  void lose(std::size_t at) noexcept {
    if (losses++ == 0) firstLoss = at;
  }

  bool next(std::string& bytes) {
    bytes.clear();
    if (finished || !usable()) return false;
    if (position == 0 && mark) bytes.append(markOf(codePage));
    std::size_t end = std::min(position + pieceUnits, text.size());
    if (end < text.size() && isHighSurrogate(text[end - 1]) && isLowSurrogate(text[end])) ++end;
    while (position < end) {
      // No encoding carries a 0: readers remove it.
      const std::size_t null = codePage == CodePage::utf8
                                   ? end
                                   : position + findNull(text.substr(position, end - position));
      while (position < null) {
        position += encode(text.substr(position, null - position), bytes);
        if (position < null) replaceCharacter(bytes);
      }
      if (position < end) replaceCharacter(bytes);
    }
    if (position == text.size()) {
      finished = true;
      if (system != nullptr) system->finish(bytes);
    }
    return !bytes.empty();
  }

  std::u16string_view text;
  int codePage;
  bool mark;
  bool finished = false;
  std::size_t position = 0;
  std::size_t references = 0;
  std::size_t losses = 0;
  std::size_t firstLoss = none;
  detail::MarkupPlaces places;
  std::unique_ptr<CodePageEncoder> system;  // for encodings that are not our own
};

MarkupEncoder::MarkupEncoder(std::u16string_view text, MarkupEncoding encoding)
    : state_(std::make_unique<State>(text, encoding)) {}

MarkupEncoder::~MarkupEncoder() = default;

bool MarkupEncoder::usable() const noexcept { return state_->usable(); }
bool MarkupEncoder::next(std::string& bytes) { return state_->next(bytes); }
std::size_t MarkupEncoder::references() const noexcept { return state_->references; }
std::size_t MarkupEncoder::losses() const noexcept { return state_->losses; }
std::size_t MarkupEncoder::firstLoss() const noexcept { return state_->firstLoss; }

EncodedText encodeMarkupText(std::u16string_view text, MarkupEncoding encoding) {
  EncodedText encoded;
  MarkupEncoder encoder(text, encoding);
  encoded.usable = encoder.usable();
  encoded.bytes.reserve(text.size());
  std::string piece;
  while (encoder.next(piece)) encoded.bytes.append(piece);
  encoded.references = encoder.references();
  encoded.losses = encoder.losses();
  encoded.firstLoss = encoder.firstLoss();
  return encoded;
}

}  // namespace kpx
