#include "kpx/settings/ValueCheck.h"

#include <cmath>

#include "kpx/text/NumberText.h"
#include "kpx/text/Utf.h"

namespace kpx {
namespace {

constexpr bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }

std::size_t skipDigits(std::u16string_view text, std::size_t at) noexcept {
  while (at < text.size() && isDigit(text[at])) ++at;
  return at;
}

std::u16string_view withoutBlanksBefore(std::u16string_view text) noexcept {
  const std::size_t first = text.find_first_not_of(u" \t\n\v\f\r");
  return first == text.npos ? std::u16string_view() : text.substr(first);
}

std::size_t behindSign(std::u16string_view text) noexcept {
  return !text.empty() && (text[0] == u'+' || text[0] == u'-') ? 1 : 0;
}

bool isWholeInteger(std::u16string_view text) noexcept {
  const std::size_t sign = behindSign(text);
  return text.size() > sign && skipDigits(text, sign) == text.size();
}

/// Digits with at most one decimal sign, and an exponent: what readers consume whole.
bool isWholeReal(std::u16string_view text) noexcept {
  std::size_t at = behindSign(text);
  const std::size_t first = at;
  at = skipDigits(text, at);
  std::size_t digits = at - first;
  if (at < text.size() && (text[at] == u'.' || text[at] == u',')) {
    const std::size_t fraction = ++at;
    at = skipDigits(text, at);
    digits += at - fraction;
  }
  if (digits == 0) return false;
  if (at < text.size() && (text[at] == u'e' || text[at] == u'E')) {
    ++at;
    if (at < text.size() && (text[at] == u'+' || text[at] == u'-')) ++at;
    const std::size_t exponent = at;
    at = skipDigits(text, at);
    if (at == exponent) return false;
  }
  return at == text.size();
}

/// Digits in groups of three with one mark between the groups, and perhaps a fraction.
bool hasThousandsMarks(std::u16string_view text) noexcept {
  constexpr std::u16string_view marks = u".,' \u00A0\u2019\u202F";
  std::size_t at = behindSign(text);
  std::size_t end = skipDigits(text, at);
  if (end == at || end - at > 3 || end == text.size()) return false;
  const char16_t mark = text[end];
  if (marks.find(mark) == marks.npos) return false;
  int groups = 0;
  while (end < text.size() && text[end] == mark) {
    at = end + 1;
    end = skipDigits(text, at);
    if (end - at != 3) return false;
    ++groups;
  }
  if (end < text.size() && (text[end] == u'.' || text[end] == u',')) {
    end = skipDigits(text, end + 1);
  }
  return groups > 0 && end == text.size();
}

bool inRange(std::u16string_view integer) noexcept {
  const bool negative = integer[0] == u'-';
  const std::int64_t limit = negative ? 2147483648 : 2147483647;
  std::int64_t value = 0;
  for (const char16_t unit : integer.substr(behindSign(integer))) {
    value = value * 10 + (unit - u'0');
    if (value > limit) return false;
  }
  return true;
}

ValueCheck checkInteger(ValueKind kind, std::u16string_view text) {
  ValueCheck check;
  if (!isWholeInteger(text)) {
    check.problem = hasThousandsMarks(text)   ? ValueProblem::thousandsMark
                    : kind == ValueKind::flag ? ValueProblem::notFlag
                                              : ValueProblem::notInteger;
  } else if (!inRange(text)) {
    check.problem = kind == ValueKind::flag ? ValueProblem::notFlag : ValueProblem::outOfRange;
  } else {
    const std::int32_t value = detail::textAsLong(text);
    if (kind == ValueKind::flag && value != 0 && value != 1) {
      check.problem = ValueProblem::notFlag;
    } else {
      detail::longAsTextInto(check.normal, value);
    }
  }
  return check;
}

ValueCheck checkReal(std::u16string_view text, int decimals) {
  ValueCheck check;
  // The mark of an undefined number is a value of its own: 8888.88888.
  if (text != undefinedNumberText && !isWholeReal(text)) {
    check.problem = hasThousandsMarks(text) ? ValueProblem::thousandsMark : ValueProblem::notReal;
    return check;
  }
  const double value = detail::textAsDouble(text);
  detail::doubleAsTextInto(check.normal, value, decimals, u'.');
  if (!std::isfinite(value) || check.normal == undefinedNumberText) {
    check.problem = ValueProblem::outOfRange;
    check.normal.Empty();
  }
  return check;
}

bool isStorable(std::u16string_view text) noexcept {
  for (std::size_t at = 0; at < text.size(); ++at) {
    const char16_t unit = text[at];
    if (unit < 0x20 && unit != u'\t' && unit != u'\n' && unit != u'\r') return false;
    if (unit == 0xFFFE || unit == 0xFFFF || isLowSurrogate(unit)) return false;
    if (isHighSurrogate(unit)) {
      if (++at == text.size() || !isLowSurrogate(text[at])) return false;
    }
  }
  return true;
}

}  // namespace

ValueCheck checkValueText(ValueKind kind, std::u16string_view text, int decimals) {
  if (kind == ValueKind::text) {
    if (!isStorable(text)) return {ValueProblem::notStorable, {}};
    return {ValueProblem::none, text};
  }
  const std::u16string_view number = withoutBlanksBefore(text);
  if (number.empty()) return {ValueProblem::empty, {}};
  return kind == ValueKind::real ? checkReal(number, decimals) : checkInteger(kind, number);
}

const char* describe(ValueProblem problem) noexcept {
  switch (problem) {
    case ValueProblem::none:
      return "is valid";
    case ValueProblem::empty:
      return "is empty";
    case ValueProblem::thousandsMark:
      return "has a thousands mark, and would be read as another number";
    case ValueProblem::notInteger:
      return "is not a whole number";
    case ValueProblem::notFlag:
      return "is neither 0 nor 1";
    case ValueProblem::notReal:
      return "is not a number";
    case ValueProblem::outOfRange:
      return "is too large";
    case ValueProblem::notStorable:
      return "holds characters that XML cannot carry";
  }
  return "is not valid";
}

}  // namespace kpx
