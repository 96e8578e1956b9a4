#include "kpx/settings/ValueCheck.h"

#include <gtest/gtest.h>

#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(ValueCheck, TakesWhatReadsBackAndRefusesTheRest) {
  using enum ValueProblem;
  const struct {
    ValueKind kind;
    ValueProblem problem;
    const char16_t* text;
    const char16_t* normal = u"";
  } cases[] = {
      {ValueKind::integer, none, u"0", u"0"},
      {ValueKind::integer, none, u" +007", u"7"},
      {ValueKind::integer, none, u"-2147483648", u"-2147483648"},
      {ValueKind::integer, none, u"2147483647", u"2147483647"},
      {ValueKind::integer, outOfRange, u"2147483648"},
      {ValueKind::integer, outOfRange, u"-2147483649"},
      {ValueKind::integer, outOfRange, u"99999999999999999999999"},
      {ValueKind::integer, notInteger, u"12abc"},
      {ValueKind::integer, notInteger, u"12 "},
      {ValueKind::integer, notInteger, u"-"},
      {ValueKind::integer, notInteger, u"1.5"},
      {ValueKind::integer, thousandsMark, u"1.234"},
      {ValueKind::integer, empty, u""},
      {ValueKind::integer, empty, u"  "},
      {ValueKind::enumeration, none, u"-5", u"-5"},
      {ValueKind::enumeration, notInteger, u"x"},
      {ValueKind::flag, none, u"1", u"1"},
      {ValueKind::flag, notFlag, u"2"},
      {ValueKind::flag, notFlag, u"true"},
      {ValueKind::flag, notFlag, u"4294967296"},
      {ValueKind::real, none, u"1,5", u"1.5"},
      {ValueKind::real, none, u"2.e-002", u"2.e-002"},
      {ValueKind::real, none, u"-.5", u"-0.5"},
      {ValueKind::real, none, u"1e3", u"1000."},
      {ValueKind::real, none, u"1.234", u"1.234"},
      {ValueKind::real, none, u"---", u"8888.88888"},
      {ValueKind::real, thousandsMark, u"1.234,56"},
      {ValueKind::real, thousandsMark, u"1,234.56"},
      {ValueKind::real, thousandsMark, u"-1.234.567"},
      {ValueKind::real, thousandsMark, u"1'234,5"},
      {ValueKind::real, thousandsMark, u"1 234"},
      {ValueKind::real, notReal, u"1.5 m"},
      {ValueKind::real, notReal, u"1.5.2"},
      {ValueKind::real, notReal, u"."},
      {ValueKind::real, notReal, u"1e"},
      {ValueKind::real, notReal, u"nan"},
      {ValueKind::real, notReal, u"inf"},
      {ValueKind::real, notReal, u"0x10"},
      {ValueKind::real, outOfRange, u"1e999"},
      {ValueKind::real, none, u"1e60", u"1.e+060"},
      {ValueKind::real, empty, u""},
      {ValueKind::text, none, u"", u""},
      {ValueKind::text, none, u" a\tb\n\U0001F600", u" a\tb\n\U0001F600"},
      {ValueKind::text, notStorable, u"a\x01"},
      {ValueKind::text, notStorable, u"\xFFFF"},
  };
  for (const auto& each : cases) {
    const ValueCheck check = checkValueText(each.kind, each.text);
    EXPECT_EQ(check.problem, each.problem)
        << CString(each.text).utf8() << " " << describe(check.problem);
    EXPECT_EQ(check.normal, each.normal) << CString(each.text).utf8();
  }
}

TEST(ValueCheck, WritesRealsWithTheDecimalsOfTheirSetting) {
  EXPECT_EQ(checkValueText(ValueKind::real, u"0.02", 3).normal, u"0.020");
  EXPECT_EQ(checkValueText(ValueKind::real, u"1e50", 3).problem, ValueProblem::none);
  // Would be stored as the mark of an undefined number.
  EXPECT_EQ(checkValueText(ValueKind::real, u"1e60", 3).problem, ValueProblem::outOfRange);
}

TEST(ValueCheck, RefusesLoneSurrogates) {
  const char16_t high[] = {u'a', 0xD83D, u'b'};
  const char16_t low[] = {0xDE00};
  const char16_t end[] = {0xD83D};
  for (const std::u16string_view text :
       {std::u16string_view(high, 3), std::u16string_view(low, 1), std::u16string_view(end, 1)}) {
    EXPECT_EQ(checkValueText(ValueKind::text, text).problem, ValueProblem::notStorable);
  }
}

}  // namespace
}  // namespace kpx
