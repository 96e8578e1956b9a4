#include <cstdint>
#include <cstring>
#include <vector>

#include "fuzz/Check.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"
#include "kpx/xml/internal/Escape.h"

using namespace kpx;

namespace {

// Bytes that were read without any damage must come back.
void checkFileBytes(std::string_view bytes) {
  const DecodedText decoded = decodeMarkupBytes(bytes);
  if (decoded.refusal != DecodingRefusal::none) return;
  FUZZ_CHECK((decoded.firstInvalid == DecodedText::none) == (decoded.invalid == 0));
  FUZZ_CHECK(decoded.firstInvalid == DecodedText::none || decoded.firstInvalid < bytes.size());
  FUZZ_CHECK(decoded.text.Find(u'\0') == -1);
  const bool own = decoded.codePage == CodePage::utf8 || decoded.codePage == CodePage::ascii ||
                   decoded.codePage == CodePage::utf16LittleEndian ||
                   decoded.codePage == CodePage::utf16BigEndian ||
                   decoded.codePage == CodePage::latin1 ||
                   decoded.codePage == CodePage::windows1252;
  if (!own || decoded.nulls != 0 || decoded.invalid != 0 || decoded.cutShort) return;
  const EncodedText encoded = encodeMarkupText(decoded.text, {decoded.codePage, decoded.mark});
  FUZZ_CHECK(encoded.bytes == bytes);
}

void checkEscapes(const CString& text) {
  for (const int flags : {0, MarkupFlag::attributeValue}) {
    const CString escaped = CMarkup::EscapeText(text, flags);
    FUZZ_CHECK(CMarkup::UnescapeText(escaped) == text);
    FUZZ_CHECK(detail::needsEscape(text, flags) == (escaped != text));
    const int again = flags | MarkupFlag::withReferences;
    FUZZ_CHECK(CMarkup::EscapeText(escaped, again) == escaped);
    const CString kept = CMarkup::EscapeText(text, again);
    FUZZ_CHECK(detail::needsEscape(text, again) == (kept != text));
    FUZZ_CHECK(CMarkup::EscapeText(kept, again) == kept);
  }
  std::u16string section;
  detail::appendCDataSection(section, text);
  FUZZ_CHECK(section.ends_with(u"]]>"));
}

// Whatever the text is, the bytes say how much of it was lost; without loss it comes back.
void checkNarrowing(const CString& text) {
  for (const int codePage :
       {CodePage::utf8, CodePage::ascii, CodePage::latin1, CodePage::windows1252}) {
    const EncodedText encoded = encodeMarkupText(text, {codePage});
    FUZZ_CHECK(encoded.usable);
    FUZZ_CHECK((encoded.losses == 0) == (encoded.firstLoss == MarkupEncoder::none));
    if (codePage != CodePage::utf8 || encoded.losses != 0 || text.Find(u'\0') != -1) continue;
    const DecodedText decoded = decodeMarkupBytes("\xEF\xBB\xBF" + encoded.bytes);
    FUZZ_CHECK(decoded.text == text);
  }
}

void checkConversions(std::string_view bytes) {
  const int size = static_cast<int>(bytes.size());
  const int units = CMarkup::UTF8To16(nullptr, bytes.data(), size);
  std::vector<char16_t> text(static_cast<std::size_t>(units) + 1);
  FUZZ_CHECK(CMarkup::UTF8To16(text.data(), bytes.data(), size) <= size);
  const int needed = CMarkup::UTF16To8(nullptr, text.data(), 0);
  for (const int room : {needed, needed / 2 + 1, 1}) {
    std::vector<char> out(static_cast<std::size_t>(room));
    FUZZ_CHECK(CMarkup::UTF16To8(out.data(), text.data(), room) <= room);
  }
  int nonAscii = 0;
  bool cutShort = false;
  CMarkup::DetectUTF8(bytes.data(), size, &nonAscii, &cutShort);
  FUZZ_CHECK(nonAscii <= size);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  checkFileBytes(bytes);
  checkConversions(bytes);
  // The same bytes once as they are, once as units of any value.
  checkEscapes(CString::fromUtf8(bytes));
  std::u16string units(size / 2, u'\0');
  if (!units.empty()) std::memcpy(units.data(), data, units.size() * 2);
  const CString text(std::move(units));
  checkEscapes(text);
  checkNarrowing(text);
  checkNarrowing(CString::fromUtf8(bytes));
  return 0;
}
