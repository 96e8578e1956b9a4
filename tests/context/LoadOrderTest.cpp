#include <dlfcn.h>
#include <gtest/gtest.h>
#include <malloc.h>

#include <filesystem>
#include <iterator>

#include "kpx/support/TextStore.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

/// The shared library, beside the layers that are linked into this program.
class Library {
 public:
  Library() : handle_(::dlopen(KPX_LIBRARY, RTLD_NOW | RTLD_LOCAL)) {}
  ~Library() { close(); }
  bool isLoaded() const { return handle_ != nullptr; }
  void close() {
    if (handle_) ::dlclose(handle_);
    handle_ = nullptr;
  }
  template <class Function>
  Function* function(const char* name) const {
    return reinterpret_cast<Function*>(::dlsym(handle_, name));
  }
  static bool isInMemory() {
    void* const handle = ::dlopen(KPX_LIBRARY, RTLD_NOW | RTLD_NOLOAD);
    if (handle) ::dlclose(handle);
    return handle != nullptr;
  }

 private:
  void* handle_;
};

std::ptrdiff_t entriesOf(const char* folder) {
  return std::distance(std::filesystem::directory_iterator(folder), {});
}

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
  std::ptrdiff_t descriptors = 0;
  std::ptrdiff_t threads = 0;
  std::size_t bytes = 0;
  for (int round = 0; round < 100; ++round) {
    {
      Library library;
      ASSERT_TRUE(library.isLoaded()) << ::dlerror();
      // Something of everything that lives as long as the library does.
      library.function<void()>("_ZN3kpx15addBuiltInTextsEv")();
      const auto getText = library.function<const CString&(std::int32_t)>("_ZN3kpx6GetMLTEi");
      ASSERT_EQ(getText(614), u"Fehler");
      library.function<void(const CString&)>("_ZN3kpx16kpxSetSystemPathERKNS_7CStringE")(
          scope.systemFolder());
      library.function<void(const CProject&)>("_ZN3kpx20kpxSetCurrentProjectERKNS_8CProjectE")(
          kpxGetCurrentProject());
      library.function<void(int)>("_ZN3kpx8kpxErrorEi")(round);
      library.close();
      ASSERT_FALSE(Library::isInMemory()) << "something keeps the library in memory";
    }
    if (round == 60) {  // what the loader of the system takes once in a while is there by now
      descriptors = entriesOf("/proc/self/fd");
      threads = entriesOf("/proc/self/task");
      bytes = ::mallinfo2().uordblks;
    }
  }
  EXPECT_EQ(scope.log("system").size(), 100u);
  EXPECT_EQ(entriesOf("/proc/self/fd"), descriptors);
  EXPECT_EQ(entriesOf("/proc/self/task"), threads);
  // Blocks have at least 32 bytes.
  EXPECT_LT(::mallinfo2().uordblks, bytes + 39 * 32) << "not one block for each round";
}

TEST(LoadOrder, TraceIsOpenedAtLoadOnlyWhenTheSwitchIsOn) {
  ContextScope scope;
  scope.setVariable("XDG_CONFIG_HOME", scope.folder / "data");
  fileSystem().createFolders(scope.folder / "data/KPX/TmvDebug");
  const char* const trace = "data/KPX/TmvDebug/KpxBaseObjectsRel.TXT";
  const auto tracesTo = [&] {
    Library library;
    library.function<CString()>("_ZN3kpx14kpxGetProgPathEv")();
    return scope.folder.read(trace);
  };
  EXPECT_EQ(tracesTo(), "");
  EXPECT_EQ(scope.folder.names().size(), 3u) << "loading creates no registry";
  scope.switchOn(u"Tracing");
  EXPECT_TRUE(tracesTo().starts_with("kpxGetProgPath m_strProgPath: "));
  EXPECT_EQ(tracesTo(), tracesTo()) << "each begins anew, so the one before was closed";
  std::filesystem::remove_all(scope.folder.path() / "data");
  EXPECT_EQ(tracesTo(), "") << "without the folder nothing is traced";
  ::unsetenv("XDG_CONFIG_HOME");
}

}  // namespace
}  // namespace kpx
