#include <gtest/gtest.h>

#include <array>
#include <thread>
#include <vector>

#include "kpx/settings/AllSettings.h"
#include "kpx/support/texts/TextStore.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

TEST(Threads, ManyReadAtOnce) {
  ContextScope scope;
  // The system's clock takes a lock that the sanitizer does not see.
  StoppedClock clock;
  addBuiltInTexts();
  CFGGeneralSettings settings;
  setVariable("KPX_INI", u"/programs");
  setLogPatience(std::chrono::minutes(1));
  std::array<int, 4> good{};
  {
    std::vector<std::thread> threads;
    threads.reserve(good.size());
    for (int& count : good) {
      threads.emplace_back([&count, &settings, number = static_cast<int>(&count - good.data())] {
        for (int i = 0; i < 50; ++i) {
          // The first to come finds the folder out and keeps it for all.
          count += kpxGetProgPath() == u"/programs" && kpxGetCurrentProject().Name == u"Aue" &&
                   GetMLT(614) == u"Fehler" && settings.getCA2TTolXY() == 0.02 &&
                   kpxIsTestMode() == 0;
        }
        kpxError(number);
      });
    }
    for (std::thread& thread : threads) thread.join();
  }
  EXPECT_EQ(good, (std::array<int, 4>{50, 50, 50, 50}));
  EXPECT_EQ(scope.log("system").size(), 4u);
}

}  // namespace
}  // namespace kpx
