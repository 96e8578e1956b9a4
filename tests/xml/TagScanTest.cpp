#include "kpx/xml/internal/TagScan.h"

#include <gtest/gtest.h>

#include <iterator>
#include <random>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/MarkupValidator.h"
#include "tests/common/ScanAgreement.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using namespace literals;

testing::AssertionResult agree(const CString& text, int docFlags = 0) {
  const std::string scan = disagreeingScan(text, docFlags);
  if (scan.empty()) return testing::AssertionSuccess();
  return testing::AssertionFailure() << scan << " differs: " << testing::PrintToString(text);
}

CString blanks(int count) { return CString(u' ', count); }

TEST(TagScan, TagsAtEveryPlaceOfABlock) {
  const CString tags[] = {
      u"<a/>"_cs,
      u"<a></a>"_cs,
      u"<a b=\"c\" d=\"<e>\">x</a>"_cs,
      u"<a b=\"'\" c='\"'><d e=\">\"/></a>"_cs,
      u"<a b=\"c></a>\n\"></a>"_cs,
      u"<a b='>' c=\"'\" d='</a>'>x</a>"_cs,
      u"<a b='"_cs + blanks(59) + u"'><c d='"_cs + blanks(70) + u">'/></a>"_cs,
      u"<a b \"c>\"></a>"_cs,
      u"<a b=\"\"c=\"\"/ >x<b></c></a>"_cs,
      u"<nameOfMoreThanSixteenUnits></nameOfMoreThanSixteenUnits>"_cs,
      u"<nameOfMoreThanSixteenUnits></nameOfMoreThanSixteenUnitz>"_cs,
      u"<a b=\""_cs + blanks(70) + u"\">"_cs + u"</a"_cs + blanks(70) + u">"_cs,
      u"<a "_cs + blanks(70) + u"/><b c=\""_cs + blanks(59) + u"\" \">\"/>"_cs,
      u"<a b=\"c\"\x013C\x3C00\xFF3C\x003E</a>"_cs,  // units that only look like brackets
  };
  for (const CString& tag : tags) {
    for (int before = 0; before < 66; ++before) {
      EXPECT_TRUE(agree(u"<r>"_cs + blanks(before) + tag + tag + blanks(200) + u"</r>"_cs));
    }
  }
}

TEST(TagScan, EveryLengthOfWhatRemains) {
  const CString text =
      u"<r a=\"b\"><c d=\"e\">f</c><g h='"_cs + blanks(50) + u"' i='>'/><j>k</j></r>"_cs;
  // What is cut off stays in memory behind the end: a scan that reads on finds tags there.
  CString doubled = text + blanks(40) + text + text;
  for (; !doubled.IsEmpty(); doubled.Truncate(doubled.GetLength() - 1)) {
    EXPECT_TRUE(agree(doubled));
  }
}

TEST(TagScan, DeepElementsStayKnownByNameWhileOthersComeAndGo) {
  CString text;
  for (const char16_t* const name : {u"a", u"b", u"c"}) {
    for (int i = 0; i < 12; ++i) text += u"<"_cs + CString(name) + u">"_cs;
    text += u"</x>";  // from here on they are looked up by name
    for (int i = 0; i < 6; ++i) text += u"</"_cs + CString(name) + u">"_cs;
  }
  for (int i = 0; i < 10; ++i) text += u"<d><e/></d><b>";
  text += u"</c></a>";
  EXPECT_TRUE(agree(text + blanks(200)));
}

TEST(TagScan, MutatedDocuments) {
  const char16_t* const parts[] = {u"<a>",
                                   u"</a>",
                                   u"<a b=\"c>\">",
                                   u"<bb/>",
                                   u"<bb c=\"<\" d=\"\"/>",
                                   u"</bb>",
                                   u"<bb>",
                                   u"text",
                                   u"\n",
                                   u"<!--x>-->",
                                   u"<",
                                   u">",
                                   u"\"",
                                   u"'",
                                   u"=",
                                   u"/",
                                   u"<![CDATA[",
                                   u"]]>",
                                   u"<?p?>",
                                   u"ä",
                                   u"<A>",
                                   u"[",
                                   u"</A>",
                                   u"<c d = \"e\" f='g'>",
                                   u"</c>",
                                   u" ",
                                   u"<!D>"};
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    // Half of the rounds leave out what ends most documents early.
    const std::size_t kinds = round % 2 ? std::size(parts) : 9;
    CString text = u"<r>"_cs;
    for (auto count = random() % 60; count > 0; --count) text += parts[random() % kinds];
    text += blanks(static_cast<int>(random() % 130));
    ASSERT_TRUE(agree(text, round % 4 == 3 ? 8 : 0));
    if (round % 8 == 0) {
      ASSERT_EQ(MarkupValidator::check(CMarkup(text)), "") << testing::PrintToString(text);
    }
  }
}

TEST(TagScan, LimitsAreLeftToThePlainRoad) {
  const CString wide(u' ', ElemPos::maxStartTag - 3);
  EXPECT_TRUE(agree(u"<r><a"_cs + wide + u"><b/></a><a "_cs + wide + u"><b/></a></r>"_cs));
  CString deep;
  for (int i = 0; i < 65540; ++i) deep += u"<a>";
  deep += u"<b/>";
  for (int i = 0; i < 65540; ++i) deep += u"</a>";
  EXPECT_TRUE(agree(deep + blanks(100)));
}

}  // namespace
}  // namespace kpx
