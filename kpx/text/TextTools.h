#pragma once

#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

// --- wildcards ------------------------------------------------------------------------------

/// 1 when the text holds a wildcard, "*" or "?"; else 0.
KPX_API int kpxHasWildcard(const CString& text) noexcept;

/// 1 when the whole text matches the pattern, else 0. "*" stands for any units, none included,
/// "?" for exactly one UTF-16 unit; everything else for itself, with case. There is no way to
/// take a wildcard literally.
///
/// The time grows with the length of the text plus that of the pattern, whatever they hold; only a
/// piece between two "*" that has a "?" costs a step per unit of the text for each 64 units of its
/// own that have begun. Error number 910556.
KPX_API int kpxMatchWildcardString(const CString& text, const CString& pattern);

// --- encodings ------------------------------------------------------------------------------

/// Escapes the text in place for a place in an RTF file: a backslash before backslash and braces,
/// and \uN? for units above 127, where N is the unit as a signed 16-bit number and "?" what
/// readers without Unicode show. Control characters and line breaks stay as they are. A failure
/// is reported as 910557 and leaves the text as it was.
KPX_API void kpxRtfEncode(CString& text);

/// Turns the text in place into its UTF-8 bytes, one unit (0 to 255) for each byte, for ways that
/// carry bytes in texts. A lone surrogate becomes the three bytes of its code. A failure is
/// reported as 910558 and leaves the text as it was.
KPX_API void kpxUTF8Encode(CString& text);

/// The text of UTF-8 bytes: `length` of them, or up to the first 0. Each byte that is part of no
/// valid sequence becomes U+FFFD. A null pointer or a negative length gives the empty text, and so
/// does a failure, which is reported as 910559.
KPX_API CString UTF8to16(const char* bytes, int length);
KPX_API CString UTF8to16(const char* text);

/// `text` with each occurrence of `from` replaced by `to`, from left to right; what is inserted is
/// not searched again. An empty `from` changes nothing. A failure is reported as 910560 and gives
/// the empty text.
KPX_API CString kpxChangeFormat(const CString& text, const CString& from, const CString& to);

/// Both slashes separate the names of a path, on every system.
constexpr bool isPathSeparator(char16_t unit) noexcept { return unit == u'/' || unit == u'\\'; }

namespace detail {

// --- blanks and paths -----------------------------------------------------------------------

/// The text without the blanks (U+0020 only) at its beginning, its end, or both.
std::u16string_view withoutLeadingBlanks(std::u16string_view text) noexcept;
std::u16string_view withoutTrailingBlanks(std::u16string_view text) noexcept;
std::u16string_view withoutBlanks(std::u16string_view text) noexcept;

/// Folder and file name with exactly one separator between them, whatever stood there: the kind
/// that the folder uses already, else the system's own. When one of the two is empty, the other
/// as it is, so that a missing folder never turns a name into one at the root.
CString joinPath(std::u16string_view folder, std::u16string_view file);

/// The rest of a path behind a folder that it begins with, without separators in front; the path
/// as it is when it does not lie there or the folder is empty. Names compare without case by the
/// library's own table and both separators are alike. The folder itself gives the empty text.
CString pathBelow(std::u16string_view path, std::u16string_view folder);

}  // namespace detail
}  // namespace kpx
