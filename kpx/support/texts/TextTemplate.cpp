#include "kpx/support/texts/TextTemplate.h"

#include "kpx/support/texts/TextStore.h"
#include "kpx/text/PrintDirective.h"

namespace kpx {
namespace {

PlaceholderKind kindOf(char conversion) noexcept {
  switch (conversion) {
    case 'd':
    case 'i':
    case 'u':
    case 'o':
    case 'x':
    case 'X':
      return PlaceholderKind::integer;
    case 's':
    case 'S':
      return PlaceholderKind::text;
    case 'c':
    case 'C':
      return PlaceholderKind::character;
    case 'p':
      return PlaceholderKind::address;
    default:
      return PlaceholderKind::real;
  }
}

bool takesSame(const Placeholder& one, const Placeholder& other) noexcept {
  return one.kind == other.kind && one.widthIsArgument == other.widthIsArgument &&
         one.precisionIsArgument == other.precisionIsArgument && one.isShort == other.isShort;
}

}  // namespace

Placeholder nextPlaceholder(std::u16string_view text, std::size_t from) noexcept {
  const char16_t* const end = text.data() + text.size();
  for (std::size_t begin = text.find(u'%', from); begin != text.npos;) {
    const char16_t* at = text.data() + begin + 1;
    detail::PrintDirective directive;
    Placeholder found;
    found.begin = begin;
    if (!detail::readPrintDirective(at, end, directive)) {
      found.end = begin + 1;
      found.kind = PlaceholderKind::broken;
      return found;
    }
    found.end = static_cast<std::size_t>(at - text.data());
    found.widthIsArgument = directive.widthIsArgument;
    found.precisionIsArgument = directive.precisionIsArgument;
    found.hasBlank = directive.blank;
    if (directive.conversion != '%') {
      found.kind = kindOf(directive.conversion);
      found.isShort = found.kind == PlaceholderKind::integer &&
                      (directive.length == detail::LengthModifier::character ||
                       directive.length == detail::LengthModifier::shortWidth);
      return found;
    }
    // "%*%" takes a value all the same, and nobody means it.
    if (found.widthIsArgument || found.precisionIsArgument) {
      found.kind = PlaceholderKind::broken;
      return found;
    }
    begin = text.find(u'%', found.end);
  }
  return {};
}

bool takeSameValues(std::u16string_view one, std::u16string_view other) noexcept {
  Placeholder ofOne;
  Placeholder ofOther;
  do {
    ofOne = nextPlaceholder(one, ofOne.end);
    ofOther = nextPlaceholder(other, ofOther.end);
    if (!takesSame(ofOne, ofOther)) return false;
  } while (ofOne.kind != PlaceholderKind::none);
  return true;
}

std::u16string_view templateText(std::int32_t id, std::u16string_view german) noexcept {
  const std::u16string_view text = storedText(id);
  return !text.empty() && takeSameValues(text, german) ? text : german;
}

std::u16string_view templateText(std::int32_t id) noexcept {
  const std::u16string_view german = builtInText(id);
  return german.empty() ? storedText(id) : templateText(id, german);
}

}  // namespace kpx
