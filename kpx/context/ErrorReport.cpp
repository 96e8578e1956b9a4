#include "kpx/context/ErrorReport.h"

#include <algorithm>
#include <atomic>
#include <filesystem>
#include <string>

#include "kpx/context/ApplicationContext.h"
#include "kpx/context/Folders.h"
#include "kpx/context/internal/ContextState.h"
#include "kpx/context/internal/ErrorSink.h"
#include "kpx/context/internal/FoundFolder.h"
#include "kpx/context/internal/LogLine.h"
#include "kpx/context/internal/ReportTemplates.h"
#include "kpx/context/Operations.h"
#include "kpx/context/Switches.h"
#include "kpx/platform/Environment.h"
#include "kpx/platform/ExclusiveFile.h"
#include "kpx/platform/MessageBox.h"
#include "kpx/platform/Registry.h"
#include "kpx/support/texts/TextTemplate.h"
#include "kpx/text/Formatter.h"
#include "kpx/text/TextTools.h"

namespace kpx {
namespace {

using std::chrono::milliseconds;
using SteadyClock = std::chrono::steady_clock;

constinit std::atomic<std::int64_t> patience{250};

/// Appends a line to the log of a folder.
void appendTo(std::u16string_view folder, std::string_view line,
              SteadyClock::time_point end) noexcept {
  constexpr std::u16string_view name = u"Error.log";
  // On the stack, since memory may have run out.
  char16_t path[4096];
  while (!folder.empty() && isPathSeparator(folder.back())) folder.remove_suffix(1);
  if (folder.size() + 1 + name.size() > std::size(path)) return;
  char16_t* next = std::copy(folder.begin(), folder.end(), path);
  *next++ = static_cast<char16_t>(std::filesystem::path::preferred_separator);
  next = std::copy(name.begin(), name.end(), next);
  const auto left = std::chrono::ceil<milliseconds>(end - SteadyClock::now());
  ExclusiveFile log;
  if (log.open({path, static_cast<std::size_t>(next - path)}, ExclusiveFile::Mode::append,
               std::max(left, milliseconds(0)))) {
    log.write(line);
  }
}

/// Both logs get the same line.
void writeLogs(const detail::Report& report, SteadyClock::time_point end) noexcept {
  const RegistryDeadline deadline(end);
  std::string made;
  char buffer[2048];
  std::string_view line;
  try {
    made = detail::logLine(report);
    line = made;
  } catch (...) {
    line = detail::shortLogLine(report, buffer);
  }
  // Folders that are at hand are not copied: there may be no memory for it.
  if (const CString* const system = detail::systemFolder.get()) {
    appendTo(*system, line, end);
  } else {
    appendTo(kpxGetSystemPath(), line, end);
  }
  const detail::ContextState* const state = detail::contextState();
  if (state && detail::isAbsolutePath(state->project.Path)) {
    appendTo(state->project.Path, line, end);
  } else {
    appendTo(kpxGetCurrentProjectPath(), line, end);
  }
}

bool isBoxWanted(SteadyClock::time_point end) noexcept {
  const RegistryDeadline deadline(end);
  try {
    return kpxShowKPXErrorMessages() != 0;
  } catch (...) {
    return false;
  }
}

void showBox(int number) noexcept {
  try {
    const CString application = kpxGetAppName();
    utlMessageBox(MessageBoxStyle::error,
                  templateText(detail::errorBoxId, detail::errorBoxTemplate), application, number,
                  application);
  } catch (...) {
    // The log tells it all the same.
  }
}

CString systemFailure(const CString& text, std::int32_t code) {
  CString message;
  message.Format(u"%s (%s:%d)\n\n%s", text, templateText(detail::errorWordId, detail::errorWord),
                 code, systemMessage(code));
  return message;
}

}  // namespace

void detail::showAndLog(int number) noexcept {
  SteadyClock::time_point end = SteadyClock::now() + logPatience();
  if (isBoxWanted(end)) {
    const SteadyClock::time_point shown = SteadyClock::now();
    showBox(number);
    end += SteadyClock::now() - shown;  // the user's time is none that logs are waited for
  }
  writeLogs({number, nullptr}, end);
}

void kpxErrorText(const CString& text) noexcept {
  const detail::ReportScope scope;
  if (scope.isNested()) return;
  const std::u16string_view view = text;
  writeLogs({0, &view}, SteadyClock::now() + logPatience());
}

milliseconds logPatience() noexcept {
  return milliseconds(patience.load(std::memory_order_relaxed));
}

milliseconds setLogPatience(milliseconds wanted) noexcept {
  return milliseconds(patience.exchange(wanted.count(), std::memory_order_relaxed));
}

int detail::messageBox(std::int32_t style, const TextArg& format, const FormatArgs& args) {
  return Guarded("utlMessageBox"_context, MessageBoxAnswer::none, [&] {
    MessageBoxRequest request;
    const TextUnits units(format);
    if (appendFormatted(request.text.units(), units, args) < 0) request.text.Assign(units.view());
    request.caption = kpxGetAppName();
    request.style = style;
    request.owner = kpxGetCurrentAppHWnd();
    return showMessageBox(request);
  });
}

void kpxShowSoccetErrorMessage(const CString& text, std::int32_t code) {
  Guarded("kpxShowSoccetErrorMessage"_context,
          [&] { utlMessageBox(MessageBoxStyle::information, u"%s", systemFailure(text, code)); });
}

void kpxShowSystemErrorMessage(const CString& text) {
  Guarded("kpxShowSystemErrorMessage"_context,
          [&] { utlMessageBox(MessageBoxStyle::error, u"%s", text); });
}

void kpxShowSystemErrorMessage(const CString& text, std::int32_t code) {
  Guarded("kpxShowSystemErrorMessage"_context,
          [&] { utlMessageBox(MessageBoxStyle::error, u"%s", systemFailure(text, code)); });
}

}  // namespace kpx
