#include "kpx/platform/InputDialog.h"

#include <unistd.h>

#include <cstdio>
#include <string>

#include "kpx/platform/LineText.h"
#include "kpx/platform/Terminal.h"

namespace kpx::detail {
namespace {

/// The next line of standard input without its end; nothing at the end of input.
std::optional<CString> readLine() {
  std::string line;
  for (int byte = std::getc(stdin); byte != '\n'; byte = std::getc(stdin)) {
    if (byte == EOF) {
      const bool failed = std::ferror(stdin) != 0;
      // The key that ends the input ends this question only.
      std::clearerr(stdin);
      if (failed || line.empty()) return std::nullopt;
      break;
    }
    line += static_cast<char>(byte);
  }
  return CString::fromUtf8(line);
}

}  // namespace

std::optional<CString> systemInputDialog(const InputDialogRequest& request) {
  if (::isatty(STDIN_FILENO) != 1 || !errorOutputIsTerminal()) return std::nullopt;
  CString question = request.caption;
  if (!question.IsEmpty()) question += u'\n';
  question += request.prompt;
  if (!request.initialText.IsEmpty()) question += u" [" + request.initialText + u"]";
  writeErrorOutput(terminalText(question + u' '));
  std::optional<CString> answer = readLine();
  if (answer && answer->IsEmpty()) answer = request.initialText;
  return answer;
}

}  // namespace kpx::detail
