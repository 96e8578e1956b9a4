#include <gtest/gtest.h>
#include <sys/file.h>
#include <sys/stat.h>

#include <filesystem>

#include "kpx/context/Trace.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

struct CloseTrace {
  ~CloseTrace() { closeTrace(); }
};

TEST(TraceFile, FileIsPrivateAndNeverReachedThroughALink) {
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

TEST(TraceFile, OneFileIsWrittenByOneProgram) {
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

}  // namespace
}  // namespace kpx
