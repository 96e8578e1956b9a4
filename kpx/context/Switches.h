#pragma once

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

// Values of the registry key "Software\KPX\Settings": the user's own (HKEY_CURRENT_USER), else
// the machine's (HKEY_LOCAL_MACHINE). They are read anew on each call, so that a change takes
// effect at once. Texts and numbers both serve; a switch is on when its number is not 0.
// A failure (error numbers 910311, 910324 to 910327) counts as off.

/// Whether trace lines are written ("Tracing"). The trace file is opened when the library is
/// loaded.
KPX_API int kpxIsTracing();
/// Whether the application is in test mode ("TestMode").
KPX_API int kpxIsTestMode();
/// Whether reported errors are shown in message boxes ("ErrorMessage").
KPX_API int kpxShowKPXErrorMessages();
/// Whether connecting points are shown as help ("ShowConnectingPoints").
KPX_API int kpxShowConnectingPointsAsHelp();
/// Whether to ask before cells are overwritten ("OverwriteCells").
KPX_API int kpxGetKPXSettingAskOverwriteCells();

/// A value of the key; `missing` when there is none or it is empty. Error number 910310.
KPX_API CString kpxGetKPXSettingFromRegistry(const CString& name,
                                             const CString& missing = CString());

/// A text below the settings key: of the key `subkey` (empty: the settings key itself), with the
/// name `name`. `missing` when there is none or it is empty. Error number 910308.
KPX_API CString kpxGetDataFromRegistry(const CString& subkey, const CString& name,
                                       const CString& missing = CString());
/// Stores a text there, for the current user; the key is created. 1 when it is stored, else 0.
/// Error number 910309.
KPX_API int kpxSetDataToRegistry(const CString& subkey, const CString& name, const CString& text);

}  // namespace kpx
