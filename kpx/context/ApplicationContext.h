#pragma once

#include <cstdint>

#include "kpx/config/CJob.h"
#include "kpx/config/CProject.h"
#include "kpx/config/CUser.h"
#include "kpx/platform/MessageBox.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

class CFrameWnd;  // the application framework's main window; only stored and handed back

namespace kpx {

class CFGNASExport;
class CFGProjectSettings;
class CFGProjectSettingsIntern;
class CFGSystemSettings;

// What all modules of a process share: the application's name and windows, who works on which
// project, and the settings in force. The folders are in Folders.h.
//
// The application sets it on its main thread, during start-up and when the project changes; nothing
// is locked. Other threads may read while nobody sets. Until something is set, texts and records
// are empty, numbers 0 and pointers nullptr, and no memory is used. Getters and setters that run
// out of memory report their number (910331 to 910357, see Operations.h); a getter then answers the
// empty value, and a setter leaves the old one.

/// The name that users know the application by: the caption of message boxes and window titles.
KPX_API CString kpxGetAppName();
KPX_API void kpxSetAppName(const CString& text);

/// The folder below which projects lie, and the part of it that is the current project's.
KPX_API CString kpxGetProjectsFolder();
KPX_API void kpxSetProjectsFolder(const CString& text);
KPX_API CString kpxGetProjectSubPath();
KPX_API void kpxSetProjectSubPath(const CString& text);

// --- who works on what: copied in and copied out ------------------------------------------------

KPX_API CProject kpxGetCurrentProject();
KPX_API void kpxSetCurrentProject(const CProject& project);
KPX_API CJob kpxGetCurrentJob();
KPX_API void kpxSetCurrentJob(const CJob& job);
/// The user of the suite, and the user account within the current project.
KPX_API CUser kpxGetCurrentSysUser();
KPX_API void kpxSetCurrentSysUser(const CUser& user);
KPX_API CUser kpxGetCurrentPrjUser();
KPX_API void kpxSetCurrentPrjUser(const CUser& user);

// --- settings in force: the application owns them and keeps them while they are set here --------

KPX_API CFGProjectSettings* kpxGetCurrentPrjSettings() noexcept;
KPX_API void kpxSetCurrentPrjSettings(CFGProjectSettings* settings);
KPX_API CFGProjectSettingsIntern* kpxGetCurrentPrjSettingsIntern() noexcept;
KPX_API void kpxSetCurrentPrjSettingsIntern(CFGProjectSettingsIntern* settings);
KPX_API CFGSystemSettings* kpxGetCurrentSysSettings() noexcept;
KPX_API void kpxSetCurrentSysSettings(CFGSystemSettings* settings);
KPX_API CFGNASExport* kpxGetCurrentNASPointSettings() noexcept;
KPX_API void kpxSetCurrentNASPointSettings(CFGNASExport* settings);

// --- windows: only stored, never owned ----------------------------------------------------------

KPX_API CFrameWnd* kpxGetCurrentFrameWnd() noexcept;
KPX_API void kpxSetCurrentFrameWnd(CFrameWnd* window);
/// The application's own window: the owner of message boxes, and the one whose title is set.
KPX_API WindowHandle kpxGetCurrentAppHWnd() noexcept;
KPX_API void kpxSetCurrentAppHWnd(WindowHandle window);
KPX_API WindowHandle kpxGetCurrentMainParentHWnd() noexcept;
KPX_API void kpxSetCurrentMainParentHWnd(WindowHandle window);
KPX_API WindowHandle kpxGetCurrentDetailDlgHWnd() noexcept;
KPX_API void kpxSetCurrentDetailDlgHWnd(WindowHandle window);
KPX_API WindowHandle kpxGetCurrentLineEditDlgHWnd() noexcept;
KPX_API void kpxSetCurrentLineEditDlgHWnd(WindowHandle window);

// --- autosave of edit sessions: a flag (0 or 1) and an interval in the application's unit --------

KPX_API int kpxGetAutoSaveEditSession() noexcept;
KPX_API void kpxSetAutoSaveEditSession(int isOn);
KPX_API std::int32_t kpxGetAutoSaveEditSessionIntervall() noexcept;
KPX_API void kpxSetAutoSaveEditSessionIntervall(std::int32_t interval);

// --- what the program folder is found by, see kpxGetProgPath ------------------------------------

/// The application's help file; without one, its program file counts, which lies beside it.
KPX_API void setHelpFile(const CString& path);
/// The one application whose programs lie in a folder "bin" below the configured program folder;
/// it is recognised by its name. Empty, the default: there is none.
KPX_API void setBinFolderApplication(const CString& name);

}  // namespace kpx
