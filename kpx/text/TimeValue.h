#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// A point in time as two decimal-packed integers. Nothing checks that the digits are a real
/// date; all zero means "no time".
struct TIME {
  std::int32_t date = 0;  // year * 10000 + month * 100 + day, for example 20210305
  std::int32_t time = 0;  // hour * 10000 + minute * 100 + second, for example 83334

  friend bool operator==(const TIME&, const TIME&) = default;
};

/// The fields of a point in time, one by one. All zero means "no time".
struct DateTime {
  int year = 0;
  int month = 0;
  int day = 0;
  int hour = 0;
  int minute = 0;
  int second = 0;

  friend bool operator==(const DateTime&, const DateTime&) = default;
};

/// The fields of a record, cut out of its digits, and a record of the fields.
KPX_API DateTime unpackTime(const TIME& time) noexcept;
KPX_API TIME packTime(const DateTime& fields) noexcept;

namespace detail {

// What CKpxBaseObjectsUtil gives to modules, for the library itself.
//
// A *time double* holds date * 1,000,000 + time, so that its digits read YYYYMMDDhhmmss. It is
// stored in files; differences of two are no durations. Whatever does not fit the two 32-bit
// fields (NaN, infinities, doubles and texts too large) gives zero fields.

/// Seconds of 60 become 59, so that a leap second stays inside its minute. Changes nothing else.
void correctTimeSeconds(TIME& time) noexcept;

double doubleOfTime(const TIME& time) noexcept;
/// Seconds of 60 are read as 59. Negative doubles are cut toward zero.
TIME timeOfDouble(double value) noexcept;

/// The extended forms: the record's time field counts tenths of a second
/// (hour * 100000 + minute * 1000 + second * 10 + tenth), the double is date * 1,000,000 +
/// time / 10. Seconds are not corrected. Every tenth survives the double up to the year 3355; later
/// ones may come back one tenth earlier.
double doubleOfTimeEx(const TIME& time) noexcept;
TIME timeOfDoubleEx(double value) noexcept;

/// DD.MM.YYYY and hh:mm:ss; the clock shows seconds of 60 as 59.
CString dateText(const TIME& time);
CString clockText(const TIME& time);
/// DD.MM.YYYY-hh:mm:ss, for example 05.03.2021-08:33:34.
CString timeDoubleText(double value);
/// The same, appended: for writers, without a text in between.
void appendTimeDoubleText(std::u16string& text, double value);

/// The date of "DD.MM.YYYY", or of "YYYY-MM-DD" when the text holds at least two "-"; the time
/// field is 0. Fields that cannot be read are 0.
TIME dateOfText(std::u16string_view text) noexcept;
/// The time of "hh:mm:ss"; the date field is 0. Seconds from 60 up carry into the minutes, minutes
/// into the hours, and the hours wrap at 24 without reaching a date.
TIME clockOfText(std::u16string_view text) noexcept;
/// The time double of "DD.MM.YYYY-hh:mm:ss", with the same carry, or of "YYYY-MM-DD" at 00:00:00.
/// Reads back whatever `timeDoubleText` writes for a valid time.
double timeDoubleOf(std::u16string_view text) noexcept;

/// A time double as days since 30.12.1899, the date type of office documents and databases. For
/// days before that the fraction still counts forward from midnight, as that type has it: -1.25
/// is 29.12.1899, 06:00. Years 100 to 9999; anything that is no valid date and time gives 0.0.
double oleDateOfTimeDouble(double value) noexcept;
/// The reverse, rounded to the nearest second.
double timeDoubleOfOleDate(double days) noexcept;

}  // namespace detail
}  // namespace kpx
