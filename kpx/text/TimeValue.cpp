#include "kpx/text/TimeValue.h"

#include <cmath>
#include <limits>

#include "kpx/text/CKpxCalendar.h"

namespace kpx {
namespace {

constexpr double timePerDate = 1e6;

/// Whole part and fraction of a time double in dates; false when the date fits no 32 bits.
bool splitDouble(double value, double& date, double& fraction) noexcept {
  const double quotient = value / timePerDate;
  // Written so that NaN fails it.
  if (!(quotient > -2147483649.0 && quotient < 2147483648.0)) return false;
  date = static_cast<double>(static_cast<std::int64_t>(quotient));
  fraction = quotient - date;
  return true;
}

bool fits(std::int64_t value) noexcept {
  return value >= std::numeric_limits<std::int32_t>::min() &&
         value <= std::numeric_limits<std::int32_t>::max();
}

/// A record of packed fields; neither is kept when one does not fit.
TIME checkedTime(std::int64_t date, std::int64_t time) noexcept {
  if (!fits(date) || !fits(time)) return {};
  return {static_cast<std::int32_t>(date), static_cast<std::int32_t>(time)};
}

std::int64_t pack(std::int64_t high, std::int64_t middle, std::int64_t low) noexcept {
  return (high * 100 + middle) * 100 + low;
}

std::int64_t packClock(std::int64_t hour, std::int64_t minute, std::int64_t second) noexcept {
  if (second >= 60) {
    second -= 60;
    ++minute;
  }
  if (minute >= 60) {
    minute -= 60;
    ++hour;
  }
  if (hour >= 24) hour -= 24;
  return pack(hour, minute, second);
}

// --- writing --------------------------------------------------------------------------------

/// Room for one field of any 32-bit value.
constexpr std::size_t longestField = 11;

/// The text of printf's "%0*d".
char16_t* putField(char16_t* out, std::int32_t value, int width) noexcept {
  char16_t reversed[longestField];
  int count = 0;
  // Unsigned, because the smallest integer has no positive counterpart.
  auto rest = static_cast<std::uint32_t>(value);
  if (value < 0) {
    rest = 0 - rest;
    *out++ = u'-';
    --width;
  }
  do {
    reversed[count++] = static_cast<char16_t>(u'0' + rest % 10);
    rest /= 10;
  } while (rest != 0);
  for (; width > count; --width) *out++ = u'0';
  while (count > 0) *out++ = reversed[--count];
  return out;
}

char16_t* putDate(char16_t* out, std::int32_t date) noexcept {
  out = putField(out, date % 100, 2);
  *out++ = u'.';
  out = putField(out, (date / 100) % 100, 2);
  *out++ = u'.';
  return putField(out, date / 10000, 4);
}

char16_t* putClock(char16_t* out, TIME time) noexcept {
  detail::correctTimeSeconds(time);
  out = putField(out, time.time / 10000, 2);
  *out++ = u':';
  out = putField(out, (time.time / 100) % 100, 2);
  *out++ = u':';
  return putField(out, time.time % 100, 2);
}

constexpr std::size_t longestTimeText = 6 * longestField + 5;

constexpr std::size_t usualTimeText = 19;

void putDigits(char16_t* out, std::uint32_t number) noexcept {
  out[0] = static_cast<char16_t>(u'0' + number / 10);
  out[1] = static_cast<char16_t>(u'0' + number % 10);
}

/// The text of a time whose fields all have their usual number of digits, as nearly all have.
bool putUsual(char16_t (&out)[usualTimeText], const TIME& time) noexcept {
  const auto date = static_cast<std::uint32_t>(time.date);
  const auto clock = static_cast<std::uint32_t>(time.time);
  if (date > 99999999 || clock > 999999) return false;
  putDigits(out, date % 100);
  out[2] = u'.';
  putDigits(out + 3, date / 100 % 100);
  out[5] = u'.';
  putDigits(out + 6, date / 1000000);
  putDigits(out + 8, date / 10000 % 100);
  out[10] = u'-';
  putDigits(out + 11, clock / 10000);
  out[13] = u':';
  putDigits(out + 14, clock / 100 % 100);
  out[16] = u':';
  putDigits(out + 17, clock % 100);
  return true;
}

// --- reading --------------------------------------------------------------------------------

/// Reads the fields of a text as the scan formats "%ld" do: white space and a sign may stand
/// before the digits, and a number beyond 32 bits is the nearest limit.
class FieldScanner {
 public:
  explicit FieldScanner(std::u16string_view text) noexcept
      : at_(text.data()), end_(text.data() + text.size()) {}

  bool number(std::int64_t& field) noexcept {
    while (at_ != end_ && (*at_ == u' ' || (*at_ >= u'\t' && *at_ <= u'\r'))) ++at_;
    const bool negative = at_ != end_ && *at_ == u'-';
    if (at_ != end_ && (*at_ == u'-' || *at_ == u'+')) ++at_;
    if (at_ == end_ || !isDigit(*at_)) return false;
    constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
    std::int64_t value = 0;
    for (; at_ != end_ && isDigit(*at_); ++at_) {
      if (value <= largest) value = value * 10 + (*at_ - u'0');
    }
    const std::int64_t limit = negative ? largest + 1 : largest;
    if (value > limit) value = limit;
    field = negative ? -value : value;
    return true;
  }

  /// Three numbers with a mark between them; false as soon as something else stands there.
  bool three(std::int64_t (&fields)[3], char16_t mark) noexcept {
    return number(fields[0]) && literal(mark) && number(fields[1]) && literal(mark) &&
           number(fields[2]);
  }

  bool literal(char16_t mark) noexcept {
    if (at_ == end_ || *at_ != mark) return false;
    ++at_;
    return true;
  }

 private:
  static bool isDigit(char16_t unit) noexcept { return unit >= u'0' && unit <= u'9'; }

  const char16_t* at_;
  const char16_t* end_;
};

/// Whether a text is written year first, which its two or more "-" tell.
bool isYearFirst(std::u16string_view text) noexcept { return text.find(u'-') != text.rfind(u'-'); }

/// The number of the two digits at `at`; 100 when these are not two digits.
std::uint32_t twoDigits(const char16_t* at) noexcept {
  const std::uint32_t tens = static_cast<std::uint32_t>(at[0]) - u'0';
  const std::uint32_t ones = static_cast<std::uint32_t>(at[1]) - u'0';
  return tens <= 9 && ones <= 9 ? tens * 10 + ones : 100;
}

/// The form that is written, and so nearly always read.
bool readWrittenForm(std::u16string_view text, double& value) noexcept {
  if (text.size() != 19) return false;
  const char16_t* at = text.data();
  if (at[2] != u'.' || at[5] != u'.' || at[10] != u'-' || at[13] != u':' || at[16] != u':') {
    return false;
  }
  const std::uint32_t fields[] = {twoDigits(at),     twoDigits(at + 3),  twoDigits(at + 6),
                                  twoDigits(at + 8), twoDigits(at + 11), twoDigits(at + 14),
                                  twoDigits(at + 17)};
  for (const std::uint32_t field : fields) {
    if (field > 99) return false;
  }
  const std::int64_t date = pack(fields[2] * 100 + fields[3], fields[1], fields[0]);
  value = static_cast<double>(date) * timePerDate +
          static_cast<double>(packClock(fields[4], fields[5], fields[6]));
  return true;
}

// --- office dates ---------------------------------------------------------------------------

constexpr std::int64_t secondsPerDay = 86400;
constexpr int firstOleYear = 100;

std::int64_t oleDayZero() noexcept { return CKpxCalendar::dayCount(1899, 12, 30); }

}  // namespace

DateTime unpackTime(const TIME& time) noexcept {
  return {time.date / 10000, (time.date / 100) % 100, time.date % 100,
          time.time / 10000, (time.time / 100) % 100, time.time % 100};
}

TIME packTime(const DateTime& fields) noexcept {
  return checkedTime(pack(fields.year, fields.month, fields.day),
                     pack(fields.hour, fields.minute, fields.second));
}

void detail::correctTimeSeconds(TIME& time) noexcept {
  if (time.time % 100 == 60) --time.time;
}

double detail::doubleOfTime(const TIME& time) noexcept {
  return time.date * timePerDate + time.time;
}

TIME detail::timeOfDouble(double value) noexcept {
  double date;
  double fraction;
  if (!splitDouble(value, date, fraction)) return {};
  // The hundredths guard against binary fractions a hair below the whole number.
  TIME time{static_cast<std::int32_t>(date + 0.01),
            static_cast<std::int32_t>(fraction * timePerDate + 0.01)};
  detail::correctTimeSeconds(time);
  return time;
}

double detail::doubleOfTimeEx(const TIME& time) noexcept {
  return time.date * timePerDate + time.time / 10.0;
}

TIME detail::timeOfDoubleEx(double value) noexcept {
  double date;
  double fraction;
  if (!splitDouble(value, date, fraction)) return {};
  return {static_cast<std::int32_t>(date + 0.01),
          static_cast<std::int32_t>(fraction * timePerDate * 10 + 0.05)};
}

CString detail::dateText(const TIME& time) {
  char16_t buffer[longestTimeText];
  return CString(std::u16string_view(buffer, putDate(buffer, time.date)));
}

CString detail::clockText(const TIME& time) {
  char16_t buffer[longestTimeText];
  return CString(std::u16string_view(buffer, putClock(buffer, time)));
}

CString detail::timeDoubleText(double value) {
  CString text;
  detail::appendTimeDoubleText(text.units(), value);
  return text;
}

void detail::appendTimeDoubleText(std::u16string& text, double value) {
  const TIME time = detail::timeOfDouble(value);
  char16_t usual[usualTimeText];
  if (putUsual(usual, time)) {
    text.append(usual, usualTimeText);
    return;
  }
  char16_t buffer[longestTimeText];
  char16_t* end = putDate(buffer, time.date);
  *end++ = u'-';
  end = putClock(end, time);
  text.append(buffer, static_cast<std::size_t>(end - buffer));
}

TIME detail::dateOfText(std::u16string_view text) noexcept {
  std::int64_t fields[3] = {};
  FieldScanner scanner(text);
  if (isYearFirst(text)) {
    scanner.three(fields, u'-');
    return checkedTime(pack(fields[0], fields[1], fields[2]), 0);
  }
  scanner.three(fields, u'.');
  return checkedTime(pack(fields[2], fields[1], fields[0]), 0);
}

TIME detail::clockOfText(std::u16string_view text) noexcept {
  std::int64_t fields[3] = {};
  FieldScanner(text).three(fields, u':');
  return checkedTime(0, packClock(fields[0], fields[1], fields[2]));
}

double detail::timeDoubleOf(std::u16string_view text) noexcept {
  double value;
  if (readWrittenForm(text, value)) return value;
  if (isYearFirst(text)) return detail::doubleOfTime(detail::dateOfText(text));
  std::int64_t day[3] = {};
  std::int64_t clock[3] = {};
  FieldScanner scanner(text);
  if (scanner.three(day, u'.') && scanner.literal(u'-')) scanner.three(clock, u':');
  return detail::doubleOfTime(
      checkedTime(pack(day[2], day[1], day[0]), packClock(clock[0], clock[1], clock[2])));
}

double detail::oleDateOfTimeDouble(double value) noexcept {
  const DateTime fields = unpackTime(detail::timeOfDouble(value));
  if (fields.year < firstOleYear || !CKpxCalendar::isValid(fields)) return 0.0;
  const auto days = static_cast<double>(
      CKpxCalendar::dayCount(fields.year, fields.month, fields.day) - oleDayZero());
  const double fraction =
      (fields.hour * 3600 + fields.minute * 60 + fields.second) / double{secondsPerDay};
  return days < 0 ? days - fraction : days + fraction;
}

double detail::timeDoubleOfOleDate(double days) noexcept {
  // Outside these bounds no date lies in the years 100 to 9999; NaN fails the comparison.
  if (!(days > -657435.0 && days < 2958466.0)) return 0.0;
  const double whole = std::trunc(days);
  const auto second = std::int64_t{std::llround(std::abs(days - whole) * secondsPerDay)};
  const std::int64_t day = oleDayZero() + static_cast<std::int64_t>(whole) + second / secondsPerDay;
  DateTime fields;
  if (!CKpxCalendar::dateOfDayCount(day, fields.year, fields.month, fields.day)) return 0.0;
  const int rest = static_cast<int>(second % secondsPerDay);
  fields.hour = rest / 3600;
  fields.minute = rest / 60 % 60;
  fields.second = rest % 60;
  return detail::doubleOfTime(packTime(fields));
}

}  // namespace kpx
