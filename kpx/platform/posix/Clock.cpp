#include "kpx/platform/Clock.h"

#include <sys/stat.h>
#include <time.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

#include "kpx/platform/posix/UnixTime.h"
#include "kpx/text/CKpxCalendar.h"

namespace kpx {
namespace {

using detail::secondsPerDay;

bool isConvertible(const DateTime& fields) noexcept {
  return CKpxCalendar::isValid(fields) && fields.year >= Clock::firstYear &&
         fields.year <= Clock::lastYear;
}

std::int64_t secondsOf(const DateTime& fields) noexcept {
  return CKpxCalendar::dayCount(fields.year, fields.month, fields.day) * secondsPerDay +
         fields.hour * 3600 + fields.minute * 60 + fields.second;
}

std::optional<DateTime> fieldsOf(std::int64_t seconds) noexcept {
  DateTime fields;
  if (!detail::dateTimeOfUnixTime(seconds, fields) || !isConvertible(fields)) return std::nullopt;
  return fields;
}

/// How far local time is ahead of UTC at a moment, in seconds.
std::int64_t offsetAt(std::int64_t utc) noexcept {
  const auto moment = static_cast<time_t>(utc);
  tm local = {};
  return localtime_r(&moment, &local) ? local.tm_gmtoff : 0;
}

/// Whether a text gives the rules of a zone itself, as "CET-1CEST,M3.5.0,M10.5.0/3" does: a name
/// of three letters or more, or one in angle brackets, and an offset. The system takes what is
/// neither that nor a zone file for UTC without a word.
bool givesZoneRules(std::string_view zone) noexcept {
  std::size_t end = 0;
  const auto isLetter = [](char c) { return (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z'); };
  if (zone.starts_with('<')) {
    end = zone.find('>');
    if (end == std::string_view::npos || end < 4) return false;
    ++end;
  } else {
    while (end < zone.size() && isLetter(zone[end])) ++end;
    if (end < 3) return false;
  }
  if (end < zone.size() && (zone[end] == '+' || zone[end] == '-')) ++end;
  return end < zone.size() && zone[end] >= '0' && zone[end] <= '9';
}

bool isFile(const std::string& path) noexcept {
  struct stat info = {};
  return stat(path.c_str(), &info) == 0 && S_ISREG(info.st_mode);
}

bool isZoneKnown() {
  const char* variable = std::getenv("TZ");
  if (!variable) return isFile("/etc/localtime");
  std::string_view zone(variable);
  if (zone.starts_with(':')) zone.remove_prefix(1);
  if (zone.empty() || givesZoneRules(zone)) return true;
  if (zone.starts_with('/')) return isFile(std::string(zone));
  const char* folder = std::getenv("TZDIR");
  std::string path(folder ? folder : "/usr/share/zoneinfo");
  path += '/';
  path += zone;
  return isFile(path);
}

class PosixClock final : public Clock {
 public:
  DateTime localNow() override {
    tzset();
    // time() lags behind by up to a tick, so that a file just written would be a second newer.
    timespec now = {};
    clock_gettime(CLOCK_REALTIME, &now);
    const time_t moment = now.tv_sec;
    tm local = {};
    if (!localtime_r(&moment, &local)) return {};
    return {local.tm_year + 1900, local.tm_mon + 1, local.tm_mday,
            local.tm_hour,        local.tm_min,     local.tm_sec};
  }

  ZoneResult localToUtc(const DateTime& local, DateTime& converted) override {
    if (!isConvertible(local)) return ZoneResult::outOfRange;
    if (!isZoneKnown()) return ZoneResult::unknownZone;
    tzset();
    // The system's own conversion leaves open which of two moments it takes in the hour that
    // comes twice. The offsets a day before and after enclose any one change.
    const std::int64_t seconds = secondsOf(local);
    const std::int64_t before = offsetAt(seconds - secondsPerDay);
    const std::int64_t after = offsetAt(seconds + secondsPerDay);
    const bool isAfter = offsetAt(seconds - before) != before && offsetAt(seconds - after) == after;
    return finish(seconds - (isAfter ? after : before), converted);
  }

  ZoneResult utcToLocal(const DateTime& utc, DateTime& converted) override {
    if (!isConvertible(utc)) return ZoneResult::outOfRange;
    if (!isZoneKnown()) return ZoneResult::unknownZone;
    tzset();
    const std::int64_t seconds = secondsOf(utc);
    return finish(seconds + offsetAt(seconds), converted);
  }

  std::uint64_t counter() override {
    timespec now = {};
    clock_gettime(CLOCK_MONOTONIC, &now);
    return static_cast<std::uint64_t>(now.tv_sec) * nanosecondsPerSecond +
           static_cast<std::uint64_t>(now.tv_nsec);
  }
  std::uint64_t counterFrequency() override { return nanosecondsPerSecond; }

 private:
  static constexpr std::uint64_t nanosecondsPerSecond = 1'000'000'000;

  static ZoneResult finish(std::int64_t seconds, DateTime& converted) noexcept {
    const std::optional<DateTime> fields = fieldsOf(seconds);
    if (!fields) return ZoneResult::outOfRange;
    converted = *fields;
    return ZoneResult::converted;
  }
};

}  // namespace

Clock& systemClock() noexcept {
  static constinit PosixClock clock;
  return clock;
}

}  // namespace kpx
