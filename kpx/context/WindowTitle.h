#pragma once

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Set the title of the application's window (kpxGetCurrentAppHWnd): the application's name, or
/// with the current project "application - project", and the application alone when there is none.
/// 1 when it was set; 0 when there is nobody to do it, see showWindowTitle. Error numbers 910316,
/// 910317.
KPX_API int kpxSetWindowTitle();
KPX_API int kpxSetWindowTitleProject();

}  // namespace kpx
