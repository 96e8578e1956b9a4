#include "kpx/xml/AttributeReader.h"

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <cstring>

#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/internal/NameUnits.h"
#include "kpx/xml/internal/UnitScan.h"

namespace kpx {
namespace {

constexpr bool isQuote(char16_t unit) noexcept { return unit == u'"' || unit == u'\''; }

constexpr bool endsAttributeName(char16_t unit) noexcept {
  return unit <= u'=' && (detail::isMarkupSpace(unit) || unit == u'=' || unit == u'/');
}

// The first `unit` in [from, end), else `end`. Up to `limit` the text may be read too: values are
// short, so that one block mostly does, even if it is longer than the value.
const char16_t* findUnit(const char16_t* from, const char16_t* end, const char16_t* limit,
                         char16_t unit) noexcept {
  for (; from < end && limit - from >= detail::UnitBlock::units; from += detail::UnitBlock::units) {
    const auto found = detail::UnitBlock(from).equal(static_cast<char>(unit));
    if (found != 0) return std::min(from + std::countr_zero(found), end);
  }
  while (from < end && *from != unit) ++from;
  return std::min(from, end);
}
const char16_t* findUnit(const char16_t* from, const char16_t* end, char16_t unit) noexcept {
  return findUnit(from, end, end, unit);
}

// Compares four units at a time; names are too short for a call.
bool areEqual(const char16_t* left, const char16_t* right, std::size_t count) noexcept {
  for (; count >= 4; count -= 4, left += 4, right += 4) {
    std::uint64_t a;
    std::uint64_t b;
    std::memcpy(&a, left, sizeof a);
    std::memcpy(&b, right, sizeof b);
    if (a != b) return false;
  }
  while (count > 0 && *left == *right) ++left, ++right, --count;
  return count == 0;
}

const char16_t* skipSpace(const char16_t* from, const char16_t* end) noexcept {
  while (from < end && detail::isMarkupSpace(*from)) ++from;
  return from;
}

}  // namespace

AttributeReader::AttributeReader(std::u16string_view startTag) noexcept : tag_(startTag) {
  if (tag_.size() < 3) return;
  first_ = 1 + static_cast<int>(detail::tagNameOf(tag_).size());
  last_ = static_cast<int>(tag_.size()) - (tag_[tag_.size() - 2] == u'/' ? 2 : 1);
  rewind();
}

// Reads an attribute that is written as it mostly is: one blank, a short name, "=", double quotes.
bool AttributeReader::scanUsual(int from, Span& found) const noexcept {
  constexpr int block = detail::UnitBlock::units;
  if (last_ - from <= 2 * block) return false;
  const char16_t* const name = tag_.data() + from + 1;
  const detail::UnitBlock units(name);
  const auto equals = units.equal('=');
  const auto length = std::countr_zero(equals | 1u << block);
  if (name[-1] != u' ' || length == 0 || length == block || name[length + 1] != u'"') return false;
  const auto others = units.equal(' ') | units.equal('/') | units.equal('\n') | units.equal('\r') |
                      units.equal('\t');
  if (std::countr_zero(others | 1u << block) < length) return false;
  const char16_t* const value = name + length + 2;
  const char16_t* const close = findUnit(value, tag_.data() + last_, u'"');
  found.nameBegin = from + 1;
  found.nameEnd = found.nameBegin + length;
  found.valueBegin = found.nameEnd + 2;
  found.valueEnd = found.valueBegin + static_cast<int>(close - value);
  found.end = std::min(found.valueEnd + 1, last_);
  return true;
}

bool AttributeReader::scan(int from, Span& found) const noexcept {
  if (scanUsual(from, found)) return true;
  const char16_t* const begin = tag_.data();
  const char16_t* const end = begin + last_;
  const char16_t* position = begin + from;
  const auto offset = [begin](const char16_t* at) { return static_cast<int>(at - begin); };
  for (;;) {
    while (position < end && (detail::isMarkupSpace(*position) || *position == u'/')) ++position;
    if (position >= end) return false;
    const char16_t* const name = position;
    while (position < end && !endsAttributeName(*position)) ++position;
    found.nameBegin = offset(name);
    found.nameEnd = offset(position);

    const char16_t* const equals = skipSpace(position, end);
    if (equals == end || *equals != u'=') {
      found.valueBegin = found.valueEnd = found.end = found.nameEnd;
      return true;
    }
    position = skipSpace(equals + 1, end);
    if (position < end && isQuote(*position)) {
      const char16_t* const close = findUnit(position + 1, end, *position);
      found.valueBegin = offset(position + 1);
      found.valueEnd = offset(close);
      position = close < end ? close + 1 : end;
    } else {
      if (position == end) position = equals + 1;
      found.valueBegin = offset(position);
      while (position < end && !detail::isMarkupSpace(*position)) {
        if (*position++ != u'=') continue;
        // A quote behind any "=" keeps a ">" from ending the tag, so it keeps blanks in the value.
        const char16_t* const quote = skipSpace(position, end);
        if (quote < end && isQuote(*quote)) {
          const char16_t* const close = findUnit(quote + 1, end, *quote);
          position = close < end ? close + 1 : end;
        }
      }
      found.valueEnd = offset(position);
    }
    found.end = offset(position);
    if (found.nameEnd > found.nameBegin) return true;  // a value without a name is passed over
  }
}

// One of 256 marks for a name; different names may share one.
unsigned AttributeReader::markOf(std::u16string_view name) noexcept {
  if (name.empty()) return 0;
  return (29u * static_cast<unsigned>(name.size()) + 5u * name.front() + 11u * name.back() +
          67u * name[name.size() / 2]) &
         255u;
}

bool AttributeReader::next() noexcept {
  passedAny_ = true;
  // In place: copying what was written just now word by word would wait for the words.
  if (scanUsual(current_.end, current_)) return true;
  Span found;
  if (!scan(current_.end, found)) return false;
  current_ = found;
  return true;
}

bool AttributeReader::findBetween(int from, int to, std::u16string_view name) noexcept {
  for (Span found; from < to && scan(from, found); from = found.end) {
    pass(markOf(tag_.substr(static_cast<std::size_t>(found.nameBegin),
                            static_cast<std::size_t>(found.nameEnd - found.nameBegin))));
    if (static_cast<std::size_t>(found.nameEnd - found.nameBegin) == name.size() &&
        areEqual(tag_.data() + found.nameBegin, name.data(), name.size())) {
      current_ = found;
      return true;
    }
  }
  return false;
}

// Whether the attribute follows at once, written as it is mostly written: ` name="value"`.
bool AttributeReader::isNext(std::u16string_view name) noexcept {
  const char16_t* const at = tag_.data() + current_.end;
  const auto left = static_cast<std::size_t>(last_ - current_.end);
  if (name.empty() || left < name.size() + 4 || at[0] != u' ' || at[name.size() + 1] != u'=' ||
      at[name.size() + 2] != u'"' || !areEqual(at + 1, name.data(), name.size()) ||
      std::any_of(name.begin(), name.end(),
                  [](char16_t unit) { return endsAttributeName(unit); })) {
    return false;
  }
  const char16_t* const end = tag_.data() + last_;
  const char16_t* const close = findUnit(at + name.size() + 3, end, u'"');
  if (close == end) return false;
  const auto length = static_cast<int>(name.size());
  current_.nameBegin = current_.end + 1;
  current_.nameEnd = current_.nameBegin + length;
  current_.valueBegin = current_.nameEnd + 2;
  current_.valueEnd = static_cast<int>(close - tag_.data());
  current_.end = current_.valueEnd + 1;
  return true;
}

bool AttributeReader::find(std::u16string_view name) noexcept {
  const int behind = current_.end;
  const unsigned mark = markOf(name);
  // Of a repeated attribute the first counts, whatever was read before.
  if (mayHavePassed(mark) && findBetween(first_, behind, name)) return true;
  if (isNext(name)) {
    pass(mark);
    return true;
  }
  return findBetween(behind, last_, name);
}

bool AttributeReader::read(std::u16string_view name, CString& value) {
  if (!find(name)) return false;
  this->value(value);
  return true;
}

std::u16string_view AttributeReader::name() const noexcept {
  return tag_.substr(static_cast<std::size_t>(current_.nameBegin),
                     static_cast<std::size_t>(current_.nameEnd - current_.nameBegin));
}

std::u16string_view AttributeReader::rawValue() const noexcept {
  return tag_.substr(static_cast<std::size_t>(current_.valueBegin),
                     static_cast<std::size_t>(current_.valueEnd - current_.valueBegin));
}

void AttributeReader::value(CString& into) const {
  const std::u16string_view raw = rawValue();
  const char16_t* const end = raw.data() + raw.size();
  // Mostly there is no reference in it, and the memory of the old value is enough.
  if (findUnit(raw.data(), end, tag_.data() + tag_.size(), u'&') == end) {
    into.Assign(raw);
  } else {
    into = value();
  }
}

CString AttributeReader::value() const {
  CString result;
  detail::unescapeInto(result.units(), rawValue());
  return result;
}

}  // namespace kpx
