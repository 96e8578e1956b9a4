// The store with a built-in table of the suite's own size, as a build with -DKPX_TEXTS=file has it:
// full_table.py writes the table.
#include <gtest/gtest.h>

#include "kpx/support/texts/internal/BuiltInTexts.h"
#include "kpx/support/texts/TextStore.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(FullTexts, EveryIdHasTheLastOfItsTexts) {
  ASSERT_EQ(detail::builtInTextCount, 8337U);
  ASSERT_EQ(detail::builtInIdCount, 8215U);
  addBuiltInTexts();
  int found = 0;
  for (std::int32_t id = -1; id < 20000; ++id) {
    const CString text = GetMLT(id);
    EXPECT_EQ(CString(builtInText(id)), text);
    if (text.IsEmpty()) continue;
    ++found;
    CString expected;
    if (id % 13 == 0) {
      expected.Format(u"Überprüfung der Maße %d:\n%%s in %%.3f m", id);
    } else {
      expected.Format(u"Text %d für Höhe", id);
    }
    EXPECT_EQ(text, expected);
  }
  EXPECT_EQ(found, 8215);
  EXPECT_TRUE(GetMLT(4300).IsEmpty());
}

}  // namespace
}  // namespace kpx
