#pragma once

#include <cstddef>
#include <string>
#include <string_view>

namespace kpx::detail {

/// Whether `escapeInto` with these flags would change anything in the text.
bool needsEscape(std::u16string_view text, int flags) noexcept;

/// Appends the text with "&", "<" and ">" as references; with `MarkupFlag::attributeValue` both
/// quotes too. With `MarkupFlag::withReferences` an "&" that begins a well-formed reference is
/// copied as it is. `text` must not be a part of `out`.
void escapeInto(std::u16string& out, std::u16string_view text, int flags);

/// Appends the text with the five named references and the numeric ones, decimal and
/// hexadecimal, resolved. Whatever else begins with "&" stays as it stands there: unknown names,
/// unfinished references, and numbers that are no character of XML. `text` must not be a part of
/// `out`.
void unescapeInto(std::u16string& out, std::u16string_view text);

/// The length of the reference ("&name;", "&#10;") that the text begins with, by the generous
/// rule that `MarkupFlag::withReferences` uses; 0 if it begins with none.
std::size_t referenceLength(std::u16string_view text) noexcept;

/// Appends the text as a CDATA section; each "]]>" in it is divided between two sections.
void appendCDataSection(std::u16string& out, std::u16string_view text);

}  // namespace kpx::detail
