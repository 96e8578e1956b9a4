#include "kpx/context/Trace.h"

#include <atomic>
#include <chrono>
#include <memory>
#include <new>
#include <string>

#include "kpx/context/Operations.h"
#include "kpx/platform/Clock.h"
#include "kpx/platform/ExclusiveFile.h"
#include "kpx/platform/Folders.h"
#include "kpx/report/Error.h"
#include "kpx/text/Formatter.h"
#include "kpx/text/TextTools.h"

namespace kpx {
namespace {

constinit std::atomic<ExclusiveFile*> traceFile{nullptr};
constinit std::uint64_t startCount = 0;
constinit thread_local int depth = 0;

double secondsSinceStart() noexcept {
  Clock& clock = currentClock();
  return static_cast<double>(clock.counter() - startCount) /
         static_cast<double>(clock.counterFrequency());
}

void traceScope(const char* name, bool entering) noexcept {
  if (!entering && depth > 0) --depth;
  traceLine(entering ? "%.3lf - Enter:%*s%s\n" : "%.3lf - Leave:%*s%s\n", secondsSinceStart(),
            2 * depth, "", name);
  if (entering) ++depth;
}

}  // namespace

CString traceFilePath() {
  return Guarded("traceFilePath"_context, CString(), [] {
    const CString folder = detail::debugFolder();
    return folder.IsEmpty() ? folder : detail::joinPath(folder, u"KpxBaseObjectsRel.TXT");
  });
}

bool openTrace(const CString& path) noexcept {
  closeTrace();
  std::unique_ptr<ExclusiveFile> file(new (std::nothrow) ExclusiveFile);
  if (!file || !file->open(path, ExclusiveFile::Mode::rewrite, std::chrono::milliseconds(0))) {
    return false;
  }
  startCount = currentClock().counter();
  traceFile.store(file.release(), std::memory_order_release);
  setTraceSink(&traceScope);
  return true;
}

void closeTrace() noexcept {
  if (!isTraceOpen()) return;
  setTraceSink(nullptr);
  delete traceFile.exchange(nullptr, std::memory_order_acq_rel);
}

bool isTraceOpen() noexcept { return traceFile.load(std::memory_order_acquire) != nullptr; }

void detail::writeTraceLine(std::string_view format, const FormatArgs& args) noexcept {
  ExclusiveFile* const file = traceFile.load(std::memory_order_acquire);
  if (!file) return;
  try {
    std::string line;
    if (appendFormatted(line, format, args) < 0) return;
    if constexpr (systemLineEnd.size() > 1) {
      if (line.ends_with('\n')) line.replace(line.size() - 1, 1, systemLineEnd);
    }
    file->write(line);
  } catch (...) {
    // Tracing must not disturb what is traced; this line is lost.
  }
}

}  // namespace kpx
