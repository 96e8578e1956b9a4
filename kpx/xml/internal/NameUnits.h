#pragma once

#include <cstddef>
#include <string_view>

#include "kpx/text/CaseFold.h"
#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {

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
  return ignoreCase ? detail::compareTextNoCase(written, name) == 0 : written == name;
}

}  // namespace kpx::detail
