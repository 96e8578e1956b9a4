#pragma once

#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/ScanArgs.h"
#include "kpx/text/TextArg.h"

namespace kpx {

/// The scanner behind the scan family of PrintScan.h: the grammar of scanf, with "." as decimal
/// sign and no locale.
///
/// Assignment suppression `*`, widths, the length modifiers of the formatter, the conversions
/// d i u o x X f F e E g G a A c C s S p [ and %, sets with ranges and `^`.
/// - Targets are filled by the type they have, and length modifiers change nothing: an integer
///   beyond its target's range becomes the nearest limit (for `%u %o %x` a negative one is taken
///   modulo, as in C); a text goes to narrow (UTF-8), wide or CString targets whatever the
///   letter says.
/// - Reals are the longest beginning that is a number as strtod knows it.
/// - `%c` needs as many units as its width says, and writes no terminating 0.
/// - A conversion that is unknown, `%n`, a missing target, and one that does not fit the
///   conversion end the scan there.
namespace detail {

/// Answers how many targets were filled, or -1 when the text ended before the first conversion.
/// With `sized`, each text buffer is followed by its size in units; a text that does not fit
/// leaves the buffer empty and ends the scan. Never throws.
KPX_API int scanText(const TextArg& text, const TextArg& format, const ScanArgs& args,
                     bool sized) noexcept;
KPX_API int scanText(std::string_view text, std::string_view format, const ScanArgs& args,
                     bool sized) noexcept;

}  // namespace detail
}  // namespace kpx
