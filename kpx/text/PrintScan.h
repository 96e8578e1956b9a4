#pragma once

#include <cstdarg>
#include <cstddef>
#include <cstdio>
#include <string_view>
#include <type_traits>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/text/Formatter.h"
#include "kpx/text/ScanArgs.h"
#include "kpx/text/Scanner.h"

namespace kpx {

/// Printing and scanning that no setting of the user changes: the decimal sign is "." and the
/// same values give the same text on every platform. The grammar is described in Formatter.h
/// and Scanner.h. Narrow text is UTF-8. Wide text is UTF-16 or the platform's own, see TextArg;
/// where that has 32 bits, the numbers of units and the sizes of its buffers count these, while
/// widths in formats count UTF-16 units everywhere. Streams take wide text as UTF-8.
///
/// Printing answers the number of units written, without a terminating 0, or -1. The `_s`
/// members take the size of a buffer in units, the terminating 0 included; a text that does not
/// fit is cut and ended with 0, and the answer is -1. Those without `_s` trust the caller that
/// the buffer is large enough. A null pointer for a text, buffer or stream answers -1; a literal
/// one does not compile.

namespace detail {

/// A narrow text as an argument: a pointer, which may be null, or anything that is a text. A
/// literal null pointer is none.
class NarrowArg {
 public:
  NarrowArg(const char* text) noexcept {
    if (text != nullptr) view_ = text;
  }
  NarrowArg(std::nullptr_t) = delete;
  template <class Text>
  requires(std::is_convertible_v<const Text&, std::string_view> &&
           !std::is_convertible_v<const Text&, const char*>) NarrowArg(const Text& text)
  noexcept : view_(text) {
    if (view_.data() == nullptr) view_ = "";  // empty, but not null
  }
  /// The text; its pointer is null when a null pointer was given.
  std::string_view view() const noexcept { return view_; }

 private:
  std::string_view view_;
};

}  // namespace detail

// --- text to real ---------------------------------------------------------------------------
// White space is skipped, then the longest beginning counts that is a number: decimal or
// hexadecimal, inf, nan. 0 when there is none; beyond the range an infinity or 0.

KPX_API double kpxatof(detail::NarrowArg text) noexcept;
KPX_API double kpxwtof(const TextArg& text) noexcept;

/// `end`, unless null, receives where reading stopped: the beginning when there was no number.
KPX_API double kpxstrtod(const char* text, char** end) noexcept;
KPX_API double kpxwcstod(const char16_t* text, char16_t** end) noexcept;
KPX_API double kpxwcstod(const wchar_t* text, wchar_t** end) noexcept;

/// The number of characters of the text's own type before the terminating 0; 0 for a null pointer.
KPX_API std::size_t kpxstrlen(const char16_t* text) noexcept;
KPX_API std::size_t kpxstrlen(const wchar_t* text) noexcept;
KPX_API std::size_t kpxstrlen(const CString& text) noexcept;

// --- to standard output ---------------------------------------------------------------------

template <class... Args>
int kpxprintf(detail::NarrowArg format, const Args&... args) noexcept {
  return detail::formatToStream(stdout, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxprintf_s(detail::NarrowArg format, const Args&... args) noexcept {
  return detail::formatToStream(stdout, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxwprintf(const TextArg& format, const Args&... args) noexcept {
  return detail::formatToStream(stdout, format, FormatArgs{args...});
}
template <class... Args>
int kpxwprintf_s(const TextArg& format, const Args&... args) noexcept {
  return detail::formatToStream(stdout, format, FormatArgs{args...});
}

// --- to a stream ----------------------------------------------------------------------------

template <class... Args>
int kpxfprintf(std::FILE* stream, detail::NarrowArg format, const Args&... args) noexcept {
  return detail::formatToStream(stream, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxfprintf_s(std::FILE* stream, detail::NarrowArg format, const Args&... args) noexcept {
  return detail::formatToStream(stream, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxfwprintf(std::FILE* stream, const TextArg& format, const Args&... args) noexcept {
  return detail::formatToStream(stream, format, FormatArgs{args...});
}
template <class... Args>
int kpxfwprintf_s(std::FILE* stream, const TextArg& format, const Args&... args) noexcept {
  return detail::formatToStream(stream, format, FormatArgs{args...});
}

/// With an argument list of C, whose types the format has to tell truly: `%ld` reads a long of
/// the platform's compiler, `%s` and `%ls` read text of the characters that the format is made of,
/// `const char16_t*` or `const wchar_t*`, and `%S` and `%hs` read `const char*`.
/// `list` is left as the caller's own functions leave it: indeterminate.
KPX_API int kpxvfwprintf(std::FILE* stream, const TextArg& format, std::va_list list) noexcept;
KPX_API int kpxvfwprintf_s(std::FILE* stream, const TextArg& format, std::va_list list) noexcept;

// --- to a buffer ----------------------------------------------------------------------------

template <class... Args>
int kpxsprintf(char* buffer, detail::NarrowArg format, const Args&... args) noexcept {
  return detail::formatToBuffer(buffer, detail::unboundedBuffer, format.view(),
                                FormatArgs{args...});
}
template <class... Args>
int kpxsprintf_s(char* buffer, std::size_t size, detail::NarrowArg format,
                 const Args&... args) noexcept {
  return detail::formatToBuffer(buffer, size, format.view(), FormatArgs{args...});
}
/// `Unit` is char16_t or wchar_t, whatever the format is made of.
template <WideUnit Unit, class... Args>
int kpxswprintf(Unit* buffer, const TextArg& format, const Args&... args) noexcept {
  return detail::formatToBuffer(buffer, detail::unboundedBuffer, format, FormatArgs{args...});
}
template <WideUnit Unit, class... Args>
int kpxswprintf_s(Unit* buffer, std::size_t size, const TextArg& format,
                  const Args&... args) noexcept {
  return detail::formatToBuffer(buffer, size, format, FormatArgs{args...});
}

// --- from a text ----------------------------------------------------------------------------
// The targets are pointers to integers, reals, CStrings and text buffers. Answers how many were
// filled, or -1 when the text ended before the first conversion. In the `_s` members the size of
// each text buffer, in units, follows the buffer.

template <class... Targets>
int kpxsscanf(detail::NarrowArg text, detail::NarrowArg format, Targets... targets) noexcept {
  return detail::scanText(text.view(), format.view(), ScanArgs{targets...}, false);
}
template <class... Targets>
int kpxsscanf_s(detail::NarrowArg text, detail::NarrowArg format, Targets... targets) noexcept {
  return detail::scanText(text.view(), format.view(), ScanArgs{targets...}, true);
}
template <class... Targets>
int kpxswscanf(const TextArg& text, const TextArg& format, Targets... targets) noexcept {
  return detail::scanText(text, format, ScanArgs{targets...}, false);
}
template <class... Targets>
int kpxswscanf_s(const TextArg& text, const TextArg& format, Targets... targets) noexcept {
  return detail::scanText(text, format, ScanArgs{targets...}, true);
}

}  // namespace kpx
