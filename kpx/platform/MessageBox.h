#pragma once

#include <cstdint>

#include "kpx/platform/WindowHandle.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Styles and answers of message boxes, with the system's numbers.
namespace MessageBoxStyle {
inline constexpr std::int32_t ok = 0;
inline constexpr std::int32_t okCancel = 1;
inline constexpr std::int32_t abortRetryIgnore = 2;
inline constexpr std::int32_t yesNoCancel = 3;
inline constexpr std::int32_t yesNo = 4;
inline constexpr std::int32_t retryCancel = 5;
inline constexpr std::int32_t buttons = 0xF;  // the part of a style that says which buttons
inline constexpr std::int32_t error = 16;
inline constexpr std::int32_t information = 64;
}  // namespace MessageBoxStyle

namespace MessageBoxAnswer {
inline constexpr int none = 0;  // no box could be shown
inline constexpr int ok = 1;
inline constexpr int cancel = 2;
inline constexpr int abort = 3;
inline constexpr int no = 7;
}  // namespace MessageBoxAnswer

/// What a message box shows.
struct MessageBoxRequest {
  CString text;
  CString caption;
  std::int32_t style = MessageBoxStyle::ok;
  WindowHandle owner = nullptr;  // nullptr: none
};

/// Shows a box and answers the button that was pressed. It may throw.
using MessageBoxHandler = int (*)(const MessageBoxRequest& request);

/// Shows a message box through the handler of the host. Without one, on Windows the system's box;
/// elsewhere the text goes to standard error and the answer is the button that changes nothing.
KPX_API int showMessageBox(const MessageBoxRequest& request);

/// Registers the host's handler; nullptr for the default. Answers the one before.
KPX_API MessageBoxHandler setMessageBoxHandler(MessageBoxHandler handler) noexcept;

/// Sets the title of a window, in the same way: through the handler of the host, else on Windows
/// the system's function. False when there is nobody to do it.
using WindowTitleHandler = bool (*)(WindowHandle window, const CString& title);
KPX_API bool showWindowTitle(WindowHandle window, const CString& title);
KPX_API WindowTitleHandler setWindowTitleHandler(WindowTitleHandler handler) noexcept;

namespace detail {
/// What happens without a handler.
int systemMessageBox(const MessageBoxRequest& request);
bool systemWindowTitle(WindowHandle window, const CString& title);
}  // namespace detail

}  // namespace kpx
