#include "kpx/context/ErrorLog.h"

#include <algorithm>
#include <new>
#include <optional>
#include <string>

#include "kpx/context/internal/ReportTemplates.h"
#include "kpx/platform/FileBytes.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/support/texts/LanguageFile.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/support/texts/TextTemplate.h"
#include "kpx/text/CKpxCalendar.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/SingleByte.h"
#include "kpx/text/TextTools.h"
#include "kpx/text/Utf.h"
#include "kpx/text/Wildcards.h"

namespace kpx {
namespace {

using View = std::u16string_view;

// Fields of both forms: project, job, number in one of them, date, time, user, text in the other.
constexpr std::size_t dateLength = 10;
constexpr std::size_t clockLength = 8;

bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }

/// Whether a text has the shape, in which 0 stands for any digit.
bool hasShape(View text, View shape) noexcept {
  return text.size() == shape.size() &&
         std::equal(text.begin(), text.end(), shape.begin(), [](char16_t unit, char16_t wanted) {
           return wanted == u'0' ? isDigit(unit) : unit == wanted;
         });
}

std::optional<TIME> timeOf(View date, View clock) noexcept {
  if (!hasShape(date, u"00.00.0000") || !hasShape(clock, u"00:00:00")) return std::nullopt;
  const TIME time{detail::dateOfText(date).date, detail::clockOfText(clock).time};
  if (!CKpxCalendar::isValid(unpackTime(time))) return std::nullopt;
  return time;
}

/// "name (computer, 16384 MB)" in its two parts. A name may have brackets of its own.
void splitUser(View field, ErrorLogEntry& entry) {
  const std::size_t open = field.rfind(u" (");
  if (open != View::npos && field.ends_with(u')')) {
    entry.user = field.substr(0, open);
    entry.machine = field.substr(open + 2, field.size() - open - 3);
  } else {
    entry.user = field;
  }
}

CString decoded(std::string_view line) {
  std::u16string text;
  if (appendUtf8(text, line) != std::string::npos) {
    text.clear();
    constexpr int windows1252 = 1252;
    decodeSingleByte(windows1252, line, text);
  }
  return CString(std::move(text));
}

/// Where date and time stand in a line, with the texts around them.
struct TimeField {
  TIME time;
  std::size_t begin;
  std::size_t end;
};

std::optional<TimeField> findTime(View line, View beforeDate, View beforeClock, View behindClock) {
  for (std::size_t begin = 0;; ++begin) {
    begin = line.find(beforeDate, begin);
    if (begin == View::npos) return std::nullopt;
    std::size_t next = begin + beforeDate.size();
    const View date = line.substr(next, dateLength);
    next = std::min(next + dateLength, line.size());
    if (!line.substr(next).starts_with(beforeClock)) continue;
    next += beforeClock.size();
    const View clock = line.substr(next, clockLength);
    next = std::min(next + clockLength, line.size());
    if (!line.substr(next).starts_with(behindClock)) continue;
    if (const auto time = timeOf(date, clock)) {
      return TimeField{*time, begin, next + behindClock.size()};
    }
  }
}

/// Takes the last number behind the text in front of it away from the end of `names`.
bool cutNumber(View& names, View beforeNumber, std::int32_t& number) {
  const std::size_t place = names.rfind(beforeNumber);
  if (place == View::npos) return false;
  const View text = names.substr(place + beforeNumber.size());
  const View digits = text.starts_with(u'-') ? text.substr(1) : text;
  if (digits.empty() || !std::all_of(digits.begin(), digits.end(), isDigit)) return false;
  number = detail::textAsLong(text);
  names = names.substr(0, place);
  return true;
}

}  // namespace

ErrorLogReader::ErrorLogReader() {
  addForm(detail::errorLineTemplate, true);
  addForm(detail::textLineTemplate, false);
  addTranslation(storedText(detail::errorLineId), detail::errorLineTemplate, true);
  addTranslation(storedText(detail::textLineId), detail::textLineTemplate, false);
}

void ErrorLogReader::addTranslation(View text, View german, bool hasNumber) {
  if (text != german && takeSameValues(text, german)) addForm(text, hasNumber);
}

void ErrorLogReader::addLanguages(const CString& folder) {
  std::vector<CString> names;
  if (!fileSystem().list(folder, names)) return;
  for (const CString& name : names) {
    FileBytes bytes;
    TextList list;
    if (name.Right(4).CompareNoCase(u".LNG") != 0) continue;
    if (!fileSystem().read(detail::joinPath(folder, name), bytes)) continue;
    if (readLanguageFile(bytes.view(), list).hasFailed) throw std::bad_alloc();
    for (const TextEntry& entry : list.entries) {
      CString text = entry.text;
      text.Replace(u"\r\n", u"\n");
      if (entry.id == detail::errorLineId) addTranslation(text, detail::errorLineTemplate, true);
      if (entry.id == detail::textLineId) addTranslation(text, detail::textLineTemplate, false);
    }
  }
}

void ErrorLogReader::addForm(View text, bool hasNumber) {
  Form form;
  form.hasNumber = hasNumber;
  std::size_t from = 0;
  for (;;) {
    const Placeholder next = nextPlaceholder(text, from);
    const bool isLast = next.kind == PlaceholderKind::none;
    CString literal(text.substr(from, (isLast ? text.size() : next.begin) - from));
    literal.Replace(u"%%", u"%");
    if (isLast) literal.TrimRight(u"\n");
    form.literals.push_back(std::move(literal));
    if (isLast) break;
    from = next.end;
  }
  forms_.push_back(std::move(form));
}

bool ErrorLogReader::readForm(const Form& form, View line, ErrorLogEntry& entry) {
  const std::vector<CString>& literals = form.literals;
  const std::size_t dateField = form.hasNumber ? 3 : 2;
  if (!line.ends_with(literals.back())) return false;
  line.remove_suffix(literals.back().view().size());
  if (!line.starts_with(literals[0])) return false;
  line.remove_prefix(literals[0].view().size());

  // Date and time are the only fields whose shape is known, so they are the anchor.
  const std::optional<TimeField> time =
      findTime(line, literals[dateField], literals[dateField + 1], literals[dateField + 2]);
  if (!time) return false;
  View names = line.substr(0, time->begin);
  std::int32_t number = 0;
  if (form.hasNumber && !cutNumber(names, literals[2], number)) return false;
  const std::size_t job = names.find(literals[1]);
  if (job == View::npos) return false;

  View user = line.substr(time->end);
  View text;
  if (!form.hasNumber) {
    const View beforeText = literals[dateField + 3];
    const std::size_t place = user.find(beforeText);
    if (place == View::npos) return false;
    text = user.substr(place + beforeText.size());
    user = user.substr(0, place);
  }
  entry.kind = form.hasNumber ? ErrorLogEntry::Kind::number : ErrorLogEntry::Kind::text;
  entry.number = number;
  entry.project = names.substr(0, job);
  entry.job = names.substr(job + literals[1].view().size());
  entry.time = time->time;
  splitUser(user, entry);
  entry.text = text;
  return true;
}

ErrorLogEntry ErrorLogReader::read(std::string_view line) const {
  ErrorLogEntry entry;
  const CString text = decoded(line);
  for (const Form& form : forms_) {
    if (readForm(form, text, entry)) return entry;
  }
  entry.text = text;
  return entry;
}

std::size_t ErrorLogReader::readAll(std::string_view bytes, bool isWhole,
                                    const std::function<void(ErrorLogEntry&&)>& take) {
  std::size_t from = 0;
  while (from < bytes.size()) {
    const std::size_t found = bytes.find('\n', from);
    if (found == std::string_view::npos && !isWhole) break;
    const std::size_t end = std::min(found, bytes.size());
    std::string_view line = bytes.substr(from, end - from);
    while (line.ends_with('\r')) line.remove_suffix(1);
    from = std::min(end + 1, bytes.size());
    ++lineCount_;
    if (line.empty()) continue;
    ErrorLogEntry entry = read(line);
    entry.line = lineCount_;
    take(std::move(entry));
  }
  return from;
}

bool ErrorLogFilter::isSet() const noexcept {
  return !numbers.empty() || !user.IsEmpty() || !project.IsEmpty() || from != 0.0 || to != 0.0;
}

bool ErrorLogFilter::wants(const ErrorLogEntry& entry) const {
  if (!isSet()) return true;
  if (entry.kind == ErrorLogEntry::Kind::broken) return false;
  const auto matches = [](CString pattern, CString text) {
    return pattern.IsEmpty() || detail::matchesWildcards(text.MakeLower(), pattern.MakeLower());
  };
  if (!numbers.empty() &&
      (entry.kind != ErrorLogEntry::Kind::number ||
       std::find(numbers.begin(), numbers.end(), entry.number) == numbers.end())) {
    return false;
  }
  const double time = detail::doubleOfTime(entry.time);
  return matches(user, entry.user) && matches(project, entry.project) &&
         (from == 0.0 || time >= from) && (to == 0.0 || time <= to);
}

}  // namespace kpx
