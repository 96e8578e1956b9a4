#pragma once

#include <cstdint>

#include "kpx/report/Export.h"
#include "kpx/text/TimeValue.h"

namespace kpx {

/// What came of a conversion between local time and UTC.
enum class ZoneResult : std::uint8_t {
  converted,
  unknownZone,  // the system knows no time zone for this process
  outOfRange,   // no date and time that exists, or none of the years that every system converts
};

/// Date, time of day and the passing of time, as the system gives them. Tests derive from it.
class KPX_API Clock {
 public:
  virtual ~Clock();

  /// Years that every system converts between the time bases.
  static constexpr int firstYear = 1601;
  static constexpr int lastYear = 9999;

  /// The local date and time now, to the second.
  virtual DateTime localNow() = 0;

  /// The same moment in the other time base, by the rules that the zone had or will have then, as
  /// far as the system knows them: Windows takes today's rules for most zones and years of the
  /// past, so that summers long ago may differ by an hour between the systems. In
  /// the hour that the clocks show twice the first pass counts; a time in the hour that they skip
  /// is read as if they had not been changed yet. `converted` is written only on success.
  virtual ZoneResult localToUtc(const DateTime& local, DateTime& converted) = 0;
  virtual ZoneResult utcToLocal(const DateTime& utc, DateTime& converted) = 0;

  /// A counter that only goes forward, for measuring durations, and its ticks per second.
  virtual std::uint64_t counter() = 0;
  virtual std::uint64_t counterFrequency() = 0;
};

/// The clock that the library works with: the operating system's, unless a test wraps it.
KPX_API Clock& currentClock() noexcept;
/// Puts another one in its place, which must outlive its use; nullptr for the operating
/// system's. Answers the one before, nullptr if that was the system's.
KPX_API Clock* setClock(Clock* other) noexcept;
/// The operating system's own, for wrapping.
KPX_API Clock& systemClock() noexcept;

}  // namespace kpx
