#include "kpx/context/internal/LogLine.h"

#include <algorithm>
#include <cstdint>

#include "kpx/context/Folders.h"
#include "kpx/context/internal/ContextState.h"
#include "kpx/context/internal/ReportTemplates.h"
#include "kpx/platform/Clock.h"
#include "kpx/platform/ExclusiveFile.h"
#include "kpx/support/texts/TextTemplate.h"
#include "kpx/text/Formatter.h"
#include "kpx/text/Utf.h"
#include "kpx/text/Utf8Sequence.h"

namespace kpx::detail {
namespace {

constexpr bool isControl(char16_t unit) noexcept {
  return unit < 0x20 || (unit >= 0x7F && unit < 0xA0) || unit == 0x2028 || unit == 0x2029;
}

/// Makes one line of well-formed text of a formatted template: whatever the names hold, one report
/// is one line. The line feed at the end of the template is cut.
std::size_t makeOneLine(char16_t* text, std::size_t length) noexcept {
  while (length > 0 && text[length - 1] == u'\n') --length;
  for (std::size_t i = 0; i < length; ++i) {
    if (isControl(text[i])) {
      text[i] = u' ';
    } else if (isHighSurrogate(text[i]) && i + 1 < length && isLowSurrogate(text[i + 1])) {
      ++i;
    } else if (isHighSurrogate(text[i]) || isLowSurrogate(text[i])) {
      text[i] = static_cast<char16_t>(replacementCharacter);
    }
  }
  return length;
}

/// Date and time in the form of the logs, without memory of their own.
struct NowTexts {
  char16_t date[16];
  char16_t clock[16];

  NowTexts() noexcept {
    const DateTime now = currentClock().localNow();
    formatToBuffer(date, std::size(date), u"%02d.%02d.%04d",
                   FormatArgs{now.day, now.month, now.year});
    formatToBuffer(clock, std::size(clock), u"%02d:%02d:%02d",
                   FormatArgs{now.hour, now.minute, now.second});
  }
};

std::u16string_view cut(std::u16string_view text) noexcept { return text.substr(0, 100); }

}  // namespace

std::string logLine(const Report& report) {
  const ContextState none;
  const ContextState* const set = contextState();
  const ContextState& state = set ? *set : none;
  CString user;
  user.Format(u"%s (%s, %ld MB)", state.systemUser.Name, kpxGetComputerName(), kpxGetMemSizeMB());
  const NowTexts now;
  CString line;
  const auto format = [&](std::u16string_view form) {
    return report.text ? line.Format(form, state.project.Name, state.job.Name, now.date, now.clock,
                                     user, *report.text)
                       : line.Format(form, state.project.Name, state.job.Name, report.number,
                                     now.date, now.clock, user);
  };
  const std::u16string_view german = report.text ? textLineTemplate : errorLineTemplate;
  // A translation may take the same values and still be refused, for a width beyond all limits.
  if (!format(templateText(report.text ? textLineId : errorLineId, german))) format(german);
  line.units().resize(makeOneLine(line.units().data(), line.units().size()));
  std::string bytes = line.utf8();
  bytes += systemLineEnd;
  return bytes;
}

std::string_view shortLogLine(const Report& report, std::span<char> buffer) noexcept {
  const ContextState* const state = contextState();
  const std::u16string_view project = state ? cut(state->project.Name) : std::u16string_view();
  const std::u16string_view job = state ? cut(state->job.Name) : std::u16string_view();
  char16_t user[160];
  formatToBuffer(
      user, std::size(user), u"%s (, %ld MB)",
      FormatArgs{state ? cut(state->systemUser.Name) : std::u16string_view(), kpxGetMemSizeMB()});
  const NowTexts now;
  char16_t line[1024] = {};
  if (report.text) {
    formatToBuffer(line, std::size(line), textLineTemplate,
                   FormatArgs{project, job, now.date, now.clock, user, *report.text});
  } else {
    formatToBuffer(line, std::size(line), errorLineTemplate,
                   FormatArgs{project, job, report.number, now.date, now.clock, user});
  }
  const std::size_t length = makeOneLine(line, std::char_traits<char16_t>::length(line));
  std::size_t size = 0;
  for (std::size_t i = 0; i < length && size + 4 + systemLineEnd.size() <= buffer.size();) {
    size += encodeUtf8(nextCodePoint({line, length}, i), buffer.data() + size);
  }
  std::copy(systemLineEnd.begin(), systemLineEnd.end(), buffer.data() + size);
  return {buffer.data(), size + systemLineEnd.size()};
}

}  // namespace kpx::detail
