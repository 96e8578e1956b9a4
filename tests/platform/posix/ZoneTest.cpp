#include <gtest/gtest.h>

#include "kpx/platform/Clock.h"
#include "tests/common/TestEnvironment.h"

namespace kpx {
namespace {

TEST(Zone, KnownAndUnknownZones) {
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

TEST(Zone, NoSummerTimeBeforeItsYears) {
  ZoneScope zone("Europe/Berlin");
  DateTime converted;
  ASSERT_EQ(systemClock().localToUtc({1970, 7, 1, 12, 0, 0}, converted), ZoneResult::converted);
  EXPECT_EQ(converted, (DateTime{1970, 7, 1, 11, 0, 0}));
  ASSERT_EQ(systemClock().utcToLocal({1970, 7, 1, 11, 0, 0}, converted), ZoneResult::converted);
  EXPECT_EQ(converted, (DateTime{1970, 7, 1, 12, 0, 0}));
}

TEST(Zone, TimeGoesForwardWhateverTheZone) {
  const auto utcIn = [](const char* name) {
    ZoneScope zone(name);
    DateTime utc;
    EXPECT_EQ(systemClock().localToUtc(systemClock().localNow(), utc), ZoneResult::converted);
    return detail::doubleOfTime(packTime(utc));
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
