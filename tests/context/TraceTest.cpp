#include "kpx/context/Trace.h"

#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <filesystem>

#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

struct CloseTrace {
  ~CloseTrace() { closeTrace(); }
};

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
  EXPECT_EQ(scope.folder.read("trace.txt"),
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
  EXPECT_EQ(scope.folder.read("trace.txt"),
            "kpxGetProgPath m_strProgPath:  \n"
            "kpxGetProgPath Umgebungsvariable ProgPath:  \n"
            "kpxGetProgPath Registry ProgPath:  \n"
            "kpxGetProgPath Pfad der Hilfedatei ProgPath: /help \n"
            "kpxGetProgPath m_strProgPath: /help \n");
}

TEST(Trace, FileIsPrivateAndNeverReachedThroughALink) {
  ContextScope scope;
  CloseTrace closer;
  const auto folder = scope.folder.path();
  scope.folder.write("victim", "precious");
  std::filesystem::create_symlink(folder / "victim", folder / "link");
  EXPECT_FALSE(openTrace(scope.folder / "link"));
  std::filesystem::create_hard_link(folder / "victim", folder / "second");
  EXPECT_FALSE(openTrace(scope.folder / "second"));
  EXPECT_EQ(scope.folder.read("victim"), "precious");
  EXPECT_FALSE(openTrace(scope.folder / "no folder/trace"));
  EXPECT_FALSE(openTrace(u"/dev/full"));
  EXPECT_FALSE(isTraceOpen());

  scope.folder.write("trace", "");
  std::filesystem::permissions(folder / "trace", std::filesystem::perms::all);
  ASSERT_TRUE(openTrace(scope.folder / "trace"));
  struct stat status = {};
  ASSERT_EQ(::stat((folder / "trace").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
}

TEST(Trace, OneFileIsWrittenByOneProgram) {
  ContextScope scope;
  CloseTrace closer;
  scope.folder.write("trace", "of another");
  FILE* const other = std::fopen((scope.folder.path() / "trace").c_str(), "r+");
  ASSERT_EQ(::flock(::fileno(other), LOCK_EX), 0);
  EXPECT_FALSE(openTrace(scope.folder / "trace"));
  EXPECT_EQ(scope.folder.read("trace"), "of another");
  std::fclose(other);
  EXPECT_TRUE(openTrace(scope.folder / "trace"));
  EXPECT_TRUE(openTrace(scope.folder / "trace")) << "one that is left open is closed first";
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
  EXPECT_EQ(scope.folder.read("trace"), "end\n");
}

}  // namespace
}  // namespace kpx
