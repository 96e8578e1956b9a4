#include <gtest/gtest.h>

#include <vector>

#include "kpx/platform/InputDialog.h"
#include "kpx/platform/ProgressDialog.h"
#include "tests/common/TextPrinter.h"
#include "tests/platform/ManualClock.h"

namespace kpx {
namespace {

// --- the input dialog -------------------------------------------------------------------------

InputDialogRequest lastRequest;
std::optional<CString> givenAnswer;

std::optional<CString> answerAsGiven(const InputDialogRequest& request) {
  lastRequest = request;
  return givenAnswer;
}

TEST(InputDialogTest, TextsOfOneLineWithinTheLimit) {
  const InputDialogHandler before = setInputDialogHandler(answerAsGiven);
  struct Case {
    CString text;
    std::int32_t limit;
    CString expected;
  };
  const Case cases[] = {
      {u"4711", 0, u"4711"},
      {u"4711", 4, u"4711"},
      {u"4711", 3, u"471"},
      {u"4711", -1, u"4711"},
      {u"a\r\nb\nc\rd", 0, u"a b c d"},
      {u"a\u2028b\u0085c\r", 0, u"a b c "},
      {u"a\tb", 0, u"a\tb"},
      {u"\r\n\r\nabc", 3, u"  a"},
      {u"ab\U0001F600", 3, u"ab"},
      {u"ab\U0001F600", 4, u"ab\U0001F600"},
      {u"ab\xD83D", 3, u"ab\xD83D"},
      {u"", 1, u""},
  };
  for (const Case& each : cases) {
    givenAnswer = each.text;
    const std::optional<CString> answer =
        showInputDialog({.initialText = each.text, .maximumLength = each.limit});
    EXPECT_EQ(lastRequest.initialText, each.expected);
    ASSERT_TRUE(answer.has_value());
    EXPECT_EQ(*answer, each.expected);
  }
  givenAnswer.reset();
  EXPECT_FALSE(showInputDialog({.initialText = u"4711"}).has_value());
  EXPECT_EQ(setInputDialogHandler(before), answerAsGiven);
}

// --- the progress dialog ----------------------------------------------------------------------

std::vector<std::uint64_t> shownDone;
std::uint64_t cancelAt = ~std::uint64_t{0};
int displays = 0;

class CountingDisplay final : public ProgressDisplay {
 public:
  CountingDisplay() { ++displays; }
  ~CountingDisplay() override { --displays; }
  bool show(const Progress& progress) override {
    shownDone.push_back(progress.done);
    return progress.done < cancelAt;
  }
};

std::unique_ptr<ProgressDisplay> countingDisplay(const ProgressDialogRequest&) {
  return std::make_unique<CountingDisplay>();
}

std::unique_ptr<ProgressDisplay> noDisplay(const ProgressDialogRequest&) { return nullptr; }

class ProgressDialogTest : public testing::Test {
 protected:
  ProgressDialogTest() : before_(setProgressDialogHandler(countingDisplay)) { shownDone.clear(); }
  ~ProgressDialogTest() override {
    setProgressDialogHandler(before_);
    cancelAt = ~std::uint64_t{0};
  }

  ManualClock clock_;

 private:
  ProgressDialogHandler before_;
};

TEST_F(ProgressDialogTest, IsBroughtUpToDateTwentyTimesASecond) {
  {
    ProgressDialog dialog({});
    EXPECT_EQ(displays, 1);
    const ProgressReport report = dialog.report();
    for (std::uint64_t done = 0; done <= 150; ++done, ++clock_.milliseconds) {
      EXPECT_TRUE(report({.done = done, .total = 150}));
    }
    EXPECT_EQ(shownDone, (std::vector<std::uint64_t>{0, 50, 100, 150}));
  }
  EXPECT_EQ(displays, 0);
}

TEST_F(ProgressDialogTest, StaysCancelled) {
  ProgressDialog dialog({});
  cancelAt = 3;
  for (std::uint64_t done = 1; done < 10; ++done, clock_.milliseconds += 50) {
    EXPECT_EQ(dialog.show({.done = done % 5, .total = 9}), done < 3) << done;
  }
  EXPECT_TRUE(dialog.isCancelled());
  EXPECT_EQ(shownDone.size(), 3u);
}

TEST_F(ProgressDialogTest, WorkGoesOnWithoutADisplay) {
  setProgressDialogHandler(noDisplay);
  ProgressDialog dialog({});
  EXPECT_TRUE(dialog.show({.done = 1, .total = 2}));
  EXPECT_FALSE(dialog.isCancelled());
}

}  // namespace
}  // namespace kpx
