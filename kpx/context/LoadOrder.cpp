#include "kpx/context/Folders.h"
#include "kpx/context/internal/ContextState.h"
#include "kpx/context/internal/ErrorSink.h"
#include "kpx/context/Switches.h"
#include "kpx/context/Trace.h"
#include "kpx/report/Error.h"
#include "kpx/support/files/CKpxBaseObjectsUtil.h"

// What happens when the library is loaded, and undone in reverse when it is unloaded. The low
// layers hold pointers to whoever knows more; here they are set, and nowhere else.
//
// Loading costs a program nothing that it does not use: text store and context take memory with the
// first text and the first value. Only the switch "Tracing" is looked up. Other objects of the
// library that are constructed at load may not exist yet, so nothing here uses any.

namespace kpx {
namespace {

class Library {
 public:
  Library() noexcept {
    // Before there is a sink: that the switch cannot be read is no report to anyone.
    if (kpxIsTracing()) openTrace(traceFilePath());
    setErrorSink(&detail::showAndLog);
    CKpxBaseObjectsUtil::setSystemFolderProvider(&kpxGetSystemPath);
    CKpxBaseObjectsUtil::setProjectFolderProvider(&kpxGetCurrentProjectPath);
  }
  ~Library() {
    closeTrace();
    CKpxBaseObjectsUtil::setProjectFolderProvider(nullptr);
    CKpxBaseObjectsUtil::setSystemFolderProvider(nullptr);
    setErrorSink(nullptr);
    detail::releaseContext();
  }
  Library(const Library&) = delete;
  Library& operator=(const Library&) = delete;
};

const Library library;

}  // namespace
}  // namespace kpx

/// Every report needs the file that names this, see Error.cpp: so the linker takes this one, too,
/// into programs that link the static library, however they are built.
extern "C" const void* const kpxLoadOrder = &kpx::library;
