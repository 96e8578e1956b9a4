#include "kpx/domain/ReferenceStatus.h"

#include <gtest/gtest.h>

#include <vector>

#include "kpx/support/texts/TextStore.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(ReferenceStatus, Lists) {
  addBuiltInTexts();
  using Values = std::vector<std::int32_t>;
  const struct {
    bool isHeight, withAutomatic;
    int limit;
    Values values;
  } cases[] = {
      {true, true, 0, {-1, 0, 1, 2, 3, 4, 5}}, {true, false, 0, {0, 1, 2, 3, 4, 5}},
      {false, true, 0, {-1, 0, 1, 2, 4, 5}},   {false, false, 3, {0, 1, 2}},
      {true, true, 3, {-1, 0, 1, 2, 3}},
  };
  for (const auto& each : cases) {
    std::vector<CString> texts{u"old"};
    Values values{9};
    const auto fill = each.isHeight ? &kpxInitHGS : &kpxInitLGS;
    fill(texts, values, each.withAutomatic, each.limit);
    EXPECT_EQ(values, each.values);
    ASSERT_EQ(texts.size(), values.size());
    for (std::size_t i = 0; i < values.size(); ++i) {
      const auto code = each.isHeight ? &kpxSetHGS : &kpxSetLGS;
      const auto value = each.isHeight ? &kpxGetHGS : &kpxGetLGS;
      const CString found = code(values[i], each.withAutomatic, each.limit);
      EXPECT_EQ(value(found, each.withAutomatic), values[i]);
      EXPECT_TRUE(texts[i].StartsWith(found + u' ')) << texts[i].utf8();
    }
  }
  std::vector<CString> texts;
  std::vector<std::int32_t> values;
  kpxInitHGS(texts, values, true, 0);
  EXPECT_EQ(texts[0], u"Auto Automatisch");
  EXPECT_EQ(texts[2], u"D Topgraphische Höhe");
  kpxInitLGS(texts, values, false, 0);
  EXPECT_EQ(texts.back(), u"S Sollwert");
}

TEST(ReferenceStatus, Unknown) {
  EXPECT_EQ(kpxGetHGS(u"x", true), 0);
  EXPECT_EQ(kpxGetHGS(u"n", true), 0);
  EXPECT_EQ(kpxGetLGS(u"N", true), 0) << "positions have no N";
  EXPECT_EQ(kpxGetLGS(u"Auto", false), 0);
  EXPECT_EQ(kpxSetLGS(3, true, 0), u"0");
  EXPECT_EQ(kpxSetHGS(-1, false, 0), u"0");
  EXPECT_EQ(kpxSetHGS(5, true, 4), u"0");
}

}  // namespace
}  // namespace kpx
