#pragma once

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Folders that the system gives to users and programs. They need not exist; empty if the system
/// does not tell. No path ends with a separator.

namespace detail {

/// The user's own folder: the profile on Windows, $HOME or the user's entry elsewhere.
CString userHomeFolder();

/// Where programs keep data of this user that follow the user: the roaming application data on
/// Windows, elsewhere $XDG_CONFIG_HOME or .config in the home folder.
CString userDataFolder();

/// Where programs keep data of all users: the common application data on Windows, /etc elsewhere.
CString commonDataFolder();

/// Where traces are written: one folder for all users on Windows, elsewhere one in the user's data
/// folder. Nobody creates it.
CString debugFolder();

}  // namespace detail

/// The path of the program that runs in this process.
KPX_API CString programFile();

/// The path of the file that this library was loaded from: its shared library, or the program when
/// it is linked in.
KPX_API CString libraryFile();

}  // namespace kpx
