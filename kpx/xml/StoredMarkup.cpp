#include "kpx/xml/StoredMarkup.h"

#include "kpx/xml/MarkupProblem.h"

namespace kpx {

std::pair<int, int> placeOfByte(std::string_view bytes, std::size_t offset) noexcept {
  std::pair<int, int> place{1, 1};
  for (std::size_t i = 0; i < offset && i < bytes.size(); ++i) {
    if (bytes[i] == '\n') {
      ++place.first;
      place.second = 1;
    } else {
      ++place.second;
    }
  }
  return place;
}

namespace {

/// The first character 0, or where a binary file has its first byte 0.
std::size_t firstNull(std::string_view bytes, int codePage) noexcept {
  const bool isWide =
      codePage == CodePage::utf16LittleEndian || codePage == CodePage::utf16BigEndian;
  if (!isWide) return bytes.find('\0');
  for (std::size_t i = 0; i + 1 < bytes.size(); i += 2) {
    if (bytes[i] == '\0' && bytes[i + 1] == '\0') return i;
  }
  return bytes.find('\0');
}

}  // namespace

StoredMarkup readMarkup(std::string_view bytes) {
  StoredMarkup read;
  DecodedText decoded = decodeMarkupBytes(bytes);
  read.storage = {decoded.codePage, decoded.mark};
  if (decoded.declarationWrong) read.wrongEncoding = decoded.declared;
  const auto refuse = [&](std::size_t offset, CString sentence) {
    const auto [line, column] = placeOfByte(bytes, offset);
    read.problems.push_back({line, column, std::move(sentence)});
  };
  if (decoded.refusal == DecodingRefusal::tooLarge) {
    refuse(0, u"is larger than a document can be");
  } else if (decoded.refusal == DecodingRefusal::binary || decoded.nulls > 0) {
    refuse(firstNull(bytes, decoded.codePage), u"is a binary file, no text");
  } else if (decoded.invalid > 0) {
    CString sentence;
    sentence.Format(u"%d %S no text in the encoding ", decoded.invalid,
                    decoded.invalid == 1 ? "byte that is" : "bytes that are");
    refuse(decoded.firstInvalid, sentence + encodingName(decoded.codePage));
  } else {
    read.readable = true;
    read.document.SetProblemSink([&](const MarkupProblem& problem) {
      read.problems.push_back({problem.line, problem.column, describe(problem)});
    });
    read.document.SetDoc(std::move(decoded.text));
    read.document.SetProblemSink({});
  }
  return read;
}

}  // namespace kpx
