#include "kpx/text/NumberText.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "kpx/text/Formatter.h"
#include "kpx/text/internal/DecimalText.h"
#include "kpx/text/internal/NumberPieces.h"
#include "kpx/text/internal/PowersOfTen.h"
#include "kpx/text/internal/RealParser.h"
#include "kpx/text/Operations.h"

namespace kpx {
namespace {

// A hair above one half, so that decimal halves which a double holds a little too small round up.
constexpr double roundingAddend = 0.5000001;

constexpr double largestDefined = 1e50;
constexpr int significantDigits = 15;

/// Holds every text of the fast roads and of all digits; filled from its end.
struct ShortText {
  char16_t units[40];
  char16_t* begin = units + 40;

  char16_t* end() noexcept { return units + 40; }
  std::u16string_view view() noexcept { return {begin, static_cast<std::size_t>(end() - begin)}; }
};

/// The double nearest to a power of ten, the same on every platform.
double powerOfTen(int exponent) noexcept {
  if (exponent >= 0 && exponent <= detail::largestExactPower) {
    return detail::exactPowersOfTen[exponent];
  }
  // Both operands are exact, so the quotient is the nearest double.
  if (exponent < 0 && exponent >= -detail::largestExactPower) {
    return 1.0 / detail::exactPowersOfTen[-exponent];
  }
  if (exponent > 308) return std::numeric_limits<double>::infinity();
  if (exponent < -323) return 0;
  char text[8] = {'1', 'e'};
  char* const end = std::to_chars(text + 2, text + sizeof text, exponent).ptr;
  return detail::parseReal<char>(text, end, false).value;
}

/// Most tolerances and coordinates: the rounded value is an integer of at most 51 bits divided
/// by an exact power of ten. The distance of that quotient from the decimal fraction is less
/// than half a unit of the last place printed, so its text is the digits of the integer.
bool writeRounded(ShortText& text, double value, int decimals, char16_t point) noexcept {
  if (decimals < 0 || decimals > detail::largestExactPower) return false;
  const double scaled = std::fabs(value) * detail::exactPowersOfTen[decimals] + roundingAddend;
  if (!(scaled < 0x1p51)) return false;
  auto number = static_cast<std::uint64_t>(scaled);
  const bool negative = value < 0 && number != 0;
  char16_t* at = text.end();
  if (decimals > 0) {
    at = detail::writeDigits(at, number, decimals);
    *--at = point;
  }
  at = detail::writeInteger(at, number);
  if (negative) *--at = u'-';
  text.begin = at;
  return true;
}

/// A positive value in decimal: `digits` times ten to `exponent`.
struct Decimal {
  std::uint64_t digits = 0;
  int exponent = 0;
  int length = 0;  // number of digits
};

/// Reads what to_chars writes in scientific form.
Decimal decimalOf(const char* at, const char* end) noexcept {
  Decimal decimal;
  for (; *at != 'e'; ++at) {
    if (*at == '.') continue;
    decimal.digits = decimal.digits * 10 + static_cast<std::uint64_t>(*at - '0');
    ++decimal.length;
  }
  const bool negative = *++at == '-';
  for (++at; at != end; ++at) decimal.exponent = decimal.exponent * 10 + (*at - '0');
  if (negative) decimal.exponent = -decimal.exponent;
  decimal.exponent -= decimal.length - 1;
  return decimal;
}

/// Rounds a positive finite value to 15 significant digits.
Decimal fifteenDigits(double magnitude) noexcept {
  // A decimal of at most 15 digits survives the way through a double and back. So when the value
  // is the double nearest to such a decimal, this decimal is the value rounded to 15 digits.
  for (const int decimals : {0, 4}) {
    const double scale = detail::exactPowersOfTen[decimals];
    const double scaled = magnitude * scale + 0.5;
    if (!(scaled < 1e15)) break;
    const auto digits = static_cast<std::uint64_t>(scaled);
    if (static_cast<double>(digits) / scale == magnitude) return {digits, -decimals};
  }
  char text[40];
  const auto exactly = [&] {
    const auto exact = std::to_chars(text, text + sizeof text, magnitude,
                                     std::chars_format::scientific, significantDigits - 1);
    return decimalOf(text, exact.ptr);
  };
  // Subnormal numbers hold fewer than 15 digits.
  if (magnitude < std::numeric_limits<double>::min()) return exactly();
  const auto shortest =
      std::to_chars(text, text + sizeof text, magnitude, std::chars_format::scientific);
  Decimal decimal = decimalOf(text, shortest.ptr);
  if (decimal.length <= significantDigits) return decimal;
  // Of 16 or 17 digits, the last ones tell how to round: a decimal half way between two of 15
  // digits has 16, so if one lay between the value and the shortest decimal, it would have been
  // preferred as shorter or nearer. Only where the shortest decimal is half way itself, the
  // value decides.
  const std::uint64_t unit = decimal.length == 16 ? 10 : 100;
  const std::uint64_t rest = decimal.digits % unit;
  if (2 * rest == unit) return exactly();
  decimal.digits = decimal.digits / unit + (2 * rest > unit ? 1 : 0);
  decimal.exponent += decimal.length - significantDigits;
  return decimal;
}

void writeAllDigits(ShortText& text, double value, char16_t point) noexcept {
  char16_t* at = text.end();
  const double magnitude = std::fabs(value);
  if (magnitude == 0) {
    *--at = point;
    *--at = u'0';
  } else {
    const Decimal decimal = fifteenDigits(magnitude);
    char16_t buffer[24];
    char16_t* const last = buffer + 24;
    const char16_t* first = detail::writeInteger(last, decimal.digits);
    // The exponent of the value itself, and its digits without trailing zeros.
    const int lead = decimal.exponent + static_cast<int>(last - first) - 1;
    const char16_t* end = last;
    while (end[-1] == u'0') --end;
    const int count = static_cast<int>(end - first);
    if (lead < -1 || lead >= significantDigits) {
      auto size = static_cast<std::uint64_t>(std::abs(lead));
      at = detail::writeDigits(at, size, 3);
      *--at = lead < 0 ? u'-' : u'+';
      *--at = u'e';
      at = std::copy_backward(first + 1, end, at);
      *--at = point;
      *--at = *first;
    } else if (lead < 0) {
      at = std::copy_backward(first, end, at);
      *--at = point;
      *--at = u'0';
    } else {
      const int whole = lead + 1;
      if (count > whole) at = std::copy_backward(first + whole, end, at);
      if (whole < significantDigits) *--at = point;
      for (int i = count; i < whole; ++i) *--at = u'0';
      at = std::copy_backward(first, first + std::min(count, whole), at);
    }
  }
  if (std::signbit(value)) *--at = u'-';
  text.begin = at;
}

/// Every text that has no faster road, at the end of `out`.
void appendSlowly(std::u16string& out, double value, int decimals) {
  if (decimals == scientificDigits) {
    detail::appendFormatted(out, u"%.16e", {value});
  } else if (decimals == allDigits) {
    detail::appendFormatted(out, u"%f", {value});  // only what is not finite comes here
  } else if (!(std::fabs(value) <= largestDefined)) {
    out.append(undefinedNumberText);
  } else if (detail::appendFormatted(out, u"%.*f", {decimals, kpxRunde(value, decimals)}) < 0) {
    throw InvalidArgException();
  }
}

/// Writes to the short text where there is a fast road.
bool writeFast(ShortText& text, double value, int decimals, char16_t separator) noexcept {
  const char16_t point = separator == u',' ? u',' : u'.';
  if (decimals >= 0) return writeRounded(text, value, decimals, point);
  if (decimals != allDigits || !std::isfinite(value)) return false;
  writeAllDigits(text, value, point);
  return true;
}

CString slowText(double value, int decimals, char16_t separator) {
  CString text;
  appendSlowly(text.units(), value, decimals);
  if (separator == u',') text.Replace(u'.', u',');
  return text;
}

}  // namespace

double kpxRunde(double value, int decimals) noexcept {
  const double magnitude = std::fabs(value);
  const double factor = powerOfTen(decimals);
  if (factor == 0) return 0;
  const double scaled = magnitude * factor;
  if (!std::isfinite(scaled)) return value;
  const double rounded = std::floor(scaled + roundingAddend) / factor;
  return value < 0 && rounded > 0 ? -rounded : rounded;
}

CString utlDoubleAsText(double value, int decimals, char16_t separator) {
  if (ShortText text; writeFast(text, value, decimals, separator)) {
    return Guarded("utlDoubleAsText"_text, CString(), [&] { return CString(text.view()); });
  }
  return Guarded("utlDoubleAsText"_text, CString(),
                 [&] { return slowText(value, decimals, separator); });
}

CString detail::doubleAsText(double value, int decimals, char16_t separator) {
  CString result;
  detail::doubleAsTextInto(result, value, decimals, separator);
  return result;
}

void detail::doubleAsTextInto(CString& out, double value, int decimals, char16_t separator) {
  Reported("utlDoubleAsText"_text, [&] {
    if (ShortText text; writeFast(text, value, decimals, separator)) {
      out.Assign(text.view());
    } else {
      out = slowText(value, decimals, separator);
    }
  });
}

namespace {

std::u16string_view writeLong(ShortText& text, std::int32_t value) noexcept {
  const auto wide = static_cast<std::int64_t>(value);
  text.begin =
      detail::writeInteger(text.end(), static_cast<std::uint64_t>(wide < 0 ? -wide : wide));
  if (wide < 0) *--text.begin = u'-';
  return text.view();
}

}  // namespace

CString utlLongAsText(std::int32_t value) {
  return Guarded("utlLongAsText"_text, CString(), [&] { return detail::longAsText(value); });
}

CString detail::longAsText(std::int32_t value) {
  ShortText text;
  return writeLong(text, value);
}

void detail::longAsTextInto(CString& out, std::int32_t value) {
  ShortText text;
  out.Assign(writeLong(text, value));
}

std::int32_t detail::textAsLong(std::u16string_view text) noexcept {
  const char16_t* at = text.data();
  const char16_t* const end = at + text.size();
  while (at != end && detail::isBlank(*at)) ++at;
  const bool negative = at != end && *at == u'-';
  if (at != end && (*at == u'-' || *at == u'+')) ++at;
  const std::int64_t limit = negative ? 0x80000000ll : 0x7FFFFFFFll;
  std::int64_t magnitude = 0;
  for (; at != end && *at >= u'0' && *at <= u'9'; ++at) {
    magnitude = std::min(magnitude * 10 + (*at - u'0'), limit);
  }
  return static_cast<std::int32_t>(negative ? -magnitude : magnitude);
}

std::int32_t utlTextAsLong(const CString& text) noexcept { return detail::textAsLong(text.view()); }

double detail::textAsDouble(std::u16string_view text) noexcept {
  if (text == undefinedNumberText) return undefinedNumber;
  const char16_t* at = text.data();
  const char16_t* const end = at + text.size();
  while (at != end && detail::isBlank(*at)) ++at;
  // Before a number has had its decimal sign no other "," can have come, so the first one counts.
  const double value = detail::parseReal(at, end, true).value;
  return std::fabs(value - undefinedNumber) <= 1e-8 ? undefinedNumber : value;
}

double utlTextAsDouble(const CString& text) noexcept { return detail::textAsDouble(text.view()); }

double utlTextAsDoubleDecimal(const CString& text, char16_t separator) {
  if (text.view() == undefinedNumberText) return undefinedNumber;
  return Guarded("utlTextAsDoubleDecimal"_text, 0.0, [&] {
    CString joined = text;
    const int place = joined.Find(separator);
    if (place >= 0) joined.SetAt(place, u',');
    return detail::textAsDouble(joined.view());
  });
}

}  // namespace kpx
