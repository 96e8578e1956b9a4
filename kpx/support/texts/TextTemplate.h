#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "kpx/report/Export.h"

namespace kpx {

// Many texts are templates of the print family, such as "In %s ist ein Fehler aufgetreten." A
// translation whose placeholders take other values would print nothing, or the wrong thing, so
// such a translation is not used for formatting.

enum class PlaceholderKind : std::uint8_t {
  none,       // there is no further placeholder
  integer,    // d i u o x X
  real,       // f e g a
  text,       // s
  character,  // c
  address,    // p
  broken,     // a percent sign that begins no conversion; formatting refuses the whole text
};

/// A placeholder of a template and the values that it takes.
struct Placeholder {
  std::size_t begin = 0;  // of the percent sign
  std::size_t end = 0;    // behind the placeholder
  PlaceholderKind kind = PlaceholderKind::none;
  bool widthIsArgument = false;
  bool precisionIsArgument = false;
  bool isShort = false;   // takes only the low bits of an integer
  bool hasBlank = false;  // a blank among the flags: mostly "100 % of", which is no template
};

/// The first placeholder from an offset on; `%%` is none.
KPX_API Placeholder nextPlaceholder(std::u16string_view text, std::size_t from = 0) noexcept;

/// Whether two templates take the same values in the same order. Widths, precisions and the way a
/// number is written may differ, since a translation may need others.
KPX_API bool takeSameValues(std::u16string_view one, std::u16string_view other) noexcept;

/// The text of an id for formatting: the store's, if it takes the values that the German one
/// takes, else the German one. Valid until the text of the id is replaced.
KPX_API std::u16string_view templateText(std::int32_t id, std::u16string_view german) noexcept;
/// The same with the built-in German text. Without one there is nothing to compare with: then it is
/// the store's.
KPX_API std::u16string_view templateText(std::int32_t id) noexcept;

}  // namespace kpx
