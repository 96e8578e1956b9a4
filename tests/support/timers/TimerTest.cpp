#include <gtest/gtest.h>

#include "kpx/platform/Clock.h"
#include "kpx/platform/MessageBox.h"
#include "kpx/support/timers/CTimerFactory.h"
#include "kpx/support/timers/TimerReport.h"
#include "tests/common/FaultyFileSystem.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

/// A clock that stands still until it is told to go on.
class StandingClock final : public Clock {
 public:
  StandingClock() : before_(setClock(this)) {}
  ~StandingClock() override { setClock(before_); }

  void pass(double milliseconds) { ticks_ += static_cast<std::uint64_t>(milliseconds * 10'000); }

  DateTime localNow() override { return {2021, 3, 5, 8, 33, 34}; }
  ZoneResult localToUtc(const DateTime&, DateTime&) override { return ZoneResult::unknownZone; }
  ZoneResult utcToLocal(const DateTime&, DateTime&) override { return ZoneResult::unknownZone; }
  std::uint64_t counter() override { return ticks_; }
  std::uint64_t counterFrequency() override { return 10'000'000; }

 private:
  Clock* before_;
  std::uint64_t ticks_ = 1;
};

const std::string hyphens = std::string(59, '-') + "\n";
const std::string heading = hyphens + "Timings at 05.03.2021 08:33:34 \n" + hyphens;

TEST(Timer, CountsOnlyWholeRuns) {
  StandingClock clock;
  CHiFreqTimer timer(1);
  timer.stopTimer();
  EXPECT_EQ(timer.getNumberSamples(), 0);
  EXPECT_EQ(timer.getAverageTime(), 0.0);
  timer.startTimer();
  clock.pass(2.5);
  timer.startTimer(true);  // goes on
  clock.pass(0.5);
  timer.stopTimer();
  clock.pass(100);
  timer.stopTimer();
  timer.startTimer(true);
  clock.pass(1);
  EXPECT_EQ(timer.isRunning(), 1);
  EXPECT_EQ(timer.numberOfCalls(), 2);
  timer.stopTimer();
  EXPECT_EQ(timer.getSamples(), (std::vector<double>{3.0, 1.0}));
  EXPECT_EQ(timer.getTotalTime(), 4.0);
  EXPECT_EQ(timer.getAverageTime(), 2.0);
  EXPECT_EQ(timer.getMinimumTime(), 1.0);
  EXPECT_EQ(timer.getMaximumTime(), 3.0);
}

TEST(Timer, ProxyRunsForItsScope) {
  StandingClock clock;
  CTimerFactory factory;
  CHiFreqTimer* const timer = factory.getTimer(u"a");
  {
    const CTimerProxy outer(timer);
    clock.pass(1);
    {
      // The copy stops the run. NOLINTNEXTLINE(performance-unnecessary-copy-initialization)
      const CTimerProxy copy(outer);
      clock.pass(1);
    }
    EXPECT_EQ(timer->isRunning(), 0);
    clock.pass(1);
  }
  EXPECT_EQ(timer->getSamples(), (std::vector<double>{2.0}));
  const CTimerProxy nothing(nullptr);
}

TEST(Timer, TextsOfTimesAndNumbers) {
  const struct {
    double time;
    CString text;
  } times[] = {{600, u"1 seconds "},     {500.1, u"1 seconds "},     {500, u"500 milli secs "},
               {1, u"1000 micro secs "}, {0, u"0 micro secs "},      {1.4, u"1 milli secs "},
               {-2500, u"-3 seconds "},  {0.0126, u"13 micro secs "}};
  for (const auto& each : times) EXPECT_EQ(timeToString(each.time), each.text) << each.time;
  const struct {
    int number;
    CString text;
  } numbers[] = {{0, u"0"}, {1000, u"1000"}, {1001, u"1.001"}, {1234567, u"1234.567"}};
  for (const auto& each : numbers) EXPECT_EQ(numThou(each.number), each.text);
}

TEST(Timer, ReportsInBothOrders) {
  StandingClock clock;
  const TemporaryFolder folder;
  CTimerFactory factory;
  EXPECT_EQ(factory.dump(folder / "t.txt"), 1);
  EXPECT_EQ(folder.read("t.txt"), heading + "No timers run\n\n");
  EXPECT_EQ(factory.dumpCsv(folder / "t.csv"), 1);
  EXPECT_EQ(folder.read("t.csv"), "Timer name,Time (ms),# Calls\nNo timers run\n\n");

  for (int run = 0; run < 1'001; ++run) {
    const CTimerProxy proxy(factory.getTimer(u"short, often"));
    clock.pass(0.5);
  }
  factory.getTimer(u"long")->startTimer();
  clock.pass(600);
  factory.getTimer(u"long")->stopTimer();
  factory.getTimer(u"never\nended")->startTimer();
  EXPECT_EQ(factory.getTimer(u"never\nended")->getTimerNo(), 3);

  const std::string often = "short, often took 1 seconds  (called 1.001 times)\n";
  const std::string once = "long took 1 seconds  (called 1 time)\n";
  const std::string never = "never ended took 0 micro secs  (called 1 time) *currently running*\n";
  EXPECT_EQ(factory.dump(folder / "t.txt", timersort, timerFileMode::overwrite), 1);
  EXPECT_EQ(folder.read("t.txt"), heading + once + often + never + "\n");
  EXPECT_EQ(factory.dump(folder / "t.txt", ordersort, timerFileMode::append), 1);
  EXPECT_EQ(folder.read("t.txt"),
            heading + once + often + never + "\n" + heading + often + once + never + "\n");
  EXPECT_EQ(factory.dumpCsv(folder / "t.csv", timersort, timerFileMode::append), 1);
  EXPECT_EQ(folder.read("t.csv"),
            "Timer name,Time (ms),# Calls\nNo timers run\n\nTimer name,Time (ms),# Calls\n"
            "long,600.000000,1\nshort, often,500.500000,1001\n"
            "never ended,0.000000,1,*currently running*\n\n");

  // What was written is read.
  std::vector<std::vector<TimerLine>> reports;
  ASSERT_TRUE(readTimerCsv(CString::fromUtf8(folder.read("t.csv")), reports).empty());
  ASSERT_EQ(reports.size(), 2u);
  EXPECT_TRUE(reports[0].empty());
  ASSERT_EQ(reports[1].size(), 3u);
  EXPECT_EQ(reports[1][1].name, u"short, often");
  EXPECT_EQ(reports[1][1].milliseconds, 500.5);
  EXPECT_EQ(reports[1][1].calls, 1'001);
  EXPECT_TRUE(reports[1][2].running);
}

TEST(Timer, MissingTimerIsTold) {
  static CString told;
  CTimerFactory factory;
  const auto before = setMessageBoxHandler([](const MessageBoxRequest& request) {
    told = request.caption + u"|" + request.text;
    return MessageBoxAnswer::ok;
  });
  EXPECT_EQ(factory.getTimerChecked(u"x"), nullptr);
  EXPECT_EQ(told, u"Error|Timer not found: x");
  EXPECT_EQ(factory.dumpSamples(u"x", u"never written"), 0);
  EXPECT_EQ(factory.isTimerPresent(u"x"), 0);
  CHiFreqTimer* const timer = factory.getTimer(u"x");
  EXPECT_EQ(factory.getTimerChecked(u"x"), timer);
  EXPECT_EQ(factory.getTimerName(timer), u"x");
  factory.clearTimers();
  EXPECT_EQ(factory.isTimerPresent(u"x"), 0);
  setMessageBoxHandler(before);
  EXPECT_EQ(&GetTimerFactory(), &GetTimerFactory());
}

TEST(Timer, FailingStepLeavesTheOldReport) {
  using Step = FaultyFileSystem::Step;
  const TemporaryFolder folder;
  folder.write("t.csv", "old");
  CTimerFactory factory;
  FaultyFileSystem files;
  for (const Step step : {Step::open, Step::write, Step::flush, Step::close, Step::putInPlace}) {
    files.failOnce(step);
    EXPECT_EQ(factory.dumpCsv(folder / "t.csv"), 0);
    EXPECT_EQ(folder.read("t.csv"), "old");
  }
  for (const Step step : {Step::open, Step::write, Step::close}) {
    files.failOnce(step);
    EXPECT_EQ(factory.dump(folder / "t.txt", timersort, timerFileMode::append), 0);
  }
}

TEST(TimerCsv, LinesThatAreNoneAreNamedAndTheOthersRead) {
  const CString header = u"Timer name,Time (ms),# Calls\n";
  const struct {
    CString text;
    std::vector<int> strange;
    std::size_t timers;
  } cases[] = {
      {u"", {1}, 0},
      {u"a,1.0,2\n", {1}, 0},
      {u"Timer name,Time (ms),# Calls\r\na,1.5,2\r\n", {}, 1},
      {header + u"a,-1.5,0\n1,2\nb,1.5,2147483647\n", {3}, 2},
      {header + u"a,b,2\na,1.0,\na,1..5,2\na,---,2\na,1.5,99999999999\na,.5,2\na,1.0,x\n",
       {2, 3, 4, 5, 6, 7, 8},
       0},
      // A report that ends in the middle of a line, and the next one behind it.
      {header + u"a,1.5,2\nlong,60" + header + u"b,1.5,2\n\n", {3}, 2},
      {header + u"a,1.5,2\n\nb,1.5,2\n", {4}, 1},
  };
  for (const auto& each : cases) {
    std::vector<std::vector<TimerLine>> reports;
    EXPECT_EQ(readTimerCsv(each.text, reports), each.strange) << each.text.utf8();
    std::size_t timers = 0;
    for (const auto& report : reports) timers += report.size();
    EXPECT_EQ(timers, each.timers) << each.text.utf8();
  }
}

}  // namespace
}  // namespace kpx
