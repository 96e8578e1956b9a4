#include "kpx/xml/AttributeReader.h"

#include <bit>
#include <cstddef>

#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/internal/NameUnits.h"
#include "kpx/xml/internal/UnitScan.h"

namespace kpx {
namespace {

constexpr bool isQuote(char16_t unit) noexcept { return unit == u'"' || unit == u'\''; }

constexpr bool endsAttributeName(char16_t unit) noexcept {
  return unit <= u'=' && (detail::isMarkupSpace(unit) || unit == u'=' || unit == u'/');
}

// The first `quote` in [from, end), else `end`. Values are short, so that one block mostly does.
const char16_t* findQuote(const char16_t* from, const char16_t* end, char16_t quote) noexcept {
  while (end - from >= detail::UnitBlock::units) {
    const auto found = detail::UnitBlock(from).equal(static_cast<char>(quote));
    if (found != 0) return from + std::countr_zero(found);
    from += detail::UnitBlock::units;
  }
  while (from < end && *from != quote) ++from;
  return from;
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

bool AttributeReader::scan(int from, Span& found) const noexcept {
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
      const char16_t* const close = findQuote(position + 1, end, *position);
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
          const char16_t* const close = findQuote(quote + 1, end, *quote);
          position = close < end ? close + 1 : end;
        }
      }
      found.valueEnd = offset(position);
    }
    found.end = offset(position);
    if (found.nameEnd > found.nameBegin) return true;  // a value without a name is passed over
  }
}

bool AttributeReader::next() noexcept {
  Span found;
  if (!scan(current_.end, found)) return false;
  current_ = found;
  return true;
}

bool AttributeReader::findBetween(int from, int to, std::u16string_view name) noexcept {
  for (Span found; from < to && scan(from, found); from = found.end) {
    if (static_cast<std::size_t>(found.nameEnd - found.nameBegin) == name.size() &&
        tag_.substr(static_cast<std::size_t>(found.nameBegin), name.size()) == name) {
      current_ = found;
      return true;
    }
  }
  return false;
}

bool AttributeReader::find(std::u16string_view name) noexcept {
  const int behind = current_.end;
  return findBetween(behind, last_, name) || findBetween(first_, behind, name);
}

bool AttributeReader::read(std::u16string_view name, CString& value) {
  if (!find(name)) return false;
  value = this->value();
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

CString AttributeReader::value() const {
  CString result;
  detail::unescapeInto(result.units(), rawValue());
  return result;
}

}  // namespace kpx
