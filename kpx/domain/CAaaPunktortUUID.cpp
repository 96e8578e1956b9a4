#include "kpx/domain/CAaaPunktortUUID.h"

#include "kpx/domain/Operations.h"
#include "kpx/report/Error.h"
#include "kpx/text/HexDigit.h"

namespace kpx {
namespace {

constexpr std::size_t textLength = 36;

constexpr bool isHyphenPlace(std::size_t at) noexcept {
  return at == 8 || at == 13 || at == 18 || at == 23;
}

}  // namespace

bool CAaaPunktortUUID::fromText(std::u16string_view text, CAaaPunktortUUID& uuid) noexcept {
  if (text.size() == textLength + 2 && text.front() == u'{' && text.back() == u'}') {
    text = text.substr(1, textLength);
  }
  if (text.size() != textLength) return false;
  CAaaPunktortUUID read;
  for (std::size_t at = 0; at < textLength; ++at) {
    if (isHyphenPlace(at)) {
      if (text[at] != u'-') return false;
      continue;
    }
    const unsigned digit = detail::hexValue(text[at]);
    if (digit == 16) return false;
    read.high_ = read.high_ << 4 | read.low_ >> 60;
    read.low_ = read.low_ << 4 | digit;
  }
  uuid = read;
  return true;
}

CString CAaaPunktortUUID::text() const {
  return Guarded("CAaaPunktortUUID::text"_domain, CString(), [&] {
    char16_t units[textLength];
    std::uint64_t high = high_;
    std::uint64_t low = low_;
    for (std::size_t at = textLength; at-- > 0;) {
      if (isHyphenPlace(at)) {
        units[at] = u'-';
        continue;
      }
      units[at] = u"0123456789ABCDEF"[low & 15];
      low = low >> 4 | high << 60;
      high >>= 4;
    }
    return CString(std::u16string_view(units, textLength));
  });
}

}  // namespace kpx
