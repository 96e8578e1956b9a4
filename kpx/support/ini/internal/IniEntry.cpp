#include "kpx/support/ini/internal/IniEntry.h"

#include <utility>

#include "kpx/support/ini/internal/IniLine.h"

namespace kpx::detail {

void IniEntry::setRead(std::u16string_view before, std::u16string_view line,
                       std::u16string_view name, std::u16string_view value) noexcept {
  before_ = before;
  line_ = line;
  nameLength_ = static_cast<std::uint16_t>(name.size());
  nameAt_ = nameLength_ == 0 ? 0 : static_cast<std::uint16_t>(name.data() - line.data());
  valueLength_ = static_cast<std::uint16_t>(value.size());
  valueAt_ = valueLength_ == 0 ? 0 : static_cast<std::uint16_t>(value.data() - line.data());
}

IniEntry::Own& IniEntry::own() {
  if (!own_) own_ = std::make_unique<Own>();
  return *own_;
}

void IniEntry::setLine(std::u16string line, std::size_t nameAt, std::size_t nameLength,
                       std::size_t valueLength) {
  Own& mine = own();
  mine.line = std::move(line);
  line_ = mine.line;
  nameAt_ = static_cast<std::uint16_t>(nameAt);
  nameLength_ = static_cast<std::uint16_t>(nameLength);
  valueAt_ = valueLength == 0 ? 0 : static_cast<std::uint16_t>(nameAt + nameLength + 1);
  valueLength_ = static_cast<std::uint16_t>(valueLength);
}

void IniEntry::setBefore(std::u16string before) {
  Own& mine = own();
  mine.before = std::move(before);
  before_ = mine.before;
}

void IniEntry::setType(const CString& type) {
  if (type.IsEmpty() && !own_) return;
  own().type = type;
}

IniEntry IniEntry::clone() const {
  IniEntry copy;
  copy.before_ = before_;
  copy.line_ = line_;
  copy.nameAt_ = nameAt_;
  copy.nameLength_ = nameLength_;
  copy.valueAt_ = valueAt_;
  copy.valueLength_ = valueLength_;
  copy.state_ = state_;
  if (own_) {
    copy.own_ = std::make_unique<Own>(*own_);
    if (before_.data() == own_->before.data()) copy.before_ = copy.own_->before;
    if (line_.data() == own_->line.data()) copy.line_ = copy.own_->line;
  }
  return copy;
}

CString IniEntry::comment() const {
  CString comment;
  IniLineReader lines(before_);
  for (std::u16string_view line; lines.next(line);) {
    if (!line.starts_with(u';')) continue;
    if (!comment.IsEmpty()) comment += u'\n';
    comment += withoutLineEnd(line);
  }
  return comment;
}

std::u16string withComment(std::u16string_view before, std::u16string_view comment,
                           std::u16string_view lineEnd) {
  std::u16string result;
  const auto append = [&](std::u16string_view lines) {
    // A piece of a line that was too long has no line end of its own.
    if (!result.empty() && result.back() != u'\n' && !lines.empty()) result += lineEnd;
    result += lines;
  };
  bool written = false;
  IniLineReader lines(before);
  for (std::u16string_view line; lines.next(line);) {
    if (!line.starts_with(u';')) {
      append(line);
    } else if (!std::exchange(written, true)) {
      append(comment);
    }
  }
  if (!written) append(comment);
  return result;
}

std::u16string commentLines(std::u16string_view comment, std::u16string_view lineEnd) {
  std::u16string lines;
  while (!comment.empty()) {
    const std::size_t end = comment.find_first_of(u"\r\n");
    const std::u16string_view line = comment.substr(0, end);
    if (!line.starts_with(u';')) lines += u';';
    lines += line;
    lines += lineEnd;
    if (end == comment.npos) break;
    comment.remove_prefix(comment.substr(end).starts_with(u"\r\n") ? end + 2 : end + 1);
  }
  return lines;
}

}  // namespace kpx::detail
