#pragma once

// The system's window, by the name that its own header gives it.
struct HWND__;  // NOLINT(bugprone-reserved-identifier)

namespace kpx {

/// A window as the system counts it; only stored and handed on. The type is the system's HWND.
using WindowHandle = ::HWND__*;

}  // namespace kpx
