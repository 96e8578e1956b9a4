#include "kpx/xml/internal/XmlCharacters.h"

#include <algorithm>
#include <iterator>

#include "kpx/text/Utf.h"

namespace kpx::detail {
namespace {

struct Range {
  char32_t first;
  char32_t last;
};

constexpr Range nameStarts[] = {
    {':', ':'},       {'A', 'Z'},       {'_', '_'},       {'a', 'z'},
    {0xC0, 0xD6},     {0xD8, 0xF6},     {0xF8, 0x2FF},    {0x370, 0x37D},
    {0x37F, 0x1FFF},  {0x200C, 0x200D}, {0x2070, 0x218F}, {0x2C00, 0x2FEF},
    {0x3001, 0xD7FF}, {0xF900, 0xFDCF}, {0xFDF0, 0xFFFD}, {0x10000, 0xEFFFF},
};
constexpr Range laterInNames[] = {
    {'-', '.'}, {'0', '9'}, {0xB7, 0xB7}, {0x300, 0x36F}, {0x203F, 0x2040},
};

template <std::size_t count>
bool isIn(const Range (&ranges)[count], char32_t code) noexcept {
  const auto* const behind =
      std::upper_bound(std::begin(ranges), std::end(ranges), code,
                       [](char32_t wanted, const Range& range) { return wanted < range.first; });
  return behind != std::begin(ranges) && code <= (behind - 1)->last;
}

// Whether a unit is a character by itself, without a look at others.
bool isPlain(char16_t unit) noexcept {
  return (unit >= 0x20 && unit < 0xD800) || unit == '\n' || unit == '\r' || unit == '\t';
}

// Control characters that a document of version 1.1 can have as references only.
bool isRestricted(char32_t code) noexcept { return code >= 0x7F && code <= 0x9F && code != 0x85; }

}  // namespace

bool isAnyXmlName(std::u16string_view name) noexcept {
  if (name.empty()) return false;
  std::size_t position = 0;
  while (position < name.size()) {
    const bool first = position == 0;
    const char32_t code = nextCodePoint(name, position);
    if (!isIn(nameStarts, code) && (first || !isIn(laterInNames, code))) return false;
  }
  return true;
}

std::size_t findForbiddenCharacter(std::u16string_view text, std::size_t from,
                                   bool isVersion11) noexcept {
  for (std::size_t position = from; position < text.size();) {
    // Most of a text is plain; looked at in blocks that compilers turn into vector code.
    constexpr std::size_t unitsAtOnce = 32;
    while (position + unitsAtOnce <= text.size()) {
      bool plain = true;
      for (std::size_t i = 0; i < unitsAtOnce; ++i) plain &= isPlain(text[position + i]);
      for (std::size_t i = 0; isVersion11 && i < unitsAtOnce; ++i) {
        plain &= !isRestricted(text[position + i]);
      }
      if (!plain) break;
      position += unitsAtOnce;
    }
    const std::size_t blockEnd = std::min(position + unitsAtOnce, text.size());
    while (position < blockEnd) {
      const std::size_t start = position;
      const char32_t code = nextCodePoint(text, position);
      if (!isXmlCharacter(code) || (isVersion11 && isRestricted(code))) return start;
    }
  }
  return text.size();
}

bool isNumericReference(std::u16string_view reference, bool isVersion11) noexcept {
  std::u16string_view digits = reference.substr(2, reference.size() - 3);
  const bool hex = digits.starts_with(u'x');
  if (hex) digits.remove_prefix(1);
  char32_t code = 0;
  for (const char16_t unit : digits) {
    const auto lower = static_cast<char16_t>(unit | 0x20);
    if (unit >= u'0' && unit <= u'9') {
      code = code * (hex ? 16 : 10) + (unit - u'0');
    } else if (hex && lower >= u'a' && lower <= u'f') {
      code = code * 16 + (lower - u'a' + 10u);
    } else {
      return false;
    }
    if (code > 0x10FFFF) return false;
  }
  return !digits.empty() && (isXmlCharacter(code) || (isVersion11 && code > 0 && code < 0x20));
}

}  // namespace kpx::detail
