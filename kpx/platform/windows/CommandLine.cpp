#include "kpx/platform/CommandLine.h"

#include <windows.h>
// The header above comes first: these build on it.
#include <fcntl.h>
#include <io.h>
#include <shellapi.h>

#include <cstdio>
#include <cstdlib>
#include <memory>

#include "kpx/text/CString.h"

namespace kpx {

std::vector<std::string> programArguments(int count, const char* const* values) {
  int wideCount = 0;
  const std::unique_ptr<LPWSTR, decltype(&::LocalFree)> wide(
      ::CommandLineToArgvW(::GetCommandLineW(), &wideCount), &::LocalFree);
  std::vector<std::string> arguments;
  if (!wide) {
    if (count > 1) arguments.assign(values + 1, values + count);
    return arguments;
  }
  for (int i = 1; i < wideCount; ++i) arguments.push_back(CString(wide.get()[i]).utf8());
  return arguments;
}

namespace {

UINT consolePage = 0;  // what the console had before

void restoreConsole() { ::SetConsoleOutputCP(consolePage); }

}  // namespace

void prepareStandardStreams() noexcept {
  for (std::FILE* const stream : {stdin, stdout, stderr}) {
    // A program without a console may have none.
    if (const int file = ::_fileno(stream); file >= 0) ::_setmode(file, _O_BINARY);
  }
  // The runtime gives a console single bytes otherwise, of which it knows no character.
  std::setvbuf(stdout, nullptr, _IOFBF, std::size_t{1} << 14);
  // Programs of one pipe share the console; only the last one writes to it, and an earlier one
  // would take the code page away from it when it ends.
  if (::GetFileType(::GetStdHandle(STD_OUTPUT_HANDLE)) == FILE_TYPE_PIPE) return;
  // The console stays when the program ends, and so would its code page.
  consolePage = ::GetConsoleOutputCP();
  if (consolePage != 0 && consolePage != CP_UTF8 && ::SetConsoleOutputCP(CP_UTF8)) {
    std::atexit(&restoreConsole);
  }
}

}  // namespace kpx
