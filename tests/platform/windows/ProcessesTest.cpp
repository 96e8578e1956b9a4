#include "kpx/platform/Processes.h"

#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>

#include "kpx/platform/Folders.h"
#include "kpx/platform/WindowPlacement.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(FoldersTest, AreThoseOfTheSystem) {
  for (const CString& folder :
       {detail::userHomeFolder(), detail::userDataFolder(), detail::commonDataFolder()}) {
    EXPECT_EQ(folder.Find(u':'), 1) << folder.utf8();
    EXPECT_FALSE(folder.EndsWith(u"\\"));
  }
  EXPECT_TRUE(detail::userDataFolder().StartsWith(detail::userHomeFolder()));
  EXPECT_TRUE(programFile().EndsWith(u"\\test_platform.exe")) << programFile().utf8();
  EXPECT_EQ(programFile(), libraryFile());
}

TEST(ProcessesSleeper, DISABLED_Sleeps) { ::Sleep(60000); }

TEST(ProcessesTest, AreFoundAndEndedByName) {
  const TemporaryFolder folder;
  const auto program = folder.path() / "KpxSleeper.exe";
  std::filesystem::copy_file(std::filesystem::path(std::u16string_view(programFile())), program);
  HANDLE children[2] = {};
  DWORD ids[2] = {};
  for (int i = 0; i < 2; ++i) {
    std::wstring line =
        L"KpxSleeper --gtest_also_run_disabled_tests "
        L"--gtest_filter=ProcessesSleeper.* --gtest_brief=1";
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION made{};
    ASSERT_TRUE(::CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                 nullptr, &start, &made));
    ::CloseHandle(made.hThread);
    children[i] = made.hProcess;
    ids[i] = made.dwProcessId;
  }
  const std::vector<ProcessInfo> found = findProcesses(u"kpxsleeper");
  ASSERT_EQ(found.size(), 2u);
  EXPECT_EQ(found[0].id, std::min(ids[0], ids[1]));
  EXPECT_EQ(found[0].name, u"KpxSleeper.exe");
  EXPECT_TRUE(findProcesses(u"KpxSleep").empty());
  EXPECT_EQ(endProcesses(u"KPXSLEEPER.exe"), 2);
  for (const HANDLE child : children) {
    EXPECT_EQ(::WaitForSingleObject(child, 20000), WAIT_OBJECT_0);
    ::CloseHandle(child);
  }
  EXPECT_EQ(endProcesses(u"KpxSleeper"), 0);
}

TEST(ProcessesTest, NeverEndsItself) {
  EXPECT_TRUE(findProcesses(u"test_platform").empty());
  for (const std::uint32_t id : {0u, 1u, static_cast<std::uint32_t>(::GetCurrentProcessId())}) {
    EXPECT_FALSE(endProcess(id)) << id;
  }
}

TEST(WindowPlacementTest, IsThatOfARealWindow) {
  const HWND window = ::CreateWindowExW(0, L"STATIC", L"", WS_OVERLAPPEDWINDOW, 10, 20, 300, 200,
                                        nullptr, nullptr, nullptr, nullptr);
  ASSERT_NE(window, nullptr);
  WindowPlacement placement;
  ASSERT_TRUE(placementOfHandle(window, placement));
  EXPECT_EQ(placement.topLeft, (WindowPlacement::Point{10, 20}));
  EXPECT_EQ(placement.bottomRight, (WindowPlacement::Point{310, 220}));
  placement.bottomRight = {410, 320};
  placement.showCommand = SW_HIDE;
  ASSERT_TRUE(placeHandle(window, placement));
  WindowPlacement again;
  ASSERT_TRUE(placementOfHandle(window, again));
  EXPECT_EQ(again.bottomRight, placement.bottomRight);
  ::DestroyWindow(window);
  EXPECT_FALSE(placementOfHandle(window, again));
  EXPECT_FALSE(placeHandle(window, again));
}

}  // namespace
}  // namespace kpx
