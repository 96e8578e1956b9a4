#include "kpx/context/WindowTitle.h"

#include "kpx/context/ApplicationContext.h"
#include "kpx/context/Operations.h"
#include "kpx/platform/MessageBox.h"
#include "kpx/report/Error.h"

namespace kpx {

int kpxSetWindowTitle() {
  return Guarded("kpxSetWindowTitle"_context, 0,
                 [] { return showWindowTitle(kpxGetCurrentAppHWnd(), kpxGetAppName()) ? 1 : 0; });
}

int kpxSetWindowTitleProject() {
  return Guarded("kpxSetWindowTitleProject"_context, 0, [] {
    CString title = kpxGetAppName();
    const CProject project = kpxGetCurrentProject();
    if (!project.Name.IsEmpty()) {
      title += u" - ";
      title += project.Name;
    }
    return showWindowTitle(kpxGetCurrentAppHWnd(), title) ? 1 : 0;
  });
}

}  // namespace kpx
