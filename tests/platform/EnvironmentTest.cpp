#include "kpx/platform/Environment.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>
#include <utime.h>

#include <algorithm>
#include <filesystem>

#include "kpx/platform/FileTimes.h"
#include "kpx/platform/Folders.h"
#include "kpx/platform/Processes.h"
#include "kpx/platform/RandomBytes.h"
#include "kpx/platform/WindowPlacement.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(EnvironmentTest, VariablesAndNames) {
  ::setenv("KPX_TEST_Ä", "größer", 1);
  ::setenv("KPX_TEST_EMPTY", "", 1);
  CString value = u"before";
  EXPECT_EQ(environmentVariable(u"KPX_TEST_Ä"), u"größer");
  EXPECT_FALSE(readEnvironmentVariable(u"KPX_TEST_MISSING", value));
  EXPECT_EQ(value, u"before");
  EXPECT_TRUE(readEnvironmentVariable(u"KPX_TEST_EMPTY", value));
  EXPECT_EQ(value, u"");
  EXPECT_FALSE(computerName().IsEmpty());
  EXPECT_FALSE(userName().IsEmpty());
  EXPECT_GT(physicalMemoryBytes(), std::uint64_t{1} << 24);
  EXPECT_FALSE(systemMessage(2).IsEmpty());
  EXPECT_FALSE(systemMessage(2).EndsWith(u"\n"));
}

TEST(FoldersTest, ConfiguredFoldersCount) {
  ::setenv("HOME", "/home/someone//", 1);
  ::unsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(userHomeFolder(), u"/home/someone");
  EXPECT_EQ(userDataFolder(), u"/home/someone/.config");
  ::setenv("XDG_CONFIG_HOME", "relative", 1);
  EXPECT_EQ(userDataFolder(), u"/home/someone/.config");
  ::setenv("XDG_CONFIG_HOME", "/elsewhere/", 1);
  EXPECT_EQ(userDataFolder(), u"/elsewhere");
  ::unsetenv("XDG_CONFIG_HOME");
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

TEST(RandomBytesTest, FillsTheWholeBlock) {
  // Each byte is 0 in all 20 tries with a chance of 2 to the power of -160.
  constexpr std::size_t count = 600;
  unsigned char seen[count] = {};
  for (int tries = 0; tries < 20; ++tries) {
    unsigned char bytes[count] = {};
    ASSERT_TRUE(fillRandom(bytes, count));
    for (std::size_t i = 0; i < count; ++i) seen[i] |= bytes[i];
  }
  EXPECT_EQ(std::count(seen, seen + count, 0), 0);
}

TEST(WindowPlacementTest, RecordHasTheSystemsForm) {
  WindowPlacement placement;
  placement.flags = 2;
  placement.showCommand = 3;
  placement.minimised = {-1, -2};
  placement.maximised = {-3, -4};
  placement.topLeft = {-32000, 10};
  placement.bottomRight = {1920, 70000};
  const std::string record = placement.bytes();
  ASSERT_EQ(record.size(), 44u);
  EXPECT_EQ(record[0], 44);
  EXPECT_EQ(record.substr(8, 8), std::string("\3\0\0\0\xFF\xFF\xFF\xFF", 8));
  EXPECT_EQ(record.substr(40), std::string("\x70\x11\x01\0", 4));
  WindowPlacement read;
  EXPECT_TRUE(read.assign(record));
  EXPECT_EQ(read, placement);
  for (const std::string& bad : {record.substr(1), record + '\0', std::string(44, '\0')}) {
    EXPECT_FALSE(read.assign(bad));
    EXPECT_EQ(read, placement);
  }
}

}  // namespace
}  // namespace kpx
