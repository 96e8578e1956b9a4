#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

#include "kpx/context/Trace.h"
#include "kpx/support/texts/TextStore.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"
#include "tests/context/LoadedLibrary.h"

namespace kpx {
namespace {

TEST(LoadOrder, ReadingTakesNoMemoryAndChangesNothing) {
  detail::releaseContext();
  EXPECT_EQ(kpxGetAppName(), u"");
  EXPECT_EQ(kpxGetCurrentProject().Name, u"");
  EXPECT_EQ(kpxGetCurrentFrameWnd(), nullptr);
  EXPECT_EQ(kpxGetCurrentProjectPath(), u"");
  EXPECT_EQ(detail::contextState(), nullptr);
}

TEST(LoadOrder, HundredRoundsLeaveNothingBehind) {
  ContextScope scope;
  HeldResources early;
  for (int round = 0; round < 100; ++round) {
    {
      LoadedLibrary library;
      ASSERT_TRUE(library.isLoaded());
      // Something of everything that lives as long as the library does.
      library.function<void()>("_ZN3kpx15addBuiltInTextsEv")();
      const auto getText = library.function<CString(std::int32_t)>("_ZN3kpx6GetMLTEi");
      ASSERT_EQ(getText(614), u"Fehler");
      library.function<void(const CString&)>("_ZN3kpx16kpxSetSystemPathERKNS_7CStringE")(
          scope.systemFolder());
      library.function<void(const CProject&)>("_ZN3kpx20kpxSetCurrentProjectERKNS_8CProjectE")(
          kpxGetCurrentProject());
      library.function<void(int)>("_ZN3kpx8kpxErrorEi")(round);
      library.close();
      ASSERT_FALSE(LoadedLibrary::isInMemory()) << "something keeps the library in memory";
    }
    if (round == 60) {  // what the loader of the system takes once in a while is there by now
      early = heldResources();
    }
  }
  EXPECT_EQ(scope.log("system").size(), 100u);
  const HeldResources late = heldResources();
  EXPECT_EQ(late.files, early.files);
  EXPECT_EQ(late.threads, early.threads);
  EXPECT_LE(late.bytes, early.bytes + 39 * bytesLostPerLoad);
}

TEST(LoadOrder, TraceIsOpenedAtLoadOnlyWhenTheSwitchIsOn) {
  ContextScope scope;
  // Where the trace lies in a folder of the user, that is one here.
  setVariable("XDG_CONFIG_HOME", scope.folder / "data");
  const std::filesystem::path trace{std::u16string_view(traceFilePath())};
  std::filesystem::create_directories(trace.parent_path());
  std::filesystem::remove(trace);
  const auto tracesTo = [&] {
    {
      LoadedLibrary library;
      library.function<CString()>("_ZN3kpx14kpxGetProgPathEv")();
    }
    std::ifstream file(trace, std::ios::binary);
    return std::string{std::istreambuf_iterator<char>(file), {}};
  };
  EXPECT_EQ(tracesTo(), "");
  scope.switchOn(u"Tracing");
  EXPECT_TRUE(tracesTo().starts_with("kpxGetProgPath m_strProgPath: "));
  EXPECT_EQ(tracesTo(), tracesTo()) << "each begins anew, so the one before was closed";
  std::filesystem::remove_all(trace.parent_path());
  EXPECT_EQ(tracesTo(), "") << "without the folder nothing is traced";
  removeVariable("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace kpx
