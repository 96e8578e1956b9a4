#include "kpx/platform/InputDialog.h"

#include <atomic>

#include "kpx/platform/LineText.h"
#include "kpx/text/Utf.h"

namespace kpx {
namespace {

constinit std::atomic<InputDialogHandler> dialogHandler{nullptr};

CString fitting(const CString& text, std::int32_t maximumLength) {
  CString line = detail::withoutLineBreaks(text);
  if (maximumLength <= 0 || line.GetLength() <= maximumLength) return line;
  // A character of two units is taken whole or not at all.
  const bool isSplit =
      isHighSurrogate(line[maximumLength - 1]) && isLowSurrogate(line[maximumLength]);
  line.Truncate(isSplit ? maximumLength - 1 : maximumLength);
  return line;
}

}  // namespace

std::optional<CString> showInputDialog(const InputDialogRequest& request) {
  InputDialogRequest clean = request;
  clean.initialText = fitting(request.initialText, request.maximumLength);
  const InputDialogHandler handler = dialogHandler.load(std::memory_order_acquire);
  std::optional<CString> answer = handler ? handler(clean) : detail::systemInputDialog(clean);
  if (answer) answer = fitting(*answer, request.maximumLength);
  return answer;
}

InputDialogHandler setInputDialogHandler(InputDialogHandler handler) noexcept {
  return dialogHandler.exchange(handler, std::memory_order_acq_rel);
}

}  // namespace kpx
