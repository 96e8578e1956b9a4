#pragma once

#include <string_view>

#include "kpx/text/CString.h"

namespace kpx::detail {

/// The text on one line: a blank for each line break, of whatever kind.
CString withoutLineBreaks(std::u16string_view text);

/// The text as a terminal can show it without taking a part of it for a command: U+FFFD for what
/// steers it, line feeds excepted, and for lone surrogates.
CString terminalText(std::u16string_view text);

}  // namespace kpx::detail
