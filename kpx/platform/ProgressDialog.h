#pragma once

#include <cstdint>
#include <memory>

#include "kpx/platform/Progress.h"
#include "kpx/platform/WindowHandle.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// What a progress dialog shows besides the progress itself.
/// The initialisers let a caller name only the members it sets.
struct ProgressDialogRequest {
  CString caption = {};
  CString text = {};             // what the operation is about; it may have several lines
  CString cancelText = {};       // of the button; empty: the system's own word, else "Abbrechen"
  WindowHandle owner = nullptr;  // takes no input while the dialog is there; nullptr: none
};

/// One way to show progress, from its making to its destruction. A host derives from it.
class KPX_API ProgressDisplay {
 public:
  virtual ~ProgressDisplay();

  /// Shows the state of the operation and finds out whether the user wants to cancel: then false.
  /// It is called some 20 times a second at most. It may throw.
  virtual bool show(const Progress& progress) = 0;
};

/// Makes the display of one operation; nullptr when there is no way to show it, and the operation
/// goes on unseen. It may throw.
using ProgressDialogHandler = std::unique_ptr<ProgressDisplay> (*)(const ProgressDialogRequest&);

/// Registers the host's handler; nullptr for the default. Answers the one before.
KPX_API ProgressDialogHandler setProgressDialogHandler(ProgressDialogHandler handler) noexcept;

/// The dialog of a long operation: caption, text, bar and a button to cancel. It is there as long
/// as the object, and belongs to the thread that made it:
///
///     ProgressDialog dialog({.caption = appName, .text = archive, .owner = mainWindow});
///     UnzipOptions options;
///     options.progress = dialog.report();
///     const UnzipResult result = unzip(archive, folder, options);
///
/// It is shown by the handler of the host. Without one it is a window on Windows: `show` handles
/// the messages of the thread, so that the window can be used while the operation runs, and so
/// must not be called where the program's own messages must wait. Esc and closing the window
/// cancel; so does a message to end the program, which stays in the queue. Elsewhere it is the
/// line of `terminalProgress`, when a person watches standard error.
class KPX_API ProgressDialog {
 public:
  /// Shows it. The request is not needed any longer afterwards.
  explicit ProgressDialog(const ProgressDialogRequest& request);
  /// Takes it away and lets the owner take input again, if it did before.
  ~ProgressDialog();
  ProgressDialog(const ProgressDialog&) = delete;
  ProgressDialog& operator=(const ProgressDialog&) = delete;

  /// Shows how far the operation is. False when the user cancelled, and from then on. It may be
  /// called as often as the operation likes: the dialog is brought up to date every 50
  /// milliseconds, other calls only look at the clock.
  bool show(const Progress& progress);
  bool isCancelled() const noexcept { return cancelled_; }

  /// Calls `show`; for operations that take a report. It must not outlive the dialog.
  ProgressReport report();

 private:
  std::unique_ptr<ProgressDisplay> display_;
  std::uint64_t interval_;  // in ticks of the clock
  std::uint64_t next_ = 0;
  bool cancelled_ = false;
};

namespace detail {
/// What happens without a handler.
std::unique_ptr<ProgressDisplay> systemProgressDialog(const ProgressDialogRequest& request);
}  // namespace detail

}  // namespace kpx
