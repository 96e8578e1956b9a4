#include "kpx/context/Trace.h"

#include <gtest/gtest.h>

#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

struct CloseTrace {
  ~CloseTrace() { closeTrace(); }
};

/// The lines, which end as the system's do, with a line feed each.
std::string traceOf(const ContextScope& scope, const char* name) {
  const std::string bytes = scope.folder.read(name);
  std::string lines;
  for (std::size_t from = 0; from < bytes.size();) {
    const std::size_t end = bytes.find(systemLineEnd, from);
    EXPECT_NE(end, std::string::npos);
    lines += bytes.substr(from, end - from) + '\n';
    from = end == std::string::npos ? end : end + systemLineEnd.size();
  }
  return lines;
}

TEST(Trace, ScopesWriteTimeDepthAndName) {
  ContextScope scope;
  StoppedClock clock;
  CloseTrace closer;
  clock.count = 5000;
  scope.folder.write("trace.txt", "from the last time");
  ASSERT_TRUE(openTrace(scope.folder / "trace.txt"));
  {
    TraceScope outer("outer");
    clock.count = 5012;
    {
      TraceScope inner("inner");
      traceLine("found %s after %.2f s\n", CString(u"Möller"), 0.5);
    }
    clock.count = 7100;
  }
  // Each line is there at once.
  EXPECT_EQ(traceOf(scope, "trace.txt"),
            "0.000 - Enter:outer\n"
            "0.012 - Enter:  inner\n"
            "found Möller after 0.50 s\n"
            "0.012 - Leave:  inner\n"
            "2.100 - Leave:outer\n");
}

TEST(Trace, ProgramFolderTracesItsSteps) {
  ContextScope scope;
  CloseTrace closer;
  openTrace(scope.folder / "trace.txt");
  setHelpFile(u"/help/a.hlp");
  kpxGetProgPath();
  kpxGetProgPath();
  EXPECT_EQ(traceOf(scope, "trace.txt"),
            "kpxGetProgPath m_strProgPath:  \n"
            "kpxGetProgPath Umgebungsvariable ProgPath:  \n"
            "kpxGetProgPath Registry ProgPath:  \n"
            "kpxGetProgPath Pfad der Hilfedatei ProgPath: /help \n"
            "kpxGetProgPath m_strProgPath: /help \n");
}

TEST(Trace, MemoryThatRunsOutLosesOnlyTheLine) {
  ContextScope scope;
  CloseTrace closer;
  openTrace(scope.folder / "trace");
  {
    FailingAllocations failing(0);
    traceLine("%s\n", std::string_view("a line that is too long to be kept in a small text"));
  }
  traceLine("%d %s\n", 1);  // a value is missing
  traceLine("end\n");
  EXPECT_EQ(traceOf(scope, "trace"), "end\n");
}

}  // namespace
}  // namespace kpx
