#include "kpx/xml/internal/ElementIndex.h"

#include <gtest/gtest.h>

#include <vector>

namespace kpx::detail {
namespace {

constexpr int segment = ElementIndex::segmentRecords;

TEST(ElementIndex, GrowsByTheExactNumberButNeverByMoreThanOneSegment) {
  struct Case {
    std::vector<int> requests;
    int capacity;
  };
  const Case cases[] = {
      {{8}, 8},
      {{8, 5}, 8},
      {{8, 100}, 100},
      {{segment}, segment},
      {{10 * segment}, segment},
      {{8, 10 * segment}, 2 * segment},
      {{8, segment + 1}, segment + 1},
      {{segment, segment + 5, segment + 7}, segment + 7},
      {{segment, segment + 5, 10 * segment}, 3 * segment},
  };
  for (const Case& each : cases) {
    ElementIndex index;
    for (const int request : each.requests) index.x_AllocElemPos(request);
    EXPECT_EQ(index.capacity(), each.capacity) << each.requests.back();
  }
}

TEST(ElementIndex, RecordsKeepTheirContentAndNumbersAcrossSegments) {
  ElementIndex index;
  index.reset();
  for (int expected = 1; expected <= 3 * segment; ++expected) {
    ASSERT_EQ(index.x_GetFreePos(), expected);
    index[expected] = ElemPos{.start = expected};
    // Beyond the table, what has room and no record is less than two segments.
    ASSERT_LE(index.memoryBytes(), 32u * static_cast<unsigned>(expected + 2 * segment) + 1000u);
  }
  const ElementIndex copy(index);
  for (int i = 1; i <= 3 * segment; i += 997) {
    ASSERT_EQ(index[i].start, i);
    ASSERT_EQ(copy[i].start, i);
    ASSERT_NE(&copy[i], &index[i]);
  }
  index.releaseSpareSegments();
  EXPECT_EQ(index[3 * segment].start, 3 * segment);
  EXPECT_LE(index.memoryBytes(), 32u * static_cast<unsigned>(4 * segment) + 1000u);
}

TEST(ElementIndex, ReleasedRecordsComeBackLastFirst) {
  ElementIndex index;
  index.reset();
  for (int i = 0; i < 4; ++i) index.x_GetFreePos();
  index.x_ReleasePos(2);
  index.x_ReleasePos(4);
  EXPECT_EQ(index.freeCount(), 2);
  const ElementIndex copy(index);
  EXPECT_EQ(copy.freeHead(), 4);
  EXPECT_EQ(index.x_GetFreePos(), 4);
  EXPECT_EQ(index.x_GetFreePos(), 2);
  EXPECT_EQ(index.x_GetFreePos(), 5);
  EXPECT_EQ(index.freeCount(), 0);
}

TEST(ElementIndex, WithoutCapacityRecordZeroReadsAsEmpty) {
  ElementIndex index;
  EXPECT_EQ(index.capacity(), 0);
  EXPECT_EQ(index[0].firstChild, 0);
  ElementIndex moved(std::move(index));
  EXPECT_EQ(moved.x_GetFreePos(), 1);
  EXPECT_EQ(moved[0].firstChild, 0);
  ElementIndex full;
  full.x_AllocElemPos(segment);
  full.reset();
  moved = std::move(full);
  EXPECT_EQ(moved.usedCount(), 1);
}

TEST(ElementIndex, ResetKeepsSegmentsForTheNextParse) {
  ElementIndex index;
  index.reset();
  for (int i = 0; i < 2 * segment; ++i) index.x_GetFreePos();
  const ElemPos* const kept = &index[segment];
  index.reset();
  EXPECT_EQ(index.usedCount(), 1);
  EXPECT_GE(index.capacity(), 2 * segment);
  EXPECT_EQ(&index[segment], kept);
  index.releaseSpareSegments();
  EXPECT_EQ(index.capacity(), segment);
}

}  // namespace
}  // namespace kpx::detail
