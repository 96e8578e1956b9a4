#pragma once

#include <chrono>
#include <concepts>
#include <cstdint>

#include "kpx/report/Error.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/text/FormatArgs.h"
#include "kpx/text/TextArg.h"

namespace kpx {

// What becomes of a report. `kpxError` (kpx/report/Error.h) shows a message box when the switch
// "ErrorMessage" is on, and appends one line to the file Error.log of the system folder and to the
// one of the current project's folder:
//
//     Projekt: name    Job: name    Fehler: 42905     Datum / Zeit: DD.MM.YYYY / hh:mm:ss    User:
//     name (computer, 16384 MB)
//
// as one line of UTF-8. Line breaks and other control characters in names become blanks. Without
// a folder the file is "\Error.log" at the root. A log that cannot be opened, or that other
// programs keep locked for longer than `logPatience`, is skipped without a word. When memory runs
// out the line is made on the stack: names are cut after 100 characters then, and the computer's
// name is missing.

/// Logs a free text as `kpxError` logs a number, without a message box. Never throws. A report that
/// arises on a thread while that thread is reporting another one is dropped and counted.
KPX_API void kpxErrorText(const CString& text) noexcept;

/// The longest time that one report waits for logs that other programs are writing; 250 ms unless
/// it is set. Setting answers the time before.
KPX_API std::chrono::milliseconds logPatience() noexcept;
KPX_API std::chrono::milliseconds setLogPatience(std::chrono::milliseconds patience) noexcept;

/// Shows that a socket or the system failed: "text (Fehler:code)" and the system's own text for the
/// code, with the information icon. Error number 910303.
KPX_API void kpxShowSoccetErrorMessage(const CString& text, std::int32_t code);
/// For codes of the system's other types, such as long and DWORD: their low 32 bits.
template <std::integral Code>
void kpxShowSoccetErrorMessage(const CString& text, Code code) {
  kpxShowSoccetErrorMessage(text, static_cast<std::int32_t>(code));
}

/// Shows the text of a failure of the system with the error icon; with a code, in the form above.
/// Error number 910304.
KPX_API void kpxShowSystemErrorMessage(const CString& text);
KPX_API void kpxShowSystemErrorMessage(const CString& text, std::int32_t code);

namespace detail {
KPX_API int messageBox(std::int32_t style, const TextArg& format, const FormatArgs& args);
}

/// Formats a text (see CString::Format) and shows it in a message box with the application's name
/// as caption. `style` has the system's numbers, see MessageBoxStyle. Answers the button that was
/// pressed; 0 when no box could be shown. A format that cannot be carried out is shown as it is.
/// Error number 910302.
template <class... Args>
int utlMessageBox(std::int32_t style, const TextArg& format, const Args&... args) {
  return detail::messageBox(style, format, FormatArgs{args...});
}

}  // namespace kpx
