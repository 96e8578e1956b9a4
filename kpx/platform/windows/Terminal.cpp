#include "kpx/platform/Terminal.h"

#include <windows.h>

namespace kpx {

bool errorOutputIsTerminal() noexcept {
  // Only a console has a mode; the null device is a character device too, but has none.
  DWORD mode = 0;
  return ::GetConsoleMode(::GetStdHandle(STD_ERROR_HANDLE), &mode) != 0;
}

}  // namespace kpx
