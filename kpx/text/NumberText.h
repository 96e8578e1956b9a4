#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Numbers as texts and back, in the one form that all files and settings use: the same value
/// gives the same text on every platform, compiler and locale.

/// The text of an undefined number, and the number that stands for it.
inline constexpr std::u16string_view undefinedNumberText = u"---";
inline constexpr double undefinedNumber = 8888.88888;

/// Values for the `decimals` of a text.
inline constexpr int allDigits = -1;         // 15 significant digits
inline constexpr int scientificDigits = -2;  // d.dddddddddddddddde+xx

/// Rounds half away from zero to `decimals` places; negative ones round to tens, hundreds and so
/// on. The addend is a hair above one half, so that 2.675 gives 2.68 with two places. A value
/// that rounds to zero gives +0. A value whose scaled form exceeds the range of a double is
/// returned as it is. Never fails.
KPX_API double kpxRunde(double value, int decimals) noexcept;

/// The text of a real.
/// - `decimals` from 0 up: rounded with `kpxRunde`, that many decimals. NaN, infinities and
///   magnitudes above 1e50 give "---".
/// - -1, all digits: up to 15 significant digits without trailing zeros. The point always stays
///   (1000 is "1000.") unless all 15 digits stand before it; below 0.1 and from 1e15 on it is
///   an exponential form with at least three exponent digits (0.02 is "2.e-002"). Stored files
///   carry this form.
/// - -2, scientific: 16 decimals, at least two exponent digits. With -1 and -2 what is not finite
///   gives nan, inf or -inf.
/// - below -2: rounded with `kpxRunde`, six decimals.
///
/// `separator` "," replaces the point; any other leaves it. More than 65535 decimals, and memory
/// that is not there, report error 910001 and give the empty text; nothing is thrown.
KPX_API CString utlDoubleAsText(double value, int decimals, char16_t separator);

/// The decimal text of an integer. A failure is reported as 910551 and gives the empty text.
KPX_API CString utlLongAsText(std::int32_t value);

/// The integer at the beginning of a text: white space, a sign, decimal digits. 0 when there is
/// none; beyond 32 bits the nearest limit.
KPX_API std::int32_t utlTextAsLong(const CString& text) noexcept;

/// The real at the beginning of a text, as `kpxwtof` reads it, with the first "," read as ".".
/// "---" and what lies within 1e-8 of it give 8888.88888; 0 when there is no number.
KPX_API double utlTextAsDouble(const CString& text) noexcept;

/// The same with `separator` as decimal sign: its first occurrence is read as ",". A failure is
/// reported as 910552 and gives 0.
KPX_API double utlTextAsDoubleDecimal(const CString& text, char16_t separator);

namespace detail {

/// `utlDoubleAsText` for those who have to know of a failure: it is reported, too, and thrown. The
/// second writes into a text that exists, whose memory is used again; after a failure it is as it
/// was.
CString doubleAsText(double value, int decimals, char16_t separator);
void doubleAsTextInto(CString& out, double value, int decimals, char16_t separator);
/// `utlLongAsText` with std::bad_alloc thrown, not reported.
CString longAsText(std::int32_t value);
void longAsTextInto(CString& out, std::int32_t value);
/// `utlTextAsLong` and `utlTextAsDouble` of a part of a text.
std::int32_t textAsLong(std::u16string_view text) noexcept;
double textAsDouble(std::u16string_view text) noexcept;

}  // namespace detail
}  // namespace kpx
