#include <gtest/gtest.h>

#include <iterator>
#include <stdexcept>
#include <vector>

#include "kpx/report/Error.h"
#include "kpx/report/Trace.h"

namespace kpx {
namespace {

std::vector<int> reported;

void recordReport(int number) noexcept { reported.push_back(number); }

void reportAgain(int number) noexcept {
  reported.push_back(number);
  kpxError(number + 1);
}

struct SinkScope {
  explicit SinkScope(ErrorSink sink) : previous(setErrorSink(sink)) { reported.clear(); }
  ~SinkScope() { setErrorSink(previous); }
  ErrorSink previous;
};

TEST(Error, GuardReportsWhateverIsThrownAndAnswersTheNeutralResult) {
  SinkScope scope(&recordReport);
  EXPECT_EQ(Guarded("CFGCol::loadByXML", 0, [] { return 7; }), 7);
  EXPECT_EQ(Guarded("CFGCol::serializeXML", -1, []() -> int { throw std::runtime_error("no"); }),
            -1);
  EXPECT_EQ(Guarded("InitMLT", -2, []() -> int { throw 42; }), -2);
  Guarded(OperationNumber::ofSetting(900001), [] { throw 'x'; });
  EXPECT_EQ(reported, (std::vector<int>{42905, 71472, 900001}));
}

TEST(Error, ReportInsideAReportIsDroppedAndCounted) {
  SinkScope scope(&reportAgain);
  const ErrorCounts before = errorCounts();
  kpxError(10);
  kpxError(20);
  EXPECT_EQ(reported, (std::vector<int>{10, 20}));
  EXPECT_EQ(errorCounts().reported - before.reported, 4u);
  EXPECT_EQ(errorCounts().dropped - before.dropped, 2u);
}

TEST(Error, OperationOfANumber) {
  EXPECT_EQ(operationOf(71472), "InitMLT");
  EXPECT_EQ(operationOf(std::begin(errorTable)->number), std::begin(errorTable)->operation);
  EXPECT_EQ(operationOf(std::rbegin(errorTable)->number), std::rbegin(errorTable)->operation);
  for (const int unknown : {0, -1, 42906, 900001, 2147483647}) EXPECT_EQ(operationOf(unknown), "");
}

std::vector<bool> traced;
void recordTrace(const char*, bool entering) noexcept { traced.push_back(entering); }

TEST(Trace, ScopeThatBeganUntracedDoesNotTraceItsEnd) {
  {
    TraceScope outer("outer");
    setTraceSink(&recordTrace);
    TraceScope inner("inner");
  }
  setTraceSink(nullptr);
  EXPECT_EQ(traced, (std::vector<bool>{true, false}));
}

}  // namespace
}  // namespace kpx
