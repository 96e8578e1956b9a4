#include "kpx/platform/Processes.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

#include <algorithm>
#include <filesystem>

#include "kpx/platform/FileTimes.h"
#include "kpx/platform/Folders.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TestEnvironment.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(FoldersTest, ConfiguredFoldersCount) {
  setVariable("HOME", u"/home/someone//");
  removeVariable("XDG_CONFIG_HOME");
  EXPECT_EQ(detail::userHomeFolder(), u"/home/someone");
  EXPECT_EQ(detail::userDataFolder(), u"/home/someone/.config");
  setVariable("XDG_CONFIG_HOME", u"relative");
  EXPECT_EQ(detail::userDataFolder(), u"/home/someone/.config");
  setVariable("XDG_CONFIG_HOME", u"/elsewhere/");
  EXPECT_EQ(detail::userDataFolder(), u"/elsewhere");
  removeVariable("XDG_CONFIG_HOME");
  EXPECT_TRUE(std::filesystem::equivalent(programFile().utf8(), libraryFile().utf8()));
  EXPECT_TRUE(programFile().EndsWith(u"test_platform"));
}

TEST(FileTimesTest, TimesOfAFile) {
  const TemporaryFolder folder;
  folder.write("a", "x");
  const utimbuf times{951782400, -86399};  // 29.02.2000 00:00:00 and 31.12.1969 00:00:01
  ASSERT_EQ(::utime((folder.path() / "a").c_str(), &times), 0);
  FileTimes read;
  ASSERT_TRUE(readFileTimes(folder / "a", read));
  EXPECT_EQ(read.accessed, (DateTime{2000, 2, 29, 0, 0, 0}));
  EXPECT_EQ(read.written, (DateTime{1969, 12, 31, 0, 0, 1}));
  EXPECT_EQ(readFileTimes(folder / "missing", read).status, FileStatus::notFound);
  EXPECT_EQ(readFileTimes(u"", read).status, FileStatus::badName);
}

TEST(ProcessesTest, AreFoundAndEndedByName) {
  const TemporaryFolder folder;
  const std::string program = (folder.path() / "KpxSleeper").string();
  std::filesystem::copy_file("/bin/sleep", program);
  std::vector<pid_t> children;
  for (int i = 0; i < 2; ++i) {
    const pid_t child = ::fork();
    if (child == 0) {
      ::execl(program.c_str(), program.c_str(), "60", nullptr);
      ::_exit(1);
    }
    children.push_back(child);
  }
  std::vector<ProcessInfo> found;
  for (int tries = 0; tries < 500 && found.size() != 2; ++tries) {
    ::usleep(2000);
    found = findProcesses(u"kpxsleeper.EXE");
  }
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].id, static_cast<std::uint32_t>(std::min(children[0], children[1])));
  EXPECT_EQ(found[0].name, u"KpxSleeper");
  EXPECT_TRUE(findProcesses(u"KpxSleep").empty());
  EXPECT_EQ(endProcesses(u"KpxSleeper"), 2);
  for (const pid_t child : children) {
    int status = 0;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGTERM);
  }
  EXPECT_EQ(endProcesses(u"KpxSleeper"), 0);
}

TEST(ProcessesTest, NeverEndsItselfOrGroups) {
  EXPECT_TRUE(findProcesses(u"test_platform").empty());
  for (const std::uint32_t id : {0u, 1u, static_cast<std::uint32_t>(::getpid()), 0xFFFFFFFFu}) {
    EXPECT_FALSE(endProcess(id)) << id;
  }
}

}  // namespace
}  // namespace kpx
