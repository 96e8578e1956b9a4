#include "kpx/config/KeyedCollection.h"

#include <gtest/gtest.h>

#include <vector>

#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using Numbers = KeyedCollection<int>;

CString key(int number) {
  CString text;
  for (const char digit : std::to_string(number)) text += static_cast<char16_t>(digit);
  return text;
}

std::vector<CString> keysOf(const Numbers& numbers) {
  std::vector<CString> keys;
  for (const auto& entry : numbers) keys.push_back(entry.key);
  return keys;
}

TEST(KeyedCollection, KeepsReferencesAndOrderWhileItGrows) {
  Numbers numbers;
  std::vector<int*> places;
  for (int i = 0; i < 1000; ++i) {
    places.push_back(&numbers.at(key(i)));
    *places.back() = i;
  }
  ASSERT_EQ(numbers.size(), 1000u);
  int next = 0;
  for (const auto& entry : numbers) {
    EXPECT_EQ(entry.key, key(next));
    ++next;
  }
  for (int i = 0; i < 1000; ++i) {
    EXPECT_EQ(numbers.find(key(i)), places[static_cast<std::size_t>(i)]);
    EXPECT_EQ(*places[static_cast<std::size_t>(i)], i);
  }
}

TEST(KeyedCollection, TellsKeysApartByCaseAndLength) {
  Numbers numbers;
  numbers.set(u"Key", 1);
  numbers.set(u"KEY", 2);
  numbers.set(u"", 3);
  EXPECT_EQ(*numbers.find(u"Key"), 1);
  EXPECT_EQ(*numbers.find(u"KEY"), 2);
  EXPECT_EQ(*numbers.find(u""), 3);
  EXPECT_EQ(numbers.find(u"Ke"), nullptr);
  EXPECT_EQ(numbers.find(u"Keys"), nullptr);
}

TEST(KeyedCollection, FindsTheSameByLiteralAsByText) {
  Numbers numbers;
  const CString text = u"Groß\U0001F600";
  numbers.set(text, 7);
  EXPECT_EQ(numbers.find(KeyLiteral(u"Groß\U0001F600")), numbers.find(text));
  EXPECT_EQ(numbers.find(KeyLiteral(u"groß\U0001F600")), nullptr);
}

TEST(KeyedCollection, AssignmentWritesOverAndCopyConstructionDoesNot) {
  Numbers target;
  target.set(u"kept", 1);
  target.set(u"both", 2);
  Numbers source;
  source.set(u"new", 3);
  source.set(u"both", 4);

  target = source;
  EXPECT_EQ(keysOf(target), (std::vector<CString>{u"kept", u"both", u"new"}));
  EXPECT_EQ(*target.find(u"both"), 4);

  Numbers copy(source);
  *copy.find(u"both") = 5;
  EXPECT_EQ(keysOf(copy), keysOf(source));
  EXPECT_EQ(*source.find(u"both"), 4);

  const Numbers& itself = target;
  target = itself;
  EXPECT_EQ(target.size(), 3u);
}

TEST(KeyedCollection, ReplacesAnEntryWhole) {
  KeyedCollection<Numbers> rows;
  rows.at(u"row").set(u"old", 1);
  Numbers fresh;
  fresh.set(u"new", 2);
  rows.set(u"row", fresh);
  EXPECT_EQ(keysOf(*rows.find(u"row")), (std::vector<CString>{u"new"}));
}

TEST(KeyedCollection, IsUsableAfterClearAndAfterBeingMovedFrom) {
  Numbers numbers;
  for (int i = 0; i < 100; ++i) numbers.set(key(i), i);
  const Numbers moved = std::move(numbers);
  EXPECT_EQ(moved.size(), 100u);
  EXPECT_TRUE(numbers.empty());  // NOLINT(bugprone-use-after-move): promised
  EXPECT_EQ(numbers.find(key(5)), nullptr);
  numbers.set(u"again", 1);
  numbers.clear();
  EXPECT_EQ(numbers.find(u"again"), nullptr);
  numbers.set(u"again", 2);
  EXPECT_EQ(*numbers.find(u"again"), 2);
}

}  // namespace
}  // namespace kpx
