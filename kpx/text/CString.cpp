#include "kpx/text/CString.h"

#include <algorithm>
#include <ostream>

#include "kpx/text/CaseFold.h"
#include "kpx/text/Formatter.h"
#include "kpx/text/Utf.h"

namespace kpx {
namespace {

constexpr std::u16string_view whiteSpace = u" \t\n\r\f\v";

std::size_t clampIndex(int index, std::size_t length) noexcept {
  return index < 0 ? 0 : std::min(static_cast<std::size_t>(index), length);
}

int offsetOrMinusOne(std::size_t position) noexcept {
  return position == std::u16string_view::npos ? -1 : static_cast<int>(position);
}

}  // namespace

CString::CString(const wchar_t* text)
    : CString(text != nullptr ? std::wstring_view(text) : std::wstring_view()) {}

CString CString::fromUtf8(std::string_view bytes) {
  CString result;
  appendUtf8(result.text_, bytes);
  return result;
}

std::string CString::utf8() const { return utf8FromUtf16(text_); }

std::wstring CString::wide() const { return wideFromUtf16(text_); }

CString CString::joined(std::u16string_view a, std::u16string_view b) {
  CString sum;
  sum.text_.reserve(a.size() + b.size());
  sum.text_.append(a).append(b);
  return sum;
}

void CString::repeat(std::u16string_view character, int count) {
  const std::size_t times = count > 0 ? static_cast<std::size_t>(count) : 0;
  if (character.size() == 1) {
    text_.assign(times, character[0]);
  } else {
    for (std::size_t i = 0; i < times; ++i) text_.append(character);
  }
}

void CString::assign(std::u16string_view text) { text_.assign(text); }

void CString::append(std::u16string_view text) { text_.append(text); }

int CString::compare(std::u16string_view other) const noexcept {
  return detail::compareText(text_, other);
}

int CString::compareNoCase(std::u16string_view other) const noexcept {
  return detail::compareTextNoCase(text_, other);
}

int CString::find(std::u16string_view part, int start) const noexcept {
  const std::size_t from = clampIndex(start, text_.size());
  return offsetOrMinusOne(part.size() == 1 ? view().find(part[0], from) : view().find(part, from));
}

int CString::reverseFind(std::u16string_view part) const noexcept {
  return offsetOrMinusOne(view().rfind(part));
}

int CString::findOneOf(std::u16string_view units) const noexcept {
  return offsetOrMinusOne(view().find_first_of(units));
}

CString CString::Left(int count) const {
  return CString(view().substr(0, clampIndex(count, text_.size())));
}

CString CString::Right(int count) const {
  return CString(view().substr(text_.size() - clampIndex(count, text_.size())));
}

CString CString::Mid(int first) const {
  return CString(view().substr(clampIndex(first, text_.size())));
}

CString CString::Mid(int first, int count) const {
  const std::size_t begin = clampIndex(first, text_.size());
  return CString(view().substr(begin, clampIndex(count, text_.size() - begin)));
}

CString CString::SpanIncluding(const TextArg& units) const {
  return CString(view().substr(0, view().find_first_not_of(TextUnits(units))));
}

CString CString::SpanExcluding(const TextArg& units) const {
  return CString(view().substr(0, view().find_first_of(TextUnits(units))));
}

CString CString::Tokenize(const TextArg& delimiters, int& position) const {
  if (position >= 0) {
    const TextUnits units(delimiters);
    const std::size_t from = clampIndex(position, text_.size());
    const std::size_t begin = view().find_first_not_of(units, from);
    if (begin != std::u16string_view::npos) {
      const std::size_t end = std::min(view().find_first_of(units, begin), text_.size());
      position = static_cast<int>(std::min(end + 1, text_.size()));
      return CString(view().substr(begin, end - begin));
    }
  }
  position = -1;
  return {};
}

void CString::Truncate(int length) { text_.resize(clampIndex(length, text_.size())); }

int CString::insert(int index, std::u16string_view text) {
  text_.insert(clampIndex(index, text_.size()), text);
  return GetLength();
}

int CString::Delete(int index, int count) {
  const std::size_t begin = clampIndex(index, text_.size());
  text_.erase(begin, clampIndex(count, text_.size() - begin));
  return GetLength();
}

int CString::replaceUnit(char16_t from, char16_t to) noexcept {
  int count = 0;
  for (char16_t& unit : text_) {
    if (unit == from) {
      unit = to;
      ++count;
    }
  }
  return count;
}

int CString::replace(std::u16string_view from, std::u16string_view to) {
  if (from.size() == 1 && to.size() == 1) return replaceUnit(from[0], to[0]);
  // By value, since the argument may be a part of this text.
  if (from.size() == 1 && to.empty()) return static_cast<int>(std::erase(text_, char16_t{from[0]}));
  std::size_t hit = from.empty() ? std::u16string_view::npos : view().find(from);
  if (hit == std::u16string_view::npos) return 0;
  // Built aside in one pass: arguments may be parts of this text, and many hits stay linear.
  std::u16string result;
  result.reserve(text_.size());
  std::size_t copied = 0;
  int count = 0;
  for (; hit != std::u16string_view::npos; hit = view().find(from, copied)) {
    result.append(text_, copied, hit - copied).append(to);
    copied = hit + from.size();
    ++count;
  }
  result.append(text_, copied);
  text_ = std::move(result);
  return count;
}

CString& CString::MakeUpper() noexcept {
  for (char16_t& unit : text_) unit = raiseCase(unit);
  return *this;
}

CString& CString::MakeLower() noexcept {
  for (char16_t& unit : text_) unit = foldCase(unit);
  return *this;
}

CString& CString::MakeReverse() noexcept {
  std::reverse(text_.begin(), text_.end());
  return *this;
}

CString& CString::Trim() { return Trim(whiteSpace); }
CString& CString::TrimLeft() { return TrimLeft(whiteSpace); }
CString& CString::TrimRight() { return TrimRight(whiteSpace); }

CString& CString::Trim(const TextArg& units) {
  const TextUnits cut(units);
  // With nothing to keep, find_last_not_of answers npos, and npos + 1 is 0.
  const std::size_t end = view().find_last_not_of(cut) + 1;
  const std::size_t begin = std::min(view().find_first_not_of(cut), end);
  text_.resize(end);
  text_.erase(0, begin);
  return *this;
}

CString& CString::TrimLeft(const TextArg& units) {
  text_.erase(0, std::min(view().find_first_not_of(TextUnits(units)), text_.size()));
  return *this;
}

CString& CString::TrimRight(const TextArg& units) {
  text_.resize(view().find_last_not_of(TextUnits(units)) + 1);
  return *this;
}

char16_t* CString::GetBuffer(int minLength) {
  if (minLength > GetLength()) text_.resize(static_cast<std::size_t>(minLength));
  return text_.data();
}

void CString::ReleaseBuffer(int newLength) {
  if (newLength < 0) {
    text_.resize(std::min(view().find(u'\0'), text_.size()));
  } else {
    Truncate(newLength);
  }
}

bool CString::formatInto(std::u16string_view format, const FormatArgs& args, bool append) {
  if (append) return detail::appendFormatted(text_, format, args) >= 0;
  std::u16string result;
  if (detail::appendFormatted(result, format, args) < 0) return false;
  text_ = std::move(result);
  return true;
}

std::ostream& operator<<(std::ostream& out, const CString& text) { return out << text.utf8(); }

}  // namespace kpx
