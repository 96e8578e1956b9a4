#include "kpx/xml/internal/Escape.h"

#include "kpx/text/Utf.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/UnitScan.h"
#include "kpx/xml/internal/XmlCharacters.h"

namespace kpx::detail {

namespace {

constexpr bool isLetter(char16_t unit) noexcept {
  return (unit >= u'a' && unit <= u'z') || (unit >= u'A' && unit <= u'Z');
}
constexpr bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }

constexpr bool beginsReferenceName(char16_t unit) noexcept {
  return isLetter(unit) || unit == u'#' || unit == u':' || unit == u'_' || unit > 0x7F;
}
constexpr bool continuesReferenceName(char16_t unit) noexcept {
  return isLetter(unit) || isDigit(unit) || unit == u'-' || unit == u'.' || unit == u':' ||
         unit == u'_' || unit > 0x7F;
}

std::u16string_view referenceFor(char16_t unit) noexcept {
  switch (unit) {
    case u'&':
      return u"&amp;";
    case u'<':
      return u"&lt;";
    case u'>':
      return u"&gt;";
    case u'"':
      return u"&quot;";
    default:
      return u"&apos;";
  }
}

template <class Visit>
void visitSpecials(std::u16string_view text, int flags, Visit visit) {
  const char16_t* const begin = text.data();
  const char16_t* const end = begin + text.size();
  if (flags & MarkupFlag::attributeValue) {
    visitUnits(
        begin, end, [](UnitBlock block) { return block.attributeSpecials(); }, visit);
  } else {
    visitUnits(
        begin, end, [](UnitBlock block) { return block.dataSpecials(); }, visit);
  }
}

// A reference that was read: its code point, and the units that it takes (0: it is none).
struct Reference {
  char32_t code = 0;
  std::size_t length = 0;
};

Reference readNumeric(std::u16string_view text) noexcept {
  std::size_t position = 2;
  const bool hex = position < text.size() && text[position] == u'x';
  if (hex) ++position;
  const std::size_t firstDigit = position;
  char32_t code = 0;
  for (; position < text.size() && text[position] != u';'; ++position) {
    const char16_t unit = text[position];
    const auto lower = static_cast<char16_t>(unit | 0x20);
    char32_t digit;
    if (isDigit(unit)) {
      digit = static_cast<char32_t>(unit - u'0');
    } else if (hex && lower >= u'a' && lower <= u'f') {
      digit = static_cast<char32_t>(lower - u'a' + 10);
    } else {
      return {};
    }
    code = code * (hex ? 16 : 10) + digit;
    if (code > 0x10FFFF) return {};
  }
  if (position == text.size() || position == firstDigit || !isXmlCharacter(code)) return {};
  return {code, position + 1};
}

Reference readReference(std::u16string_view text) noexcept {
  if (text.size() < 4) return {};
  switch (text[1]) {
    case u'#':
      return readNumeric(text);
    case u'l':
      return text.starts_with(u"&lt;") ? Reference{u'<', 4} : Reference{};
    case u'g':
      return text.starts_with(u"&gt;") ? Reference{u'>', 4} : Reference{};
    case u'q':
      return text.starts_with(u"&quot;") ? Reference{u'"', 6} : Reference{};
    case u'a':
      if (text.starts_with(u"&amp;")) return {u'&', 5};
      return text.starts_with(u"&apos;") ? Reference{u'\'', 6} : Reference{};
    default:
      return {};
  }
}

}  // namespace

std::size_t referenceLength(std::u16string_view text) noexcept {
  if (text.size() < 3 || text[0] != u'&' || !beginsReferenceName(text[1])) return 0;
  std::size_t position = 2;
  while (position < text.size() && continuesReferenceName(text[position])) ++position;
  return position < text.size() && text[position] == u';' ? position + 1 : 0;
}

bool needsEscape(std::u16string_view text, int flags) noexcept {
  const char16_t* const end = text.data() + text.size();
  bool found = false;
  visitSpecials(text, flags, [&](const char16_t* special) {
    if (*special == u'&' && (flags & MarkupFlag::withReferences)) {
      const std::size_t length =
          referenceLength({special, static_cast<std::size_t>(end - special)});
      if (length != 0) return special + length;
    }
    found = true;
    return end;
  });
  return found;
}

void escapeInto(std::u16string& out, std::u16string_view text, int flags) {
  const char16_t* run = text.data();
  const char16_t* const end = run + text.size();
  visitSpecials(text, flags, [&](const char16_t* special) {
    if (*special == u'&' && (flags & MarkupFlag::withReferences)) {
      const std::size_t length =
          referenceLength({special, static_cast<std::size_t>(end - special)});
      if (length != 0) return special + length;
    }
    out.append(run, special);
    out.append(referenceFor(*special));
    run = special + 1;
    return run;
  });
  out.append(run, end);
}

void unescapeInto(std::u16string& out, std::u16string_view text) {
  const char16_t* run = text.data();
  const char16_t* const end = run + text.size();
  visitUnits(
      run, end, [](UnitBlock block) { return block.equal('&'); },
      [&](const char16_t* ampersand) {
        const Reference reference =
            readReference({ampersand, static_cast<std::size_t>(end - ampersand)});
        if (reference.length == 0) return ampersand + 1;
        out.append(run, ampersand);
        if (reference.code < 0x10000) {
          out.push_back(static_cast<char16_t>(reference.code));
        } else {
          appendCodePoint(out, reference.code);
        }
        run = ampersand + reference.length;
        return run;
      });
  out.append(run, end);
}

void appendCDataSection(std::u16string& out, std::u16string_view text) {
  out.append(u"<![CDATA[");
  std::size_t run = 0;
  for (std::size_t found; (found = text.find(u"]]>", run)) != text.npos;) {
    out.append(text.substr(run, found + 2 - run)).append(u"]]><![CDATA[");
    run = found + 2;
  }
  out.append(text.substr(run)).append(u"]]>");
}

}  // namespace kpx::detail
