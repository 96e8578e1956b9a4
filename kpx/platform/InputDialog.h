#pragma once

#include <cstdint>
#include <optional>

#include "kpx/platform/WindowHandle.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// What an input dialog shows. The initialisers let a caller name only the members it sets.
struct InputDialogRequest {
  CString caption = {};
  CString prompt = {};             // above the line; it may have several lines
  CString initialText = {};        // stands in the line, selected
  std::int32_t maximumLength = 0;  // of the answer in UTF-16 units; 0 and less: no limit
  CString okText = {};             // of the buttons; empty: the system's own words, else "OK"
  CString cancelText = {};         // and "Abbrechen"
  WindowHandle owner = nullptr;    // takes no input while the dialog is there; nullptr: none
};

/// Asks the user and answers the text, or nothing when the user cancelled. It may throw.
using InputDialogHandler = std::optional<CString> (*)(const InputDialogRequest& request);

/// Asks the user for one line of text, through the handler of the host. Without one it is a window
/// on Windows, where Esc and closing it cancel. Elsewhere the question goes to standard error and
/// the answer is one line of standard input, when a person is at both; an empty line takes the
/// initial text, the end of input cancels.
///
/// Nothing when the user cancelled or cannot be asked, which is not the same as an empty text.
/// Line breaks, as in pasted text, become blanks in the initial text and in the answer, whoever
/// gives it, and what is longer than the limit is cut.
KPX_API std::optional<CString> showInputDialog(const InputDialogRequest& request);

/// Registers the host's handler; nullptr for the default. Answers the one before.
KPX_API InputDialogHandler setInputDialogHandler(InputDialogHandler handler) noexcept;

namespace detail {
/// What happens without a handler.
std::optional<CString> systemInputDialog(const InputDialogRequest& request);
}  // namespace detail

}  // namespace kpx
