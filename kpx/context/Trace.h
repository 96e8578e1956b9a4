#pragma once

#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/report/TraceScope.h"
#include "kpx/text/CString.h"
#include "kpx/text/FormatArgs.h"

namespace kpx {

// The trace of a process: a text file (UTF-8) that begins anew with each trace. Functions trace
// themselves with a TraceScope of kpx/report/TraceScope.h; such a scope writes
//
//     0.123 - Enter:    name
//     0.125 - Leave:    name
//
// with the seconds since the trace was opened and two blanks for each scope of its thread around
// it. Each line is in the file when the call returns. Nothing here throws.

/// The file that is opened when the library is loaded with the switch "Tracing" on: on Windows
/// "C:\Temp\TmvDebug\KpxBaseObjectsRel.TXT"; elsewhere "KPX/TmvDebug/KpxBaseObjectsRel.TXT" in the
/// user's data folder, readable by nobody else. A folder that is missing is not created: then
/// nothing is traced. Empty when that folder is not known. Error number 910362.
KPX_API CString traceFilePath();

/// Opens a trace file, emptying it; one that is left open is closed first. Other programs cannot
/// write it meanwhile. False when it cannot be opened, is written by another program, or, off
/// Windows, is a link or another user's file. On the main thread.
KPX_API bool openTrace(const CString& path) noexcept;
/// On the main thread, when no other one traces any more.
KPX_API void closeTrace() noexcept;
KPX_API bool isTraceOpen() noexcept;

namespace detail {
KPX_API void writeTraceLine(std::string_view format, const FormatArgs& args) noexcept;
}

/// Writes a line in the form of the print family; does nothing while no trace is open. The format
/// ends with a line feed.
template <class... Args>
void traceLine(std::string_view format, const Args&... args) noexcept {
  if (isTraceOpen()) detail::writeTraceLine(format, FormatArgs{args...});
}

}  // namespace kpx
