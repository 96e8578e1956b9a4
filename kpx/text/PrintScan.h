#pragma once

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
/// and Scanner.h. Narrow text is UTF-8, wide text is UTF-16; streams take wide text as UTF-8.
///
/// Printing answers the number of units written, without a terminating 0, or -1. The `_s`
/// members take the size of a buffer in units, the terminating 0 included; a text that does not
/// fit is cut and ended with 0, and the answer is -1. Those without `_s` trust the caller that
/// the buffer is large enough. A null pointer for a text, buffer or stream answers -1.

namespace detail {

/// A text argument: a pointer, which may be null, or anything that is a text.
template <class CharT>
class TextArgument {
 public:
  TextArgument(const CharT* text) noexcept {
    if (text != nullptr) view_ = text;
  }
  template <class Text>
  requires(std::is_convertible_v<const Text&, std::basic_string_view<CharT>> &&
           !std::is_convertible_v<const Text&, const CharT*>) TextArgument(const Text& text)
  noexcept : view_(text) {
    static constexpr CharT empty{};
    // Empty, but not null. NOLINTNEXTLINE(bugprone-string-constructor)
    if (view_.data() == nullptr) view_ = {&empty, 0};
  }
  /// The text; its pointer is null when a null pointer was given.
  std::basic_string_view<CharT> view() const noexcept { return view_; }

 private:
  std::basic_string_view<CharT> view_;
};

using NarrowArgument = TextArgument<char>;
using WideArgument = TextArgument<char16_t>;

}  // namespace detail

// --- text to real ---------------------------------------------------------------------------
// White space is skipped, then the longest beginning counts that is a number: decimal or
// hexadecimal, inf, nan. 0 when there is none; beyond the range an infinity or 0.

KPX_API double kpxatof(detail::NarrowArgument text) noexcept;
KPX_API double kpxwtof(detail::WideArgument text) noexcept;

/// `end`, unless null, receives where reading stopped: the beginning when there was no number.
KPX_API double kpxstrtod(const char* text, char** end) noexcept;
KPX_API double kpxwcstod(const char16_t* text, char16_t** end) noexcept;

/// The number of units before the terminating 0; 0 for a null pointer.
KPX_API std::size_t kpxstrlen(const char16_t* text) noexcept;

// --- to standard output ---------------------------------------------------------------------

template <class... Args>
int kpxprintf(detail::NarrowArgument format, const Args&... args) noexcept {
  return detail::formatToStream(stdout, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxprintf_s(detail::NarrowArgument format, const Args&... args) noexcept {
  return detail::formatToStream(stdout, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxwprintf(detail::WideArgument format, const Args&... args) noexcept {
  return detail::formatToStream(stdout, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxwprintf_s(detail::WideArgument format, const Args&... args) noexcept {
  return detail::formatToStream(stdout, format.view(), FormatArgs{args...});
}

// --- to a stream ----------------------------------------------------------------------------

template <class... Args>
int kpxfprintf(std::FILE* stream, detail::NarrowArgument format, const Args&... args) noexcept {
  return detail::formatToStream(stream, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxfprintf_s(std::FILE* stream, detail::NarrowArgument format, const Args&... args) noexcept {
  return detail::formatToStream(stream, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxfwprintf(std::FILE* stream, detail::WideArgument format, const Args&... args) noexcept {
  return detail::formatToStream(stream, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxfwprintf_s(std::FILE* stream, detail::WideArgument format, const Args&... args) noexcept {
  return detail::formatToStream(stream, format.view(), FormatArgs{args...});
}

/// With an argument list of C, whose types the format has to tell truly: `%ld` reads a long of
/// the platform's compiler, `%s` reads `const char16_t*`, `%S` and `%hs` read `const char*`.
/// `list` is left as the caller's own functions leave it: indeterminate.
KPX_API int kpxvfwprintf(std::FILE* stream, detail::WideArgument format,
                         std::va_list list) noexcept;
KPX_API int kpxvfwprintf_s(std::FILE* stream, detail::WideArgument format,
                           std::va_list list) noexcept;

// --- to a buffer ----------------------------------------------------------------------------

template <class... Args>
int kpxsprintf(char* buffer, detail::NarrowArgument format, const Args&... args) noexcept {
  return detail::formatToBuffer(buffer, detail::unboundedBuffer, format.view(),
                                FormatArgs{args...});
}
template <class... Args>
int kpxsprintf_s(char* buffer, std::size_t size, detail::NarrowArgument format,
                 const Args&... args) noexcept {
  return detail::formatToBuffer(buffer, size, format.view(), FormatArgs{args...});
}
template <class... Args>
int kpxswprintf(char16_t* buffer, detail::WideArgument format, const Args&... args) noexcept {
  return detail::formatToBuffer(buffer, detail::unboundedBuffer, format.view(),
                                FormatArgs{args...});
}
template <class... Args>
int kpxswprintf_s(char16_t* buffer, std::size_t size, detail::WideArgument format,
                  const Args&... args) noexcept {
  return detail::formatToBuffer(buffer, size, format.view(), FormatArgs{args...});
}

// --- from a text ----------------------------------------------------------------------------
// The targets are pointers to integers, reals, CStrings and text buffers. Answers how many were
// filled, or -1 when the text ended before the first conversion. In the `_s` members the size of
// each text buffer, in units, follows the buffer.

template <class... Targets>
int kpxsscanf(detail::NarrowArgument text, detail::NarrowArgument format,
              Targets... targets) noexcept {
  return detail::scanText(text.view(), format.view(), ScanArgs{targets...}, false);
}
template <class... Targets>
int kpxsscanf_s(detail::NarrowArgument text, detail::NarrowArgument format,
                Targets... targets) noexcept {
  return detail::scanText(text.view(), format.view(), ScanArgs{targets...}, true);
}
template <class... Targets>
int kpxswscanf(detail::WideArgument text, detail::WideArgument format,
               Targets... targets) noexcept {
  return detail::scanText(text.view(), format.view(), ScanArgs{targets...}, false);
}
template <class... Targets>
int kpxswscanf_s(detail::WideArgument text, detail::WideArgument format,
                 Targets... targets) noexcept {
  return detail::scanText(text.view(), format.view(), ScanArgs{targets...}, true);
}

}  // namespace kpx
