#pragma once

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Whether a person sees standard output, or standard error, as it is written, so that a progress
/// bar makes sense and characters can be commands; false for files, pipes and a closed one.
KPX_API bool outputIsTerminal() noexcept;
KPX_API bool errorOutputIsTerminal() noexcept;

/// Whether a terminal may take a character for more than a sign to be shown: control characters,
/// separators of lines and paragraphs, and what turns the direction of reading.
constexpr bool steersTerminal(char32_t code) noexcept {
  const bool isControl = code < 0x20 || (code >= 0x7F && code < 0xA0);
  const bool isSeparator = code == 0x2028 || code == 0x2029;
  const bool turns = code == 0x061C || code == 0x200E || code == 0x200F ||
                     (code >= 0x202A && code <= 0x202E) || (code >= 0x2066 && code <= 0x2069);
  return isControl || isSeparator || turns;
}

/// Writes to standard error, at once: to a terminal as it takes text, elsewhere as UTF-8. What
/// cannot be written is lost.
KPX_API void writeErrorOutput(const CString& text);

}  // namespace kpx
