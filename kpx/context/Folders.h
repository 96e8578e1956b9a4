#pragma once

#include <cstdint>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// The folder of the application's programs. It is looked for once, and the first success is kept:
/// what `kpxSetProgPath` set; the environment variable KPX_INI; the registry value "ProgPath" under
/// "Software\KPX\Settings\Install", the user's before the machine's; the folder of the help file.
/// For the application that `setBinFolderApplication` names, "bin" is added to a folder from the
/// environment or the registry. Empty when there is none. Each step writes a trace line. Error
/// number 753139.
KPX_API CString kpxGetProgPath();
/// The empty text has the folder looked for anew. Error number 910358.
KPX_API void kpxSetProgPath(const CString& path);

/// The folder of the suite's data, where the error log is written: what `kpxSetSystemPath` set,
/// else the registry value "SysPath" under "Software\KPX\Settings\Install", which is kept. Empty
/// when there is none. Error number 910305.
KPX_API CString kpxGetSystemPath();
/// The empty text has the folder looked for anew. Error number 910359.
KPX_API void kpxSetSystemPath(const CString& path);

/// The registry value "SysPath", else the key SYSTEM_PATH of section KPX in the file KPX.INI in the
/// program folder; nothing of it is kept. Empty when neither exists. Error number 910306.
KPX_API CString kpxGetSystemPathFromRegistryOrIniFile();

/// The folder of the current project: its Path, below the projects folder when it is relative.
/// Empty without a project. Error number 910307.
KPX_API CString kpxGetCurrentProjectPath();

// --- what the system tells, asked anew on each call ---------------------------------------------

/// Empty when the system does not tell. Error numbers 910319 to 910323.
KPX_API CString kpxGetComputerName();
KPX_API CString kpxGetUserName();
KPX_API CString kpxGetUserHomePath();
KPX_API CString kpxGetUserAppDataPath();
KPX_API CString kpxGetCommonAppDataPath();
/// Physical memory in MB (1,048,576 bytes).
KPX_API std::int32_t kpxGetMemSizeMB() noexcept;
/// Bytes of a file that can be opened for reading; else 0. Error number 910318.
KPX_API std::int64_t kpxGetFileSize(const CString& path);

}  // namespace kpx
