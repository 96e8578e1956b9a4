#include <gtest/gtest.h>

#include <cstdint>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/MarkupCheck.h"
#include "tests/common/TextPrinter.h"

// The markup engine is compiled for this program so that it calls here in front of every piece of
// code without a branch: their number is the same in every run, however busy the machine is.

static std::uint64_t steps = 0;
extern "C" void __sanitizer_cov_trace_pc();  // NOLINT: the name that the compiler calls
extern "C" void __sanitizer_cov_trace_pc() { ++steps; }

namespace kpx {
namespace {

using namespace literals;

template <class Body>
std::uint64_t stepsOf(const Body& body) {
  const std::uint64_t before = steps;
  body();
  return steps - before;
}

CString repeated(int count, std::u16string_view part) {
  CString text;
  text.Preallocate(count * static_cast<int>(part.size()));
  for (int i = 0; i < count; ++i) text += part;
  return text;
}

// Four times the text may take a little more than four times the steps, never sixteen times.
constexpr int few = 5000;
constexpr int many = 4 * few;
constexpr std::uint64_t most = 5;

TEST(MarkupSteps, HostileDocumentsCostNoMoreThanTheyAreLong) {
  struct Case {
    const char* what;
    CString (*make)(int);
  };
  const Case cases[] = {
      {"lone end tags below deep nesting",
       [](int n) { return repeated(n, u"<a>") + repeated(n, u"</b>"); }},
      {"... with names that begin alike",
       [](int n) {
         return repeated(n, u"<a==[]=>") + repeated(n, u"</a=>") + repeated(n, u"</a>");
       }},
      {"unended elements in unended elements",
       [](int n) { return u"<r>"_cs + repeated(n, u"<a><b/>") + u"</r>"_cs; }},
      {"many unended groups",
       [](int n) { return repeated(n, u"<a><b><c><d/></a>") + repeated(n, u"<a>"); }},
      {"errors on one long line", [](int n) { return u"<a>"_cs + repeated(n, u"</b>x"); }},
      {"unterminated quotes", [](int n) { return repeated(n, u"<a b=\"'><c d='"); }},
      {"no tag at all", [](int n) { return repeated(n, u"<"); }},
      {"no declaration", [](int n) { return repeated(n, u"<!D>"); }},
      {"unterminated comments", [](int n) { return repeated(n, u"<!--"); }},
      {"a comment full of ends", [](int n) { return u"<!--"_cs + repeated(n, u"->"); }},
      {"brackets in a declaration", [](int n) { return u"<!DOCTYPE "_cs + repeated(n, u"[<!--"); }},
      {"one long name",
       [](int n) { return u"<"_cs + repeated(n, u"a=") + u">"_cs + repeated(n, u"</b>"); }},
  };
  const auto stepsFor = [](const CString& text) {
    return stepsOf([&] { CMarkup().SetDoc(text); });
  };
  for (const Case& each : cases) {
    const std::uint64_t quarter = stepsFor(each.make(few));
    EXPECT_GT(quarter, 0u);
    EXPECT_LT(stepsFor(each.make(many)), most * quarter) << each.what;
  }
}

TEST(MarkupSteps, CheckCostsNoMoreThanTheTextIsLong) {
  const std::u16string_view parts[] = {u"&",    u"&a",     u"&#",    u"]]>",
                                       u"\x01", u"<a b=<", u"<!---", u"<a "};
  for (const std::u16string_view part : parts) {
    const auto stepsFor = [&](int count) {
      // All in one tag, too.
      const CString text =
          u"<r>"_cs + repeated(count, part) + u"<x "_cs + repeated(count, u"a b='&' ") + u"/>"_cs;
      return stepsOf([&] { MarkupCheck::check(text, [](const MarkupProblem&) {}); });
    };
    const std::uint64_t quarter = stepsFor(few);
    EXPECT_GT(quarter, 0u);
    EXPECT_LT(stepsFor(many), most * quarter) << CString(part).utf8();
  }
}

}  // namespace
}  // namespace kpx
