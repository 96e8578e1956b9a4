#include "kpx/xml/StoredMarkup.h"

#include <algorithm>

#include "kpx/text/Utf.h"
#include "kpx/xml/MarkupCheck.h"
#include "kpx/xml/MarkupProblem.h"

namespace kpx {
namespace {

template <class Text>
std::pair<int, int> placeIn(Text text, std::size_t offset) noexcept {
  std::pair<int, int> place{1, 1};
  for (std::size_t i = 0; i < offset && i < text.size(); ++i) {
    if (text[i] == '\n') {
      ++place.first;
      place.second = 1;
    } else {
      ++place.second;
    }
  }
  return place;
}

constexpr bool isUtf16(int codePage) noexcept {
  return codePage == CodePage::utf16LittleEndian || codePage == CodePage::utf16BigEndian;
}

/// The first character 0, or where a binary file has its first byte 0.
std::size_t firstNull(std::string_view bytes, const DecodedText& decoded) noexcept {
  if (decoded.firstNull != DecodedText::none) return decoded.firstNull;
  return bytes.find('\0');
}

/// The first byte that is no ASCII.
std::size_t firstHighByte(std::string_view bytes) noexcept {
  const auto* const found = std::ranges::find_if(
      bytes, [](char byte) { return static_cast<unsigned char>(byte) >= 0x80; });
  return static_cast<std::size_t>(found - bytes.begin());
}

/// Reads bytes and collects what is wrong with them.
class Reader {
 public:
  Reader(std::string_view bytes, std::size_t limit) : bytes_(bytes), problems_(limit) {}

  StoredMarkup run(bool isStrict) && {
    DecodedText decoded = decodeMarkupBytes(bytes_);
    read_.storage = {decoded.codePage, decoded.mark};
    read_.respelled = decoded.respelled;
    read_.firstRespelled = decoded.firstRespelled;
    read_.readable = !refuse(decoded);
    if (read_.readable) {
      if (isStrict) checkEncoding(decoded);
      const MarkupProblemSink sink = [this](const MarkupProblem& problem) { add(problem); };
      read_.document.SetParseResult(false);
      read_.document.SetProblemSink(sink);
      read_.document.SetDoc(std::move(decoded.text));
      read_.document.SetProblemSink({});
      if (isStrict) {
        MarkupCheck::check(read_.document.GetDoc(), [&](const MarkupProblem& problem) {
          if (problem.kind != MarkupProblemKind::lineBreakInValue) add(problem);
        });
      }
    }
    read_.problems = std::move(problems_).finish();
    return std::move(read_);
  }

 private:
  template <class Make>
  void add(std::pair<int, int> place, std::u16string_view kind, bool isWarning, Make sentence) {
    read_.warnings += isWarning;
    problems_.add(static_cast<std::size_t>(place.first), static_cast<std::size_t>(place.second),
                  [&] {
                    return PlacedProblem{place.first, place.second, sentence(), isWarning, kind};
                  });
  }
  void add(const MarkupProblem& problem) {
    add({problem.line, problem.column}, kindName(problem.kind),
        MarkupCheck::isWarning(problem.kind), [&] { return describe(problem); });
  }
  void addAtByte(std::size_t offset, EncodingProblemKind kind, const CString& sentence) {
    add(placeOfByte(bytes_, offset), kindName(kind), kind == EncodingProblemKind::maybeUtf8,
        [&] { return sentence; });
  }

  /// Tells why the bytes are no text, if they are none.
  bool refuse(const DecodedText& decoded) {
    if (decoded.refusal == DecodingRefusal::tooLarge) {
      addAtByte(0, EncodingProblemKind::tooLarge, u"is larger than a document can be");
    } else if (decoded.refusal == DecodingRefusal::binary || decoded.nulls > 0) {
      addAtByte(firstNull(bytes_, decoded), EncodingProblemKind::binary,
                u"is a binary file, no text");
    } else if (decoded.invalid > 0) {
      CString sentence;
      sentence.Format(u"%zu %S no text in the encoding ", decoded.invalid,
                      decoded.invalid == 1 ? "byte that is" : "bytes that are");
      addAtByte(decoded.firstInvalid, EncodingProblemKind::notInEncoding,
                sentence + encodingName(decoded.codePage));
    } else {
      return false;
    }
    return true;
  }

  /// What another program would read the bytes as.
  void checkEncoding(const DecodedText& decoded) {
    const CString name = encodingName(decoded.codePage);
    const CString& declared = decoded.declared;
    if (decoded.declarationWrong) {
      addAtByte(0, EncodingProblemKind::wrongDeclaration,
                u"the declared encoding '" + declared +
                    u"' is unknown or not that of the bytes; read as " + name);
      return;
    }
    const bool isWide =
        decoded.codePage != CodePage::utf8 &&
        (isUtf16(decoded.codePage) || encodingName(decoded.codePage).Find(u"UTF-32") == 0);
    // A name with a byte order in it says all that a mark would.
    const bool hasOrder =
        declared.Right(2).CompareNoCase(u"LE") == 0 || declared.Right(2).CompareNoCase(u"BE") == 0;
    if (isWide && !decoded.mark && !hasOrder) {
      addAtByte(0, EncodingProblemKind::missingMark,
                name + u" without a byte-order mark, which other programs need");
    } else if (declared.IsEmpty() && decoded.codePage == CodePage::windows1252) {
      std::u16string scratch;
      addAtByte(
          appendUtf8(scratch, bytes_), EncodingProblemKind::undeclared,
          u"no encoding is declared, so this has to be UTF-8, which it is not; read as " + name);
    } else if (!isWide && decoded.codePage != CodePage::utf8) {
      hintAtUtf8(declared);
    }
  }

  void hintAtUtf8(const CString& declared) {
    const std::size_t first = firstHighByte(bytes_);
    std::u16string scratch;
    if (first == bytes_.size() || appendUtf8(scratch, bytes_) != std::string_view::npos) return;
    addAtByte(first, EncodingProblemKind::maybeUtf8,
              u"declared as " + declared +
                  u", but the bytes read as UTF-8 from here on; is that "
                  u"what they are?");
  }

  std::string_view bytes_;
  ProblemCollector<PlacedProblem> problems_;
  StoredMarkup read_;
};

}  // namespace

std::u16string_view kindName(EncodingProblemKind kind) noexcept {
  switch (kind) {
    case EncodingProblemKind::tooLarge:
      return u"too-large";
    case EncodingProblemKind::binary:
      return u"binary";
    case EncodingProblemKind::notInEncoding:
      return u"not-in-encoding";
    case EncodingProblemKind::wrongDeclaration:
      return u"wrong-declaration";
    case EncodingProblemKind::missingMark:
      return u"missing-mark";
    case EncodingProblemKind::undeclared:
      return u"undeclared";
    case EncodingProblemKind::maybeUtf8:
      return u"maybe-utf8";
  }
  return u"";
}

StoredMarkup readMarkup(std::string_view bytes, std::size_t limit) {
  return Reader(bytes, limit).run(false);
}

StoredMarkup checkMarkup(std::string_view bytes, std::size_t limit) {
  return Reader(bytes, limit).run(true);
}

std::pair<int, int> placeOfByte(std::string_view bytes, std::size_t offset) noexcept {
  return placeIn(bytes, offset);
}

std::pair<int, int> placeOfUnit(std::u16string_view text, std::size_t offset) noexcept {
  return placeIn(text, offset);
}

}  // namespace kpx
