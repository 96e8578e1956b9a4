#include "kpx/support/TextStore.h"

#include <gtest/gtest.h>

#include <limits>
#include <thread>
#include <vector>

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

TEST(TextStore, ReferencesOutliveTheAddingOfOthers) {
  AddMLT(100001, u"a text too long to be kept in place");
  const CString& text = GetMLT(100001);
  const char16_t* const units = text.GetString();
  for (std::int32_t id = 100002; id < 102000; ++id) AddMLT(id, u"another text");
  EXPECT_EQ(&GetMLT(100001), &text);
  EXPECT_EQ(GetMLT(100001).GetString(), units);
  AddMLT(100001, GetMLT(100001));
  EXPECT_EQ(GetMLT(100001), u"a text too long to be kept in place");
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

TEST(TextStore, ManyReadersAtOnce) {
  addBuiltInTexts();
  AddMLT(70000, u"Rand");
  std::vector<std::thread> readers;
  readers.reserve(4);
  for (int i = 0; i < 4; ++i) {
    readers.emplace_back([] {
      for (int round = 0; round < 2000; ++round) {
        EXPECT_EQ(GetMLT(1581), u"Kreis an 2 Tangenten");
        EXPECT_EQ(GetMLT(70000), u"Rand");
        EXPECT_EQ(GetMLT(70001), u"");
      }
    });
  }
  for (std::thread& reader : readers) reader.join();
}

}  // namespace
}  // namespace kpx
