#include "kpx/platform/ProgressDialog.h"

#include <windows.h>

#include <commctrl.h>

#include <algorithm>

#include "kpx/platform/LineText.h"
#include "kpx/platform/windows/DialogTemplate.h"

namespace kpx::detail {
namespace {

constexpr WORD textId = 100;
constexpr WORD barId = 101;
constexpr WORD workId = 102;

constexpr int barSteps = 1000;

class ProgressWindow final : public ProgressDisplay {
 public:
  explicit ProgressWindow(HWND owner) noexcept : owner_(owner) {}
  ~ProgressWindow() override {
    // The owner must be able to take the focus that the window gives back.
    owner_.restore();
    if (window_) ::DestroyWindow(window_);
  }

  /// False when there can be no window.
  bool open(const ProgressDialogRequest& request) {
    const INITCOMMONCONTROLSEX controls = {sizeof controls, ICC_PROGRESS_CLASS};
    ::InitCommonControlsEx(&controls);
    DialogTemplate layout(240, 71);
    layout.addText(textId, {7, 7, 226, 8});
    layout.add(PROGRESS_CLASSW, barId, 0, {7, 20, 226, 10});
    layout.add(L"STATIC", workId, SS_LEFT | SS_NOPREFIX | SS_PATHELLIPSIS, {7, 35, 226, 9});
    layout.addButton(IDCANCEL, BS_PUSHBUTTON, {183, 50, 50, 14});
    window_ = ::CreateDialogIndirectParamW(::GetModuleHandleW(nullptr), layout.get(), owner_.get(),
                                           procedure, reinterpret_cast<LPARAM>(this));
    if (!window_) return false;
    ::SetWindowTextW(window_, request.caption);
    fitText(window_, textId, request.text);
    setButtonText(window_, IDCANCEL, request.cancelText);
    bar_ = ::GetDlgItem(window_, barId);
    ::SendMessageW(bar_, PBM_SETRANGE32, 0, barSteps);
    centreDialog(window_);
    owner_.disable();
    ::ShowWindow(window_, SW_SHOW);
    ::RedrawWindow(window_, nullptr, nullptr, RDW_ALLCHILDREN | RDW_UPDATENOW);
    return true;
  }

  bool show(const Progress& progress) override {
    if (window_) {
      moveBar(progress);
      showWork(progress.text);
    }
    handleMessages();
    return !cancelled_;
  }

 private:
  static INT_PTR CALLBACK procedure(HWND window, UINT message, WPARAM first, LPARAM second) {
    if (message == WM_INITDIALOG) {
      ::SetWindowLongPtrW(window, DWLP_USER, second);
      return TRUE;
    }
    auto* self = reinterpret_cast<ProgressWindow*>(::GetWindowLongPtrW(window, DWLP_USER));
    if (!self) return FALSE;
    if (message == WM_COMMAND && LOWORD(first) == IDCANCEL) {
      self->cancelled_ = true;
      // The operation may take a while to notice; the user sees that the wish is known.
      ::EnableWindow(::GetDlgItem(window, IDCANCEL), FALSE);
      return TRUE;
    }
    if (message == WM_NCDESTROY) {
      // Somebody closed the owner.
      self->window_ = nullptr;
      self->cancelled_ = true;
    }
    return FALSE;
  }

  void moveBar(const Progress& progress) noexcept {
    const bool isUnknown = progress.total == 0;
    if (isUnknown != isUnknown_) {
      isUnknown_ = isUnknown;
      // Older forms of the control have no moving bar and stay empty.
      const LONG_PTR style = ::GetWindowLongPtrW(bar_, GWL_STYLE) & ~LONG_PTR{PBS_MARQUEE};
      ::SetWindowLongPtrW(bar_, GWL_STYLE, style | (isUnknown ? PBS_MARQUEE : 0));
      ::SendMessageW(bar_, PBM_SETMARQUEE, isUnknown, 50);
      position_ = -1;
    }
    if (isUnknown) return;
    const double part = static_cast<double>(progress.done) / static_cast<double>(progress.total);
    const int position = static_cast<int>(std::min(part, 1.0) * barSteps);
    if (position != position_) {
      ::SendMessageW(bar_, PBM_SETPOS, static_cast<WPARAM>(position), 0);
      position_ = position;
    }
  }

  void showWork(std::u16string_view text) {
    if (text == work_.view()) return;
    work_ = text;
    ::SetDlgItemTextW(window_, workId, withoutLineBreaks(text));
  }

  void handleMessages() {
    // A window that asks to be painted again and again must not hold the operation up.
    constexpr int largestNumber = 200;
    MSG message;
    for (int count = 0; count < largestNumber; ++count) {
      if (!::PeekMessageW(&message, nullptr, 0, 0, PM_REMOVE)) return;
      if (message.message == WM_QUIT) {
        ::PostQuitMessage(static_cast<int>(message.wParam));
        cancelled_ = true;
        return;
      }
      if (window_) {
        // The key that started the operation, held a moment too long, must not cancel it.
        const bool isEnter = message.message == WM_KEYDOWN && message.wParam == VK_RETURN;
        if (isEnter && (message.hwnd == window_ || ::IsChild(window_, message.hwnd))) continue;
        if (::IsDialogMessageW(window_, &message)) continue;
      }
      ::TranslateMessage(&message);
      ::DispatchMessageW(&message);
    }
  }

  DialogOwner owner_;
  HWND window_ = nullptr;
  HWND bar_ = nullptr;
  bool cancelled_ = false;
  bool isUnknown_ = false;
  int position_ = 0;
  CString work_;
};

}  // namespace

std::unique_ptr<ProgressDisplay> systemProgressDialog(const ProgressDialogRequest& request) {
  auto window = std::make_unique<ProgressWindow>(request.owner);
  if (!window->open(request)) return nullptr;
  return window;
}

}  // namespace kpx::detail
