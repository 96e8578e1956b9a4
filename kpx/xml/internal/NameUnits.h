#pragma once

#include <array>
#include <cstddef>
#include <string_view>

#include "kpx/text/CaseFold.h"
#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {

/// The units below "a" that a writable name cannot have: all that is white space, delimits or
/// quotes in markup, and control characters.
inline constexpr auto unwritableUnits = [] {
  std::array<bool, u'a'> units{};
  for (char16_t unit = 0; unit <= u' '; ++unit) units[unit] = true;
  for (const char16_t unit : {u'"', u'&', u'\'', u'/', u'<', u'=', u'>', u'[', u']'}) {
    units[unit] = true;
  }
  return units;
}();

/// Whether a name of an element or attribute can be written so that it is read back as one name
/// and taken for no other markup.
constexpr bool isWritableName(std::u16string_view name) noexcept {
  if (name.empty() || !isNameStart(name.front())) return false;
  for (const char16_t unit : name) {
    if (unit < unwritableUnits.size() && unwritableUnits[unit]) return false;
  }
  return true;
}

/// The name of a start tag, given from its "<" on.
constexpr std::u16string_view tagNameOf(std::u16string_view tag) noexcept {
  std::size_t end = 1;
  while (end < tag.size() && !endsName(tag[end])) ++end;
  return tag.substr(1, end - 1);
}

/// Whether a start tag, given from its "<" on, has this name.
inline bool hasTagName(std::u16string_view tag, std::u16string_view name,
                       bool ignoreCase) noexcept {
  if (tag.size() < name.size() + 2 || !endsName(tag[name.size() + 1])) return false;
  const std::u16string_view written = tag.substr(1, name.size());
  return ignoreCase ? compareTextNoCase(written, name) == 0 : written == name;
}

}  // namespace kpx::detail
