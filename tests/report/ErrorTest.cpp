#include <gtest/gtest.h>

#include <stdexcept>
#include <vector>

#include "kpx/report/Error.h"
#include "kpx/report/TraceScope.h"

namespace kpx {
namespace {

constexpr ErrorEntry operations[] = {{1, "first"}, {42904, "second"}, {71472, "third"}};

consteval OperationNumber operator""_test(const char* operation, std::size_t length) {
  return OperationNumber::in(operations, {operation, length});
}

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
  EXPECT_EQ(Guarded("first"_test, 0, [] { return 7; }), 7);
  EXPECT_EQ(Guarded("second"_test, -1, []() -> int { throw std::runtime_error("no"); }), -1);
  EXPECT_EQ(Guarded("third"_test, -2, []() -> int { throw 42; }), -2);
  Guarded(OperationNumber::ofSetting(900001), [] { throw 'x'; });
  EXPECT_EQ(reported, (std::vector<int>{42904, 71472, 900001}));
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
  for (const ErrorEntry& entry : operations) {
    EXPECT_EQ(operationIn(operations, entry.number), entry.operation);
  }
  for (const int unknown : {0, -1, 2, 42905, 2147483647}) {
    EXPECT_EQ(operationIn(operations, unknown), "");
  }
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
