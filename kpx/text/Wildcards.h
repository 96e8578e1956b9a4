#pragma once

#include <string_view>

namespace kpx::detail {

/// Whether the whole text matches a pattern: "*" stands for any units, none included, "?" for
/// exactly one UTF-16 unit, everything else for itself, with case.
///
/// The time grows with the length of the text plus that of the pattern, whatever they hold; only a
/// piece between two "*" that has a "?" costs a step per unit of the text for each 64 units of its
/// own that have begun. Throws std::bad_alloc.
bool matchesWildcards(std::u16string_view text, std::u16string_view pattern);

}  // namespace kpx::detail
