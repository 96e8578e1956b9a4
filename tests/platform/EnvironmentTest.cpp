#include "kpx/platform/Environment.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "kpx/platform/RandomBytes.h"
#include "kpx/platform/WindowPlacement.h"
#include "tests/common/TestEnvironment.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(EnvironmentTest, VariablesAndNames) {
  setVariable("KPX_TEST_Ä", u"größer");
  setVariable("KPX_TEST_EMPTY", u"");
  CString value = u"before";
  EXPECT_EQ(environmentVariable(u"KPX_TEST_Ä"), u"größer");
  EXPECT_FALSE(readEnvironmentVariable(u"KPX_TEST_MISSING", value));
  EXPECT_EQ(value, u"before");
  EXPECT_TRUE(readEnvironmentVariable(u"KPX_TEST_EMPTY", value));
  EXPECT_EQ(value, u"");
  EXPECT_FALSE(detail::computerName().IsEmpty());
  EXPECT_FALSE(detail::userName().IsEmpty());
  EXPECT_GT(detail::physicalMemoryBytes(), std::uint64_t{1} << 24);
  EXPECT_FALSE(systemMessage(2).IsEmpty());
  EXPECT_FALSE(systemMessage(2).EndsWith(u"\n"));
}

TEST(RandomBytesTest, FillsTheWholeBlock) {
  // Each byte is 0 in all 20 tries with a chance of 2 to the power of -160.
  constexpr std::size_t count = 600;
  unsigned char seen[count] = {};
  for (int tries = 0; tries < 20; ++tries) {
    unsigned char bytes[count] = {};
    ASSERT_TRUE(fillRandom(bytes, count));
    for (std::size_t i = 0; i < count; ++i) seen[i] |= bytes[i];
  }
  EXPECT_EQ(std::count(seen, seen + count, 0), 0);
}

TEST(WindowPlacementTest, RecordHasTheSystemsForm) {
  WindowPlacement placement;
  placement.flags = 2;
  placement.showCommand = 3;
  placement.minimised = {-1, -2};
  placement.maximised = {-3, -4};
  placement.topLeft = {-32000, 10};
  placement.bottomRight = {1920, 70000};
  const std::string record = placement.bytes();
  ASSERT_EQ(record.size(), 44u);
  EXPECT_EQ(record[0], 44);
  EXPECT_EQ(record.substr(8, 8), std::string("\3\0\0\0\xFF\xFF\xFF\xFF", 8));
  EXPECT_EQ(record.substr(40), std::string("\x70\x11\x01\0", 4));
  WindowPlacement read;
  EXPECT_TRUE(read.assign(record));
  EXPECT_EQ(read, placement);
  for (const std::string& bad : {record.substr(1), record + '\0', std::string(44, '\0')}) {
    EXPECT_FALSE(read.assign(bad));
    EXPECT_EQ(read, placement);
  }
}

}  // namespace
}  // namespace kpx
