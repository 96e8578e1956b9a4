#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/FormatArgs.h"
#include "kpx/text/TextArg.h"

namespace kpx {

/// The formatter behind `CString::Format` and the print family of PrintScan.h: the grammar of
/// printf, with "." as decimal sign, no locale, and the same text for the same values on every
/// platform.
///
/// Flags `-+ #0`, width and precision with `*`, the length modifiers hh h l ll j z t L (also w,
/// I, I32, I64), the conversions d i u o x X f F e E g G a A c C s S p and %.
/// - Values are converted by the type they are given with. Of the modifiers only hh and h
///   change a number: they narrow it, as in C. Text may be narrow (UTF-8) or wide whatever the
///   letter says; the letters count where the type is not known, in argument lists of C.
/// - The width and precision of text count units of the result, UTF-16 ones in wide formats; a
///   character is never split by a precision when text is transcoded.
/// - Integers fit the conversions of reals, addresses of text fit `%p`. Everything else that
///   does not fit, an argument that is missing, an unknown conversion, and `%n` refuse the
///   whole format. Arguments too many are ignored.
/// - A null text prints as "(null)". `%p` prints all digits of an address in upper case.

/// The largest width, and the largest precision of a number; larger ones refuse the format.
inline constexpr int largestFormatWidth = 65535;

namespace detail {

inline constexpr std::size_t unboundedBuffer = static_cast<std::size_t>(-1);

/// Appends to `text` and answers how many units that were; -1 when the format is refused, and
/// then `text` is as it was. Arguments may be parts of `text`.
KPX_API int appendFormatted(std::u16string& text, std::u16string_view format,
                            const FormatArgs& args);
KPX_API int appendFormatted(std::string& text, std::string_view format, const FormatArgs& args);

/// Writes to a buffer of `size` units, the terminating 0 included, and answers the count without
/// it. A text that does not fit is cut, ended, and answered with -1. A refused format answers -1
/// and leaves the buffer as it was. Never throws.
KPX_API int formatToBuffer(char16_t* buffer, std::size_t size, const TextArg& format,
                           const FormatArgs& args) noexcept;
KPX_API int formatToBuffer(wchar_t* buffer, std::size_t size, const TextArg& format,
                           const FormatArgs& args) noexcept;
KPX_API int formatToBuffer(char* buffer, std::size_t size, std::string_view format,
                           const FormatArgs& args) noexcept;

/// Writes to a stream, wide text as UTF-8, and answers the count of units of the format's kind;
/// -1 when the format is refused, and then nothing is written, or when writing fails. Never
/// throws.
KPX_API int formatToStream(std::FILE* stream, const TextArg& format,
                           const FormatArgs& args) noexcept;
KPX_API int formatToStream(std::FILE* stream, std::string_view format,
                           const FormatArgs& args) noexcept;

/// The arguments of a C function with an argument list, read with the types that the format
/// tells, as a compiler of the platform passes them. `%s` is text of the characters that the format
/// itself is made of, `char16_t` or `wchar_t`, and `%S` is `char` text.
class KPX_API VariableArguments {
 public:
  VariableArguments(const TextArg& format, std::va_list list);

  /// Up to the first thing in the format that is no conversion; the formatter stops there too.
  FormatArgs args() const noexcept { return FormatArgs(args_.data(), args_.size()); }

 private:
  std::vector<FormatArg> args_;
};

}  // namespace detail
}  // namespace kpx
