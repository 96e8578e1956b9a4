#include <gtest/gtest.h>

#include "kpx/domain/CAaaAreaCalcResultCache.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(AreaCalcResultCache, KeepsOneResultPerKey) {
  CAaaAreaCalcResultCache cache;
  cache.add(u"A", 1, 2, 3);
  cache.add(u"a", 4, 5, 6);
  cache.add(u"A", 7, 8, 9);
  ASSERT_EQ(cache.getCount(), 2);
  double sum = 0;
  for (int index = 0; index < cache.getCount(); ++index) {
    CString key;
    double first = 0, second = 0, third = 0;
    ASSERT_EQ(cache.getAt(index, &key, &first, &second, &third), 1);
    EXPECT_EQ(first, key == u"A" ? 7 : 4);
    EXPECT_EQ(third - first, 2);
    sum += second;
  }
  EXPECT_EQ(sum, 13);
}

TEST(AreaCalcResultCache, RefusalsLeaveTheOutputs) {
  CAaaAreaCalcResultCache cache;
  cache.add(u"", 1, 2, 3);
  CString key = u"kept";
  double value = -1;
  EXPECT_EQ(cache.getAt(0, &key, &value, &value, &value), 0);  // an empty key is never handed out
  cache.removeAll();
  cache.add(u"A", 1, 2, 3);
  for (const int index : {-1, 1}) EXPECT_EQ(cache.getAt(index, &key, &value, &value, &value), 0);
  EXPECT_EQ(cache.getAt(0, nullptr, &value, &value, &value), 0);
  EXPECT_EQ(cache.getAt(0, &key, nullptr, &value, &value), 0);
  EXPECT_EQ(cache.getAt(0, &key, &value, nullptr, &value), 0);
  EXPECT_EQ(cache.getAt(0, &key, &value, &value, nullptr), 0);
  EXPECT_EQ(key, u"kept");
  EXPECT_EQ(value, -1);
}

TEST(AreaCalcResultCache, AssignmentTakesTheOthersEntriesOnly) {
  CAaaAreaCalcResultCache one, other;
  one.add(u"A", 1, 2, 3);
  other.add(u"B", 4, 5, 6);
  one = other;
  other.removeAll();
  EXPECT_EQ(one.getCount(), 1);
  CString key;
  double value = 0;
  EXPECT_EQ(one.getAt(0, &key, &value, &value, &value), 1);
  EXPECT_EQ(key, u"B");
}

}  // namespace
}  // namespace kpx
