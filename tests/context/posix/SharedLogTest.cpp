#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <set>

#include "kpx/context/ErrorReport.h"
#include "tests/common/posix/ChildProcess.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

using std::chrono::milliseconds;

// What the logs may meet here: full volumes, pipes, missing rights, other programs.

TEST(SharedLog, PlaceThatTakesNothingLosesOnlyItself) {
  for (const bool isFull : {true, false}) {
    ContextScope scope;
    const auto log = scope.folder.path() / "system" / "Error.log";
    if (isFull) {
      std::filesystem::create_symlink("/dev/full", log);
    } else {  // a pipe that nobody reads
      ASSERT_EQ(::mkfifo(log.c_str(), 0600), 0);
    }
    kpxError(7);
    EXPECT_EQ(scope.log("project").size(), 1u) << isFull;
  }
}

TEST(SharedLog, WriteProtectedLogIsSkipped) {
  ContextScope scope;
  const auto log = scope.folder.path() / "system" / "Error.log";
  scope.folder.write("system/Error.log", "old\n");
  std::filesystem::permissions(log, std::filesystem::perms::owner_read);
  std::filesystem::permissions(scope.folder.path(), std::filesystem::perms::all);
  std::filesystem::permissions(scope.folder.path() / "project", std::filesystem::perms::all);
  const pid_t child = inChild([] {
    // The administrator may write everything.
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0 && ::setuid(nobody) != 0) return 2;
    kpxError(7);
    return 0;
  });
  EXPECT_EQ(exitOf(child), 0);
  EXPECT_EQ(scope.log("system"), std::vector<std::string>{"old"});
  EXPECT_EQ(scope.log("project").size(), 1u);
}

TEST(SharedLog, LineThatFitsOnlyHalfIsTakenBack) {
  ContextScope scope;
  scope.folder.write("system/Error.log", "old\n");
  const pid_t child = inChild([] {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{40, 40};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 2;
    kpxError(7);
    return 0;
  });
  EXPECT_EQ(exitOf(child), 0);
  EXPECT_EQ(scope.log("system"), std::vector<std::string>{"old"});
  EXPECT_TRUE(scope.log("project").empty());
}

TEST(SharedLog, LockedLogIsSkippedAfterTheTimeThatWasSet) {
  ContextScope scope;
  setLogPatience(milliseconds(50));
  scope.folder.write("system/Error.log", "");
  const int other =
      ::open((scope.folder.path() / "system" / "Error.log").c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(other, LOCK_EX), 0);
  const auto begin = std::chrono::steady_clock::now();
  kpxError(7);
  const auto waited = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(waited, milliseconds(50));
  EXPECT_LT(waited, milliseconds(1000));
  EXPECT_TRUE(scope.log("system").empty());
  EXPECT_EQ(scope.log("project").size(), 1u);
  ::close(other);
  kpxError(7);
  EXPECT_EQ(scope.log("system").size(), 1u);
}

TEST(SharedLog, LockedRegistryHoldsNobodyUp) {
  ContextScope scope;
  scope.switchOn(u"ErrorMessage");
  setLogPatience(milliseconds(50));
  static int shown = 0;
  setMessageBoxHandler([](const MessageBoxRequest&) { return ++shown; });
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open(std::getenv("KPX_USER_REGISTRY"), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  const auto begin = std::chrono::steady_clock::now();
  kpxError(7);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, milliseconds(1000));
  sqlite3_close(other);
  EXPECT_EQ(shown, 0);
  EXPECT_EQ(scope.log("system").size(), 1u);
}

TEST(SharedLog, EightProcessesLoseAndMixUpNoLine) {
  ContextScope scope;
  setLogPatience(std::chrono::minutes(2));
  constexpr int processes = 8;
  constexpr int reports = 1000;
  std::vector<pid_t> children;
  children.reserve(processes);
  for (int process = 0; process < processes; ++process) {
    children.push_back(inChild([&] {
      for (int i = 0; i < reports; ++i) kpxError(100000 * (process + 1) + i);
      return 0;
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(exitOf(child), 0);
  for (const char* place : {"system", "project"}) {
    std::set<int> numbers;
    const auto lines = scope.log(place);
    for (const std::string& line : lines) {
      const std::string head = "Projekt: Aue    Job: Tag 1    Fehler: ";
      ASSERT_TRUE(line.starts_with(head) && line.ends_with(ContextScope::userField())) << line;
      numbers.insert(std::stoi(line.substr(head.size())));
    }
    EXPECT_EQ(lines.size(), std::size_t{processes * reports}) << place;
    EXPECT_EQ(numbers.size(), lines.size()) << place;
  }
}

TEST(SharedLog, DefaultAnswerOfABoxThatNobodySeesChangesNothing) {
  const struct {
    std::int32_t style;
    int answer;
  } boxes[] = {{16, 1}, {64 + 1, 2}, {2, 3}, {32 + 3, 2}, {4, 7}, {5, 2}};
  for (const auto& box : boxes) {
    MessageBoxRequest request;
    request.style = box.style;
    testing::internal::CaptureStderr();
    EXPECT_EQ(showMessageBox(request), box.answer) << box.style;
    testing::internal::GetCapturedStderr();
  }
}

}  // namespace
}  // namespace kpx
