#include "kpx/platform/Clock.h"

#include <gtest/gtest.h>

#include <cstdlib>
#include <optional>
#include <string>

namespace kpx {
namespace {

/// Sets the time zone of the process for one scope; nullptr removes it.
class ZoneScope {
 public:
  explicit ZoneScope(const char* zone) {
    if (const char* before = std::getenv("TZ")) before_ = before;
    set(zone);
  }
  ~ZoneScope() { set(before_ ? before_->c_str() : nullptr); }

 private:
  static void set(const char* zone) {
    if (zone) {
      setenv("TZ", zone, 1);
    } else {
      unsetenv("TZ");
    }
  }

  std::optional<std::string> before_;
};

TEST(Clock, BerlinWithTheHoursWhenTheClocksChange) {
  ZoneScope zone("Europe/Berlin");
  const struct {
    DateTime local, utc, back;  // back: the local time of utc
  } cases[] = {
      {{2021, 1, 15, 12, 0, 0}, {2021, 1, 15, 11, 0, 0}, {2021, 1, 15, 12, 0, 0}},
      {{2021, 7, 1, 0, 30, 0}, {2021, 6, 30, 22, 30, 0}, {2021, 7, 1, 0, 30, 0}},
      // Forward: 02:00 to 03:00 does not exist and is read with winter's offset.
      {{2021, 3, 28, 1, 59, 59}, {2021, 3, 28, 0, 59, 59}, {2021, 3, 28, 1, 59, 59}},
      {{2021, 3, 28, 2, 30, 0}, {2021, 3, 28, 1, 30, 0}, {2021, 3, 28, 3, 30, 0}},
      {{2021, 3, 28, 3, 0, 0}, {2021, 3, 28, 1, 0, 0}, {2021, 3, 28, 3, 0, 0}},
      // Back: 02:00 to 03:00 comes twice and is read as the first pass.
      {{2021, 10, 31, 1, 59, 59}, {2021, 10, 30, 23, 59, 59}, {2021, 10, 31, 1, 59, 59}},
      {{2021, 10, 31, 2, 30, 0}, {2021, 10, 31, 0, 30, 0}, {2021, 10, 31, 2, 30, 0}},
      {{2021, 10, 31, 3, 0, 0}, {2021, 10, 31, 2, 0, 0}, {2021, 10, 31, 3, 0, 0}},
      // A year before summer time, and one far ahead.
      {{1970, 7, 1, 12, 0, 0}, {1970, 7, 1, 11, 0, 0}, {1970, 7, 1, 12, 0, 0}},
      {{2400, 7, 1, 12, 0, 0}, {2400, 7, 1, 10, 0, 0}, {2400, 7, 1, 12, 0, 0}},
  };
  Clock& clock = systemClock();
  for (const auto& item : cases) {
    DateTime converted;
    ASSERT_EQ(clock.localToUtc(item.local, converted), ZoneResult::converted);
    EXPECT_EQ(converted, item.utc) << item.local.year << '-' << item.local.month;
    ASSERT_EQ(clock.utcToLocal(item.utc, converted), ZoneResult::converted);
    EXPECT_EQ(converted, item.back) << item.local.year << '-' << item.local.month;
  }
  // The second pass is what UTC an hour later shows.
  DateTime second;
  ASSERT_EQ(clock.utcToLocal({2021, 10, 31, 1, 30, 0}, second), ZoneResult::converted);
  EXPECT_EQ(second, (DateTime{2021, 10, 31, 2, 30, 0}));
}

TEST(Clock, KnownAndUnknownZones) {
  const struct {
    const char* zone;
    ZoneResult result;
    DateTime utc;
  } cases[] = {
      {"UTC", ZoneResult::converted, {2021, 7, 1, 12, 0, 0}},
      {"", ZoneResult::converted, {2021, 7, 1, 12, 0, 0}},
      {"CET-1CEST,M3.5.0,M10.5.0/3", ZoneResult::converted, {2021, 7, 1, 10, 0, 0}},
      {"<+0530>-5:30", ZoneResult::converted, {2021, 7, 1, 6, 30, 0}},
      {":Asia/Tokyo", ZoneResult::converted, {2021, 7, 1, 3, 0, 0}},
      {"Europe/Nowhere", ZoneResult::unknownZone, {}},
      {"Europe", ZoneResult::unknownZone, {}},
      {"/no/such/zone", ZoneResult::unknownZone, {}},
  };
  for (const auto& item : cases) {
    ZoneScope zone(item.zone);
    DateTime converted;
    EXPECT_EQ(systemClock().localToUtc({2021, 7, 1, 12, 0, 0}, converted), item.result)
        << item.zone;
    EXPECT_EQ(converted, item.utc) << item.zone;
    EXPECT_EQ(systemClock().utcToLocal({2021, 7, 1, 12, 0, 0}, converted), item.result)
        << item.zone;
  }
}

TEST(Clock, WhatNoSystemConvertsIsRefused) {
  ZoneScope zone("Europe/Berlin");
  const DateTime cases[] = {{2021, 2, 29, 0, 0, 0},   {2021, 1, 1, 24, 0, 0},
                            {2021, 1, 1, 23, 59, 60}, {1600, 12, 31, 0, 0, 0},
                            {1601, 1, 1, 0, 0, 0},  // in UTC the year before
                            {10000, 1, 1, 0, 0, 0},   {}};
  for (const DateTime& item : cases) {
    DateTime converted{1, 2, 3, 4, 5, 6};
    EXPECT_EQ(systemClock().localToUtc(item, converted), ZoneResult::outOfRange) << item.year;
    EXPECT_EQ(converted, (DateTime{1, 2, 3, 4, 5, 6}));
  }
  DateTime converted;
  EXPECT_EQ(systemClock().utcToLocal({9999, 12, 31, 23, 30, 0}, converted), ZoneResult::outOfRange);
}

TEST(Clock, TimeGoesForwardWhateverTheZone) {
  const auto utcIn = [](const char* name) {
    ZoneScope zone(name);
    DateTime utc;
    EXPECT_EQ(systemClock().localToUtc(systemClock().localNow(), utc), ZoneResult::converted);
    return doubleOfTime(packTime(utc));
  };
  const std::uint64_t counter = systemClock().counter();
  const double before = utcIn("UTC");
  const double between = utcIn("<+0530>-5:30");
  EXPECT_LE(before, between);
  EXPECT_LE(between, utcIn("UTC"));
  EXPECT_LT(counter, systemClock().counter());
}

}  // namespace
}  // namespace kpx
