#include "kpx/settings/ValueCheck.h"

#include <gtest/gtest.h>

#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(ValueCheck, TakesWhatReadsBackAndRefusesTheRest) {
  using enum ValueProblem;
  const struct {
    ValueKind kind;
    const char16_t* text;
    ValueProblem problem;
    const char16_t* normal = u"";
    int decimals = -1;
  } cases[] = {
      {ValueKind::integer, u"0", none, u"0"},
      {ValueKind::integer, u" +007", none, u"7"},
      {ValueKind::integer, u"-2147483648", none, u"-2147483648"},
      {ValueKind::integer, u"2147483647", none, u"2147483647"},
      {ValueKind::integer, u"2147483648", outOfRange},
      {ValueKind::integer, u"-2147483649", outOfRange},
      {ValueKind::integer, u"99999999999999999999999", outOfRange},
      {ValueKind::integer, u"12abc", notInteger},
      {ValueKind::integer, u"12 ", notInteger},
      {ValueKind::integer, u"-", notInteger},
      {ValueKind::integer, u"1.5", notInteger},
      {ValueKind::integer, u"1.234", thousandsMark},
      {ValueKind::integer, u"", empty},
      {ValueKind::integer, u"  ", empty},
      {ValueKind::enumeration, u"-5", none, u"-5"},
      {ValueKind::enumeration, u"x", notInteger},
      {ValueKind::flag, u"1", none, u"1"},
      {ValueKind::flag, u"2", notFlag},
      {ValueKind::flag, u"true", notFlag},
      {ValueKind::flag, u"4294967296", notFlag},
      {ValueKind::real, u"0.02", none, u"0.020", 3},
      {ValueKind::real, u"1,5", none, u"1.5"},
      {ValueKind::real, u"2.e-002", none, u"2.e-002"},
      {ValueKind::real, u"-.5", none, u"-0.5"},
      {ValueKind::real, u"1e3", none, u"1000."},
      {ValueKind::real, u"1.234", none, u"1.234"},
      {ValueKind::real, u"---", none, u"8888.88888"},
      {ValueKind::real, u"1.234,56", thousandsMark},
      {ValueKind::real, u"1,234.56", thousandsMark},
      {ValueKind::real, u"-1.234.567", thousandsMark},
      {ValueKind::real, u"1'234,5", thousandsMark},
      {ValueKind::real, u"1 234", thousandsMark},
      {ValueKind::real, u"1.5 m", notReal},
      {ValueKind::real, u"1.5.2", notReal},
      {ValueKind::real, u".", notReal},
      {ValueKind::real, u"1e", notReal},
      {ValueKind::real, u"nan", notReal},
      {ValueKind::real, u"inf", notReal},
      {ValueKind::real, u"0x10", notReal},
      {ValueKind::real, u"1e999", outOfRange},
      {ValueKind::real, u"1e60", outOfRange, u"", 3},
      {ValueKind::real, u"1e60", none, u"1.e+060"},
      {ValueKind::real, u"", empty},
      {ValueKind::text, u"", none, u""},
      {ValueKind::text, u" a\tb\n\U0001F600", none, u" a\tb\n\U0001F600"},
      {ValueKind::text, u"a\x01", notStorable},
      {ValueKind::text, u"\xFFFF", notStorable},
  };
  for (const auto& each : cases) {
    const ValueCheck check = checkValueText(each.kind, each.text, each.decimals);
    EXPECT_EQ(check.problem, each.problem)
        << CString(each.text).utf8() << " " << describe(check.problem);
    EXPECT_EQ(check.normal, each.normal) << CString(each.text).utf8();
  }
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
