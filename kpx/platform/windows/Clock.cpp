#include "kpx/platform/Clock.h"

#include <windows.h>

#include <algorithm>
#include <cstdint>
#include <optional>

#include "kpx/text/CKpxCalendar.h"

namespace kpx {
namespace {

constexpr std::int64_t secondsPerDay = 86400;
/// The system counts tenths of a microsecond since the first day that it converts, 01.01.1601.
constexpr std::int64_t ticksPerSecond = 10'000'000;

bool isConvertible(const DateTime& fields) noexcept {
  return CKpxCalendar::isValid(fields) && fields.year >= Clock::firstYear &&
         fields.year <= Clock::lastYear;
}

DateTime fieldsOf(const SYSTEMTIME& time) noexcept {
  return {time.wYear, time.wMonth, time.wDay, time.wHour, time.wMinute, time.wSecond};
}

std::optional<std::int64_t> secondsOf(const SYSTEMTIME& time) noexcept {
  FILETIME count = {};
  if (!::SystemTimeToFileTime(&time, &count)) return std::nullopt;
  const std::uint64_t ticks =
      (std::uint64_t{count.dwHighDateTime} << 32) | std::uint64_t{count.dwLowDateTime};
  return static_cast<std::int64_t>(ticks) / ticksPerSecond;
}

/// Requires fields that are convertible.
std::optional<std::int64_t> secondsOf(const DateTime& fields) noexcept {
  SYSTEMTIME time = {};
  time.wYear = static_cast<WORD>(fields.year);
  time.wMonth = static_cast<WORD>(fields.month);
  time.wDay = static_cast<WORD>(fields.day);
  time.wHour = static_cast<WORD>(fields.hour);
  time.wMinute = static_cast<WORD>(fields.minute);
  time.wSecond = static_cast<WORD>(fields.second);
  return secondsOf(time);
}

bool systemTimeOf(std::int64_t seconds, SYSTEMTIME& time) noexcept {
  if (seconds < 0) return false;
  const auto ticks = static_cast<std::uint64_t>(seconds * ticksPerSecond);
  const FILETIME count = {static_cast<DWORD>(ticks), static_cast<DWORD>(ticks >> 32)};
  return ::FileTimeToSystemTime(&count, &time) != 0;
}

/// The time zone of the system now, with the rules that it had in other years.
class Zone {
 public:
  Zone() noexcept { known_ = ::GetDynamicTimeZoneInformation(&zone_) != TIME_ZONE_ID_INVALID; }

  bool isKnown() const noexcept { return known_; }

  /// How far local time is ahead of UTC at a moment, in seconds; none if the system cannot tell.
  std::optional<std::int64_t> offsetAt(std::int64_t utc) noexcept {
    // Local time of the very first day may lie before it.
    utc = std::max(utc, secondsPerDay);
    SYSTEMTIME moment = {};
    SYSTEMTIME local = {};
    if (!systemTimeOf(utc, moment) || !localByRulesOf(moment.wYear, moment, local)) {
      return std::nullopt;
    }
    // The rules of a year hold from its beginning in local time.
    if (local.wYear != moment.wYear && !localByRulesOf(local.wYear, moment, local)) {
      return std::nullopt;
    }
    const std::optional<std::int64_t> shown = secondsOf(local);
    return shown ? std::optional(*shown - utc) : std::nullopt;
  }

 private:
  bool localByRulesOf(WORD year, const SYSTEMTIME& utc, SYSTEMTIME& local) noexcept {
    const TIME_ZONE_INFORMATION rules = rulesOf(year);
    return ::SystemTimeToTzSpecificLocalTime(&rules, &utc, &local) != 0;
  }

  TIME_ZONE_INFORMATION rulesOf(WORD year) noexcept {
    TIME_ZONE_INFORMATION rules = {};
    const bool changesClocks = zone_.DynamicDaylightTimeDisabled == FALSE;
    const bool hasName = zone_.TimeZoneKeyName[0] != L'\0';
    if (changesClocks && hasName && ::GetTimeZoneInformationForYear(year, &zone_, &rules)) {
      return rules;
    }
    rules = {};
    rules.Bias = zone_.Bias;
    // Without dates the clocks never change: the user can switch that off.
    if (changesClocks) {
      rules.StandardDate = zone_.StandardDate;
      rules.StandardBias = zone_.StandardBias;
      rules.DaylightDate = zone_.DaylightDate;
      rules.DaylightBias = zone_.DaylightBias;
    }
    return rules;
  }

  DYNAMIC_TIME_ZONE_INFORMATION zone_ = {};
  bool known_ = false;
};

class WindowsClock final : public Clock {
 public:
  DateTime localNow() override {
    SYSTEMTIME local = {};
    ::GetLocalTime(&local);
    return fieldsOf(local);
  }

  ZoneResult localToUtc(const DateTime& local, DateTime& converted) override {
    const std::optional<std::int64_t> seconds = countOf(local);
    if (!seconds) return ZoneResult::outOfRange;
    Zone zone;
    if (!zone.isKnown()) return ZoneResult::unknownZone;
    // The system's own conversion leaves open which of two moments it takes in the hour that
    // comes twice. The offsets a day before and after enclose any one change.
    const auto before = zone.offsetAt(*seconds - secondsPerDay);
    const auto after = zone.offsetAt(*seconds + secondsPerDay);
    if (!before || !after) return ZoneResult::unknownZone;
    const bool isAfter =
        zone.offsetAt(*seconds - *before) != before && zone.offsetAt(*seconds - *after) == after;
    return finish(*seconds - (isAfter ? *after : *before), converted);
  }

  ZoneResult utcToLocal(const DateTime& utc, DateTime& converted) override {
    const std::optional<std::int64_t> seconds = countOf(utc);
    if (!seconds) return ZoneResult::outOfRange;
    Zone zone;
    if (!zone.isKnown()) return ZoneResult::unknownZone;
    const auto offset = zone.offsetAt(*seconds);
    if (!offset) return ZoneResult::unknownZone;
    return finish(*seconds + *offset, converted);
  }

  std::uint64_t counter() override {
    LARGE_INTEGER count = {};
    ::QueryPerformanceCounter(&count);
    return static_cast<std::uint64_t>(count.QuadPart);
  }
  std::uint64_t counterFrequency() override {
    LARGE_INTEGER frequency = {};
    ::QueryPerformanceFrequency(&frequency);
    return static_cast<std::uint64_t>(frequency.QuadPart);
  }

 private:
  static std::optional<std::int64_t> countOf(const DateTime& fields) noexcept {
    return isConvertible(fields) ? secondsOf(fields) : std::nullopt;
  }

  static ZoneResult finish(std::int64_t seconds, DateTime& converted) noexcept {
    SYSTEMTIME time = {};
    if (!systemTimeOf(seconds, time) || !isConvertible(fieldsOf(time))) {
      return ZoneResult::outOfRange;
    }
    converted = fieldsOf(time);
    return ZoneResult::converted;
  }
};

}  // namespace

Clock& systemClock() noexcept {
  static constinit WindowsClock clock;
  return clock;
}

}  // namespace kpx
