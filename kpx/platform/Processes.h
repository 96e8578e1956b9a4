#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// A process that runs now.
struct ProcessInfo {
  std::uint32_t id = 0;
  CString name;  // of its program's file, without the folder
};

/// The processes whose program has this file name, without case, ordered by their ids; an ending
/// ".exe" may be there or not. This process itself is left out. Only processes are found that this
/// user may look at. A failure is reported as 910601, and there are none then.
KPX_API std::vector<ProcessInfo> findProcesses(const CString& name);

/// Ends a process: at once on Windows, elsewhere by asking it to end. False when there is none with
/// this id or the user may not end it; this process and the numbers 0 and 1 are refused.
KPX_API bool endProcess(std::uint32_t id) noexcept;

/// Ends each process that `findProcesses` finds; answers how many of them. Error number 910602.
KPX_API int endProcesses(const CString& name);

namespace detail {
/// What `findProcesses` finds. Throws std::bad_alloc.
std::vector<ProcessInfo> systemProcesses(const CString& name);
/// The name of a program without the ending ".exe".
std::u16string_view withoutProgramEnding(std::u16string_view name) noexcept;
}  // namespace detail

}  // namespace kpx
