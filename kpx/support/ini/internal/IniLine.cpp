#include "kpx/support/ini/internal/IniLine.h"

#include <algorithm>

#include "kpx/text/Utf.h"

namespace kpx::detail {
namespace {

constexpr std::u16string_view blanks = u" \t";

std::u16string_view trimmed(std::u16string_view text) noexcept {
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == text.npos) return {};
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace

bool IniLineReader::next(std::u16string_view& line) noexcept {
  if (rest_.empty()) return false;
  // The line end does not count, so a line of exactly the greatest length is one line.
  const std::size_t window = std::min(rest_.size(), longestIniLine + 2);
  const std::size_t feed = rest_.substr(0, window).find(u'\n');
  std::size_t length = feed == rest_.npos ? window : feed + 1;
  if (withoutLineEnd(rest_.substr(0, length)).size() > longestIniLine) {
    length = longestIniLine;
    // The halves of a pair stay together.
    if (isHighSurrogate(rest_[length - 1]) && isLowSurrogate(rest_[length])) --length;
  }
  line = rest_.substr(0, length);
  rest_.remove_prefix(length);
  return true;
}

std::u16string_view withoutLineEnd(std::u16string_view line) noexcept {
  if (!line.ends_with(u'\n')) return line;
  line.remove_suffix(1);
  if (line.ends_with(u'\r')) line.remove_suffix(1);
  return line;
}

std::size_t findOutsideQuotes(std::u16string_view line, char16_t delimiter) noexcept {
  bool quotes = true;  // whether there can be another pair
  for (std::size_t at = 0; at < line.size(); ++at) {
    if (line[at] == delimiter) return at;
    if (line[at] != u'"' || !quotes) continue;
    const std::size_t end = line.find(u'"', at + 1);
    if (end != line.npos) {
      at = end;
    } else {
      quotes = false;
    }
  }
  return line.npos;
}

bool sectionName(std::u16string_view line, std::u16string_view& name) noexcept {
  const std::size_t first = line.find_first_not_of(blanks);
  if (first == line.npos || line[first] != u'[') return false;
  const std::size_t end = line.find(u']', first + 1);
  if (end == line.npos) return false;
  name = line.substr(first + 1, end - first - 1);
  return true;
}

IniLine parseIniLine(std::u16string_view line) noexcept {
  if (line.find_first_not_of(blanks) == line.npos) return {IniLineKind::blank, {}, {}};
  if (line.front() == u';') return {IniLineKind::comment, {}, {}};
  std::u16string_view name;
  if (sectionName(line, name)) return {IniLineKind::section, name, {}};
  const std::size_t equals = findOutsideQuotes(line, u'=');
  if (equals == line.npos) return {IniLineKind::other, {}, {}};
  return {IniLineKind::key, trimmed(line.substr(0, equals)), line.substr(equals + 1)};
}

void decodeIniValue(std::u16string_view stored, CString& value) {
  value.Assign(stored);
  if (stored.size() < 3) return;
  std::u16string& units = value.units();
  for (std::size_t at = 1; (at = units.find(u"\\n", at)) != units.npos; at += 2) {
    units[at] = u' ';
    units[at + 1] = u'\n';
  }
}

std::u16string encodeIniValue(std::u16string_view value) {
  std::u16string stored;
  stored.reserve(value.size() + 2);
  for (std::size_t at = 0; at < value.size();) {
    const std::u16string_view rest = value.substr(at);
    std::size_t length = 0;
    if ((rest.starts_with(u" \n") && at > 0) || rest.starts_with(u"\r\n")) {
      length = 2;
    } else if (rest.front() == u'\n' || rest.front() == u'\r') {
      length = 1;
    }
    if (length == 0) {
      stored.push_back(rest.front());
      ++at;
      continue;
    }
    if (stored.empty()) stored.push_back(u' ');
    stored += u"\\n";
    at += length;
  }
  return stored;
}

}  // namespace kpx::detail
