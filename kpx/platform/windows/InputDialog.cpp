#include "kpx/platform/InputDialog.h"

#include <windows.h>

#include <exception>
#include <utility>

#include "kpx/platform/windows/DialogTemplate.h"

namespace kpx::detail {
namespace {

constexpr WORD promptId = 100;
constexpr WORD lineId = 101;

struct Question {
  const InputDialogRequest& request;
  std::optional<CString> answer;
  std::exception_ptr failure;  // must not pass through the system's own code
};

void prepare(HWND dialog, const InputDialogRequest& request) {
  ::SetWindowTextW(dialog, request.caption);
  fitText(dialog, promptId, request.prompt);
  setButtonText(dialog, IDOK, request.okText);
  setButtonText(dialog, IDCANCEL, request.cancelText);
  const HWND line = ::GetDlgItem(dialog, lineId);
  // 0 is as much as the system can take.
  ::SendMessageW(line, EM_SETLIMITTEXT,
                 static_cast<WPARAM>(request.maximumLength > 0 ? request.maximumLength : 0), 0);
  ::SetWindowTextW(line, request.initialText);
  ::SendMessageW(line, EM_SETSEL, 0, -1);
  centreDialog(dialog);
  ::SetFocus(line);
}

CString textOf(HWND control) {
  CString text;
  const int length = ::GetWindowTextLengthW(control);
  text.units().resize(static_cast<std::size_t>(length) + 1);
  const int copied =
      ::GetWindowTextW(control, reinterpret_cast<wchar_t*>(text.units().data()), length + 1);
  text.Truncate(copied);
  return text;
}

template <class Step>
void step(HWND dialog, Question& question, Step&& body) noexcept {
  try {
    std::forward<Step>(body)();
  } catch (...) {
    question.failure = std::current_exception();
    ::EndDialog(dialog, IDCANCEL);
  }
}

INT_PTR CALLBACK procedure(HWND dialog, UINT message, WPARAM first, LPARAM second) {
  if (message == WM_INITDIALOG) {
    ::SetWindowLongPtrW(dialog, DWLP_USER, second);
    auto& question = *reinterpret_cast<Question*>(second);
    step(dialog, question, [&] { prepare(dialog, question.request); });
    return FALSE;  // the line has the focus already
  }
  if (message != WM_COMMAND) return FALSE;
  auto& question = *reinterpret_cast<Question*>(::GetWindowLongPtrW(dialog, DWLP_USER));
  switch (LOWORD(first)) {
    case IDOK:
      step(dialog, question, [&] {
        question.answer = textOf(::GetDlgItem(dialog, lineId));
        ::EndDialog(dialog, IDOK);
      });
      return TRUE;
    case IDCANCEL:
      ::EndDialog(dialog, IDCANCEL);
      return TRUE;
    default:
      return FALSE;
  }
}

}  // namespace

std::optional<CString> systemInputDialog(const InputDialogRequest& request) {
  DialogTemplate layout(220, 60);
  layout.addText(promptId, {7, 7, 206, 8});
  layout.add(L"EDIT", lineId, WS_BORDER | WS_TABSTOP | ES_AUTOHSCROLL, {7, 19, 206, 13});
  layout.addButton(IDOK, BS_DEFPUSHBUTTON, {109, 39, 50, 14});
  layout.addButton(IDCANCEL, BS_PUSHBUTTON, {163, 39, 50, 14});
  Question question{request, std::nullopt, nullptr};
  // The system leaves the owner disabled when a message to end the program closes the dialog.
  const DialogOwner owner(request.owner);
  const INT_PTR button =
      ::DialogBoxIndirectParamW(::GetModuleHandleW(nullptr), layout.get(), owner.get(), procedure,
                                reinterpret_cast<LPARAM>(&question));
  if (question.failure) std::rethrow_exception(question.failure);
  return button == IDOK ? std::move(question.answer) : std::nullopt;
}

}  // namespace kpx::detail
