#include "kpx/platform/Terminal.h"

#include <windows.h>

#include <cstdio>
#include <string>

namespace kpx {

namespace {

bool isConsole(DWORD stream) noexcept {
  // Only a console has a mode; the null device is a character device too, but has none.
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(stream), &mode) != 0;
}

}  // namespace

bool outputIsTerminal() noexcept { return isConsole(STD_OUTPUT_HANDLE); }

bool errorOutputIsTerminal() noexcept { return isConsole(STD_ERROR_HANDLE); }

void writeErrorOutput(const CString& text) {
  if (errorOutputIsTerminal()) {
    // The console would read bytes in its own code page, whatever that is.
    DWORD written = 0;
    ::WriteConsoleW(::GetStdHandle(STD_ERROR_HANDLE), static_cast<const wchar_t*>(text),
                    static_cast<DWORD>(text.GetLength()), &written, nullptr);
    return;
  }
  const std::string bytes = text.utf8();
  std::fwrite(bytes.data(), 1, bytes.size(), stderr);
  std::fflush(stderr);
}

}  // namespace kpx
