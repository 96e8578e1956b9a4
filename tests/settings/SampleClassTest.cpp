// The behaviour of the accessors, over a class with every kind of setting.

#include <gtest/gtest.h>

#include <limits>
#include <vector>

#include "kpx/report/Error.h"
#include "kpx/settings/Catalogue.h"
#include "kpx/settings/CFGConfigSample.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace detail {
extern const SettingsClass settingsClassCFGConfigSample;
}
namespace {

int lastError = 0;

class Sample : public testing::Test {
 protected:
  Sample() {
    lastError = 0;
    earlier_ = setErrorSink([](int number) noexcept { lastError = number; });
  }
  ~Sample() override { setErrorSink(earlier_); }

  const CString& stored(const CString& key) { return sample_.Class.find(key)->Value.Value; }

  CFGConfigSample sample_;

 private:
  ErrorSink earlier_;
};

TEST_F(Sample, DefaultsAreStoredInTheOrderOfTheConstructor) {
  EXPECT_EQ(sample_.Class.KeyOrder,
            (std::vector<CString>{u"S_RgL", u"S_RgH", u"S_Text", u"S_Anlass", u"S_Enum", u"S_Real",
                                  u"S_Int", u"S_Flag"}));
  EXPECT_EQ(stored(u"S_Text"), u"a \"text\" with ß");
  EXPECT_EQ(stored(u"S_Anlass"), u"10901");
  EXPECT_EQ(stored(u"S_Real"), u"1000.");
  EXPECT_EQ(stored(u"S_Int"), u"-2147483648");
  EXPECT_EQ(sample_.GetElementName(), u"CFGConfigCFGSampleStored");
  EXPECT_EQ(sample_.Class.find(u"S_Text")->Caption, u"Groß \"q\" \\");
  EXPECT_EQ(sample_.Class.find(u"S_Flag")->Type, ColumnType::option);
}

TEST_F(Sample, ResetPosListsKeysThatHaveNoColumn) {
  sample_.ResetPos();
  EXPECT_EQ(sample_.Class.KeyOrder,
            (std::vector<CString>{u"S_RgL", u"S_RgH", u"S_Text", u"S_Old", u"S_Gone", u"S_Real"}));
  EXPECT_EQ(sample_.Class.find(u"S_Gone"), nullptr);
}

TEST_F(Sample, MissingSettingsAnswerTheirOwnValue) {
  sample_.Class.RemoveCols();
  EXPECT_EQ(sample_.getReal(), -1.5);
  EXPECT_EQ(sample_.getInt(), -1);
  EXPECT_EQ(sample_.getReal4(), 0.0);
  EXPECT_EQ(sample_.getText(), u"");
  const SettingsClass& owner = detail::settingsClassCFGConfigSample;
  EXPECT_EQ(answerWhenMissing(owner, *owner.findAccessor(u"getReal")), SettingValue(-1.5));
  EXPECT_EQ(answerWhenMissing(owner, *owner.findAccessor(u"getInt")), SettingValue(-1));
}

TEST_F(Sample, OlderKeyIsReadButNotWritten) {
  sample_.Class.ColAt(u"S_Old").Value.Value = u"old";
  EXPECT_EQ(sample_.getFormula(), u"old");
  sample_.setFormula(u"new");
  EXPECT_EQ(sample_.getFormula(), u"new");
  EXPECT_EQ(stored(u"S_Old"), u"old");
  EXPECT_EQ(detail::settingsClassCFGConfigSample.findKey(u"S_Old")->getter, u"getFormula");
}

TEST_F(Sample, OneKeyMayHaveTwoGettersAndSettersMayCross) {
  sample_.setBoth(u"2,5 m");
  EXPECT_EQ(sample_.getBothAsText(), u"2,5 m");
  EXPECT_EQ(sample_.getBoth(), 2.5);
  sample_.setLG(7);
  EXPECT_EQ(sample_.getLZ(), 7);
  EXPECT_EQ(sample_.getLG(), 0);
}

TEST_F(Sample, ColumnTypeNeverChangesTheConversion) {
  sample_.setReal4(2.005);
  EXPECT_EQ(stored(u"S_Real4"), u"2.01");
  EXPECT_EQ(sample_.Class.find(u"S_Real4")->Type, ColumnType::text);
  sample_.Class.ColAt(u"S_Real4").Type = ColumnType::integer;
  EXPECT_EQ(sample_.getReal4(), 2.01);
}

TEST_F(Sample, EnumerationsKeepAnyNumber) {
  sample_.setEnum(static_cast<enumKPXProjectType>(std::numeric_limits<std::int32_t>::min()));
  EXPECT_EQ(sample_.getEnum(), std::numeric_limits<std::int32_t>::min());
}

TEST_F(Sample, SetterTakesAPartOfItsOwnText) {
  sample_.setText(u"0123456789 0123456789");
  const CString& own = stored(u"S_Text");
  sample_.setText(own);
  EXPECT_EQ(sample_.getText(), u"0123456789 0123456789");
}

TEST_F(Sample, FailingChangeLosesNothing) {
  sample_.Class.ColAt(u"S_Real").Value.Value = u"1.5";
  const std::vector<CString> order = sample_.Class.KeyOrder;
  bool passed = false;
  try {
    const FailingAllocations all(0);
    sample_.setReal(1.0 / 3.0);
  } catch (const std::bad_alloc&) {
    passed = true;
  }
  EXPECT_TRUE(passed) << "a number was lost in silence";
  EXPECT_EQ(lastError, 910001);
  {
    const FailingAllocations all(0);
    sample_.ResetPos();
  }
  EXPECT_EQ(lastError, 909901);
  EXPECT_EQ(stored(u"S_Real"), u"1.5");
  EXPECT_EQ(sample_.Class.KeyOrder, order);
}

}  // namespace
}  // namespace kpx
