#pragma once

#include <cstddef>
#include <string_view>

namespace kpx::detail {

/// The rules of XML 1.0 (fifth edition) for single characters and names, stricter than what the
/// engine itself reads.
bool isXmlName(std::u16string_view name) noexcept;

/// The offset of the first unit from `from` on that is part of no character of XML: a control
/// character, a lone surrogate, U+FFFE or U+FFFF; the size if there is none.
std::size_t findForbiddenCharacter(std::u16string_view text, std::size_t from) noexcept;

/// Whether a numeric reference, given from "&#" through ";", names a character of XML.
bool isNumericReference(std::u16string_view reference) noexcept;

}  // namespace kpx::detail
