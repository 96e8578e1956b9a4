#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <utility>

#include "kpx/config/CJob.h"
#include "kpx/config/CProject.h"
#include "kpx/config/CUser.h"
#include "kpx/platform/MessageBox.h"
#include "kpx/text/CString.h"

class CFrameWnd;

namespace kpx {
class CFGNASExport;
class CFGProjectSettings;
class CFGProjectSettingsIntern;
class CFGSystemSettings;
}  // namespace kpx

namespace kpx::detail {

/// What the application has told about itself.
struct ContextState {
  CString applicationName;
  CString helpFile;
  CString binFolderApplication;
  CString projectsFolder;
  CString projectSubPath;
  CProject project;
  CJob job;
  CUser systemUser;
  CUser projectUser;
  CFGProjectSettings* projectSettings = nullptr;
  CFGProjectSettingsIntern* projectSettingsIntern = nullptr;
  CFGSystemSettings* systemSettings = nullptr;
  CFGNASExport* nasPointSettings = nullptr;
  CFrameWnd* frameWindow = nullptr;
  WindowHandle applicationWindow = nullptr;
  WindowHandle mainParentWindow = nullptr;
  WindowHandle detailDialog = nullptr;
  WindowHandle lineEditDialog = nullptr;
  int autoSave = 0;
  std::int32_t autoSaveInterval = 0;
};

/// The state, or nullptr as long as nobody has set anything: a program that needs no context pays
/// for none. The fields have their defaults then.
const ContextState* contextState() noexcept;
/// For changing it, on the main thread; the first call creates it. Throws std::bad_alloc.
ContextState& changeContextState();

/// A text that getters find out once, on whatever thread comes first, and that the main thread may
/// set. It needs no lock: a text that was found is put in place in one step and stays.
class CachedText {
 public:
  constexpr CachedText() noexcept = default;
  CachedText(const CachedText&) = delete;
  CachedText& operator=(const CachedText&) = delete;

  /// The text, or nullptr while there is none.
  const CString* get() const noexcept { return text_.load(std::memory_order_acquire); }
  /// Keeps a text that a getter found, unless another thread was quicker.
  void keep(const CString& found) {
    auto text = std::make_unique<const CString>(found);
    const CString* none = nullptr;
    if (text_.compare_exchange_strong(none, text.get(), std::memory_order_acq_rel)) {
      static_cast<void>(text.release());
    }
  }
  /// On the main thread, while nobody reads. The empty text has it found out anew.
  void set(const CString& text) {
    replace(text.IsEmpty() ? nullptr : std::make_unique<const CString>(text).release());
  }
  void release() noexcept { replace(nullptr); }

 private:
  void replace(const CString* text) noexcept {
    delete text_.exchange(text, std::memory_order_acq_rel);
  }

  std::atomic<const CString*> text_{nullptr};
};

extern CachedText programFolder;
extern CachedText systemFolder;

/// Gives everything back when the library is unloaded.
void releaseContext() noexcept;

}  // namespace kpx::detail
