#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/settings/engine/SettingDef.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Why a text is no value of a kind.
enum class ValueProblem : std::uint8_t {
  none,
  empty,          // nothing to read
  thousandsMark,  // "1.234,56": would silently read as another number
  notInteger,     // no integer, or something behind it
  notFlag,        // neither 0 nor 1
  notReal,        // no finite real number, or something behind it
  outOfRange,     // beyond 32 bits, or a real that is written as "---"
  notStorable,    // a text with characters that XML cannot carry
};

/// What the accessors would make of a text.
struct ValueCheck {
  ValueProblem problem = ValueProblem::none;
  CString normal;  // the text as the setter would store it, when there is no problem

  bool valid() const noexcept { return problem == ValueProblem::none; }
};

/// Whether the whole text reads as a value of the kind, so that a getter answers what the text
/// says: "12abc" would read as 12 and is refused. Blanks before a number are allowed, as readers
/// skip them; a real may have a decimal comma, as readers take both. `decimals` as the setter
/// writes a real, see `SettingDef::decimals`.
KPX_API ValueCheck checkValueText(ValueKind kind, std::u16string_view text, int decimals = -1);

/// A problem as the end of a sentence: "is not a whole number".
KPX_API const char* describe(ValueProblem problem) noexcept;

}  // namespace kpx
