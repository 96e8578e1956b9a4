#include "kpx/support/files/CKpxBaseObjectsUtil.h"

#include <gtest/gtest.h>

#include <cmath>
#include <stdexcept>

#include "kpx/platform/Clock.h"
#include "kpx/report/Error.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using Util = CKpxBaseObjectsUtil;

/// A clock that stands still, two hours ahead of UTC, and fails on demand.
class TestClock final : public Clock {
 public:
  DateTime localNow() override {
    if (fails) throw std::runtime_error("no clock");
    return {2021, 3, 5, 8, 33, 34};
  }
  ZoneResult localToUtc(const DateTime& local, DateTime& converted) override {
    return shift(local, -2, converted);
  }
  ZoneResult utcToLocal(const DateTime& utc, DateTime& converted) override {
    return shift(utc, 2, converted);
  }
  std::uint64_t counter() override { return 0; }
  std::uint64_t counterFrequency() override { return 1; }

  bool fails = false;
  ZoneResult result = ZoneResult::converted;

 private:
  ZoneResult shift(DateTime time, int hours, DateTime& converted) const {
    if (result != ZoneResult::converted) return result;
    time.hour += hours;
    converted = time;
    return result;
  }
};

int lastReport = 0;
void recordReport(int number) noexcept { lastReport = number; }

class BaseObjectsUtil : public testing::Test {
 protected:
  BaseObjectsUtil() : previousSink(setErrorSink(&recordReport)) {
    lastReport = 0;
    setClock(&clock);
  }
  ~BaseObjectsUtil() override {
    setClock(nullptr);
    setErrorSink(previousSink);
    Util::setSystemFolderProvider(nullptr);
    Util::setProjectFolderProvider(nullptr);
  }

  TestClock clock;
  ErrorSink previousSink;
};

TEST_F(BaseObjectsUtil, TimestampsOfTheClockInBothForms) {
  TIME time;
  Util::GetTimestamp(&time);
  EXPECT_EQ(time, (TIME{20210305, 83334}));
  EXPECT_EQ(Util::GetTimestamp(), 20210305083334.0);
  EXPECT_EQ(lastReport, 0);
}

TEST_F(BaseObjectsUtil, FailingClockIsReportedAndChangesNothing) {
  clock.fails = true;
  TIME time{1, 2};
  Util::GetTimestamp(&time);
  EXPECT_EQ(lastReport, 53420);
  EXPECT_EQ(time, (TIME{1, 2}));
  EXPECT_EQ(Util::GetTimestamp(), 0.0);
  EXPECT_EQ(lastReport, 52040);
  clock.fails = false;
  Util::GetTimestamp(nullptr);
  EXPECT_EQ(lastReport, 53420);
}

TEST_F(BaseObjectsUtil, ZoneConversionsGoOppositeWaysAndElseKeepTheArgument) {
  EXPECT_EQ(Util::LocalTimeDouble2UTCTimeDouble(20210305083334.0), 20210305063334.0);
  EXPECT_EQ(Util::UTCTimeDouble2LocalTimeDouble(20210305083334.0), 20210305103334.0);
  for (const ZoneResult result : {ZoneResult::unknownZone, ZoneResult::outOfRange}) {
    clock.result = result;
    EXPECT_EQ(Util::LocalTimeDouble2UTCTimeDouble(20210305083360.5), 20210305083360.5);
    EXPECT_EQ(Util::UTCTimeDouble2LocalTimeDouble(1e300), 1e300);
    EXPECT_TRUE(std::isnan(Util::UTCTimeDouble2LocalTimeDouble(std::nan(""))));
  }
}

TEST_F(BaseObjectsUtil, NamesLeadToTheirConversions) {
  const TIME time{20210305, 83334};
  EXPECT_EQ(Util::Time2Double(Util::Double2Time(20210305083334.0)), 20210305083334.0);
  EXPECT_EQ(Util::Time2DoubleEx(Util::Double2TimeEx(20210305083334.5)), 20210305083334.5);
  EXPECT_EQ(Util::TimeDouble2Str(20210305083334.0),
            Util::Date2Str(time) + u"-" + Util::Time2Str(time));
  EXPECT_EQ(Util::Str2Date(u"05.03.2021-08:33:34").date, time.date);
  EXPECT_EQ(Util::Str2Time(u"08:33:34").time, time.time);
  EXPECT_EQ(Util::Str2TimeDouble(u"05.03.2021-08:33:34"), 20210305083334.0);
  EXPECT_EQ(Util::OleDate2TimeDouble(Util::TimeDouble2OleDate(20210305083334.0)), 20210305083334.0);
  TIME leap{0, 235960};
  Util::correctTimeSeconds(leap);
  EXPECT_EQ(leap.time, 235959);
  EXPECT_EQ(Util::TrimLeft(u" a ") + Util::TrimRight(u" b ") + Util::Trim(u" c "), u"a  bc");
  EXPECT_EQ(Util::CatPathFile(u"C:\\Daten\\", u"MLT"), u"C:\\Daten\\MLT");
}

TEST_F(BaseObjectsUtil, FoldersAreCutOnceSomebodyKnowsThem) {
  const CString path = u"C:\\Daten\\Projekt\\a.xml";
  EXPECT_EQ(Util::CutSystemPath(path), path);
  EXPECT_EQ(Util::CutProjectPath(path), path);
  Util::setSystemFolderProvider([] { return CString(u"c:\\daten"); });
  Util::setProjectFolderProvider([] { return CString(u"C:\\Daten\\Projekt\\"); });
  EXPECT_EQ(Util::CutSystemPath(path), u"Projekt\\a.xml");
  EXPECT_EQ(Util::CutProjectPath(path), u"a.xml");
}

}  // namespace
}  // namespace kpx
