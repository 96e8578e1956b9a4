#include "kpx/support/texts/TextStore.h"

#include <gtest/gtest.h>

#include <limits>

#include "kpx/report/Error.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(TextStore, IdsWithoutATextGiveTheEmptyText) {
  for (const std::int32_t id : {0, -1, 4300, 16383, 16384, std::numeric_limits<std::int32_t>::min(),
                                std::numeric_limits<std::int32_t>::max()}) {
    EXPECT_EQ(GetMLT(id), u"") << id;
  }
}

TEST(TextStore, KeepsTheLastTextOfEachIdApart) {
  // Both sides of every border inside the store.
  const std::int32_t ids[] = {-2147483647 - 1, -1,    0,     255,   256,
                              12345,           16383, 16384, 16385, 2147483647};
  for (const std::int32_t id : ids) AddMLT(id, u"before");
  for (const std::int32_t id : ids) {
    CString text;
    text.Format(u"text of %d", id);
    AddMLT(id, text);
  }
  for (const std::int32_t id : ids) {
    CString text;
    text.Format(u"text of %d", id);
    EXPECT_EQ(GetMLT(id), text);
  }
}

TEST(TextStore, ATextStaysWithItsCallerWhenAnotherIsLaidOverIt) {
  for (const std::int32_t id : {1, 100001}) {
    AddMLT(id, u"a text too long to be kept in place");
    const CString& text = GetMLT(id);  // as callers have always held it
    const std::u16string_view view = storedText(id);
    for (std::int32_t other = 100002; other < 102000; ++other) AddMLT(other, u"another text");
    EXPECT_EQ(storedText(id).data(), view.data()) << "the view outlives the adding of others";
    AddMLT(id, u"ein Text, der ebenso lang ist wie jener");
    EXPECT_EQ(text, u"a text too long to be kept in place");
  }
}

TEST(TextStore, LackOfMemoryGivesTheEmptyTextAndKeepsTheStore) {
  AddMLT(1, u"a text too long to be kept in place");
  const CString other = u"another text that needs memory";
  const ErrorCounts before = errorCounts();
  {
    const FailingAllocations all(0);
    EXPECT_TRUE(GetMLT(1).IsEmpty());
    EXPECT_EQ(errorCounts().reported, before.reported);
    AddMLT(1, other);
    AddMLT(100003, other);
  }
  EXPECT_EQ(errorCounts().reported, before.reported + 2);
  EXPECT_EQ(GetMLT(1), u"a text too long to be kept in place");
}

TEST(TextStore, BuiltInTextsReplaceOthersAndAreKeptApartFromThem) {
  AddMLT(639, u"other");
  EXPECT_EQ(CString(builtInText(639)), u"Helmerttransf. ohne Maßstab");
  addBuiltInTexts();
  EXPECT_EQ(GetMLT(639), u"Helmerttransf. ohne Maßstab");
  EXPECT_EQ(GetMLT(12), u"Tabelle wird bearbeitet!\nWarte auf Zugriff.");
  EXPECT_TRUE(GetMLT(542).EndsWith(u"User: %s\n"));
  EXPECT_TRUE(builtInText(4300).empty());
}

}  // namespace
}  // namespace kpx
