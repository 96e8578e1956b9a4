#include "kpx/platform/Clock.h"

#include <gtest/gtest.h>

#include <chrono>

#include "tests/common/TestEnvironment.h"

namespace kpx {
namespace {

TEST(Clock, BerlinWithTheHoursWhenTheClocksChange) {
  ZoneScope zone("Europe/Berlin");
  if (!zone.isSet()) GTEST_SKIP() << "the test runs in another time zone";
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
      // Far ahead.
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

TEST(Clock, WhatNoSystemConvertsIsRefused) {
  ZoneScope zone("Europe/Berlin");
  if (!zone.isSet()) GTEST_SKIP() << "the test runs in another time zone";
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

TEST(Clock, CounterRunsAtItsFrequency) {
  Clock& clock = systemClock();
  ASSERT_GE(clock.counterFrequency(), 1000u);
  const auto outer = std::chrono::steady_clock::now();
  const std::uint64_t before = clock.counter();
  const auto inner = std::chrono::steady_clock::now();
  while (std::chrono::steady_clock::now() - inner < std::chrono::milliseconds(30)) {
  }
  const std::uint64_t after = clock.counter();
  const auto passed = std::chrono::steady_clock::now() - outer;
  const double seconds =
      static_cast<double>(after - before) / static_cast<double>(clock.counterFrequency());
  EXPECT_GE(seconds, 0.029);
  EXPECT_LE(seconds, std::chrono::duration<double>(passed).count() + 0.001);
}

}  // namespace
}  // namespace kpx
