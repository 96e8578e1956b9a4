#include <gtest/gtest.h>

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
  EXPECT_EQ(Guarded(1, 0, [] { return 7; }), 7);
  EXPECT_EQ(Guarded(2, -1, []() -> int { throw std::runtime_error("no"); }), -1);
  EXPECT_EQ(Guarded(3, -2, []() -> int { throw 42; }), -2);
  Guarded(4, [] { throw 'x'; });
  EXPECT_EQ(reported, (std::vector<int>{2, 3, 4}));
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
