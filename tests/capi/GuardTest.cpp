#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <string>
#include <string_view>
#include <thread>

#include "kpx/capi/ErrorTable.h"
#include "kpx/report/Error.h"
#include "kpx_c.h"
#include "tests/common/FailingAllocations.h"

namespace kpx {
namespace {

constexpr std::string_view xml =
    "<r><CFGConfigCFGClassHeader><CFGClass><CFGCol Name='Class'><CFGValue Value='a'/></CFGCol>"
    "</CFGClass></CFGConfigCFGClassHeader></r>";

class Guard : public testing::Test {
 protected:
  Guard() : before_(setErrorSink(nullptr)) {}
  ~Guard() override { setErrorSink(before_); }

  /// Lets each allocation of a call fail in its turn, until the call succeeds.
  template <class Call>
  static int32_t roundsUntilOk(Call call) {
    for (int32_t round = 0; round < 10'000; ++round) {
      const FailingAllocations failing(round);
      const int32_t code = call();
      if (code == KPX_C_OK) return round;
      EXPECT_TRUE(code == KPX_C_FAILED || code == KPX_C_REFUSED) << code;
    }
    return -1;
  }

 private:
  ErrorSink before_;
};

TEST_F(Guard, MissingMemoryIsAnsweredAndLosesNothing) {
  kpx_c_document* document = nullptr;
  EXPECT_EQ(kpx_c_new(nullptr, 0, &document), KPX_C_OK);  // loads the texts
  EXPECT_EQ(kpx_c_close(document), KPX_C_OK);

  EXPECT_GT(roundsUntilOk([&] { return kpx_c_open_bytes(xml.data(), xml.size(), &document); }), 0);
  const std::u16string value(100, u'x');
  const auto setBoth = [&] {
    const int32_t first = kpx_c_set_text(document, 0, u"Class", -1, value.data(), 100);
    const int32_t second = kpx_c_set_text(document, 0, u"Description", -1, value.data(), 100);
    return first != KPX_C_OK ? first : second;
  };
  EXPECT_GT(roundsUntilOk(setBoth), 0);
  std::string bytes(10'000, 0);
  std::int64_t count = 0;
  const auto save = [&] {
    return kpx_c_save_bytes(document, bytes.data(), static_cast<int64_t>(bytes.size()), &count);
  };
  EXPECT_GT(roundsUntilOk(save), 0);
  EXPECT_EQ(kpx_c_close(document), KPX_C_OK);

  // Each value stands there once, whichever step had failed before.
  bytes.resize(static_cast<std::size_t>(count));
  const std::string stored = "Value='" + std::string(100, 'x');
  EXPECT_NE(bytes.find(stored), std::string::npos);
  EXPECT_EQ(bytes.find("Description"), bytes.rfind("Description"));
  EXPECT_EQ(std::ranges::count(bytes, 'x'), 200);
}

// What other threads report is none of this one's failures.
TEST_F(Guard, ReportsOfOtherThreadsSpoilNothing) {
  std::atomic<bool> isOver{false};
  std::thread other([&] {
    while (!isOver) kpxError(1);
  });
  for (int round = 0; round < 300; ++round) {
    kpx_c_document* document = nullptr;
    ASSERT_EQ(kpx_c_open_bytes(xml.data(), xml.size(), &document), KPX_C_OK);
    int32_t added = 0;
    EXPECT_EQ(kpx_c_add(document, u"CFGGeneralSettings", -1, &added), KPX_C_OK);
    EXPECT_EQ(kpx_c_close(document), KPX_C_OK);
  }
  isOver = true;
  other.join();
}

TEST_F(Guard, AnUnexpectedFailureIsReportedByItsNumber) {
  static int reported;
  reported = 0;
  setErrorSink([](int number) noexcept { reported = number; });
  kpx_c_document* document = nullptr;
  {
    const FailingAllocations all(0);
    EXPECT_EQ(kpx_c_new(nullptr, 0, &document), KPX_C_FAILED);
  }
  EXPECT_EQ(document, nullptr);
  int32_t code = 0;
  int32_t number = 0;
  kpx_c_last_error(&code, &number, nullptr, nullptr);
  EXPECT_EQ(code, KPX_C_FAILED);
  EXPECT_EQ(number, reported);
  EXPECT_EQ(operationOf(number), "kpx_c_new");
}

}  // namespace
}  // namespace kpx
