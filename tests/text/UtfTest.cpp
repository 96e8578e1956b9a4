#include "kpx/text/Utf.h"

#include <gtest/gtest.h>

#include <string>

namespace kpx {
namespace {

TEST(Utf, EveryCodePointComesBack) {
  std::u16string text;
  for (char32_t code = 0; code <= 0x10FFFF; ++code) {
    if (code == 0xD800) code = 0xE000;
    appendCodePoint(text, code);
  }
  const std::string bytes = utf8FromUtf16(text);
  EXPECT_EQ(bytes.size(), 0x80 + 2 * 0x780 + 3 * (0xF800 - 0x800) + 4 * 0x100000u);
  std::u16string back;
  EXPECT_EQ(appendUtf8(back, bytes), std::string_view::npos);
  EXPECT_EQ(back, text);
  std::size_t position = 0;
  for (char32_t code = 0; position < text.size(); ++code) {
    if (code == 0xD800) code = 0xE000;
    ASSERT_EQ(nextCodePoint(text, position), code);
  }
}

// Characters of every length at every place of a block, and across the pieces in which long texts
// are taken.
TEST(Utf, CharactersAtEveryAlignment) {
  for (const char32_t code : {0x7Fu, 0xFCu, 0x20ACu, 0x1F600u}) {
    for (std::size_t before = 0; before < 4120; before += before == 40 ? 4040 : 1) {
      for (const std::size_t behind : {0, 1, 20}) {
        std::u16string text(before, u'a');
        appendCodePoint(text, code);
        appendCodePoint(text, code);
        text.append(behind, u'z');
        std::u16string back(u"before ");
        ASSERT_EQ(appendUtf8(back, utf8FromUtf16(text)), std::string_view::npos);
        ASSERT_EQ(back, u"before " + text) << before << ' ' << behind;
      }
    }
  }
}

TEST(Utf, InvalidBytesAreReplacedOneByOneAndTheFirstIsTold) {
  const struct {
    std::string_view bytes;
    std::u16string_view text;
    std::size_t first;
  } cases[] = {
      {"ab\x80"
       "c",
       u"ab\uFFFDc", 2},
      {"\xC0\x80", u"\uFFFD\uFFFD", 0},                      // overlong
      {"\xE0\x9F\xBF", u"\uFFFD\uFFFD\uFFFD", 0},            // overlong
      {"\xF0\x8F\xBF\xBF", u"\uFFFD\uFFFD\uFFFD\uFFFD", 0},  // overlong
      {"\xED\xA0\x80", u"\uFFFD\uFFFD\uFFFD", 0},            // a surrogate
      {"\xF4\x90\x80\x80", u"\uFFFD\uFFFD\uFFFD\uFFFD", 0},  // beyond Unicode
      {"\xF5\x80", u"\uFFFD\uFFFD", 0},
      {"\xFF\xFE", u"\uFFFD\uFFFD", 0},
      {"\xC3\xBC\xC3", u"ü\uFFFD", 2},  // cut off
      {"\xE2\x82", u"\uFFFD\uFFFD", 0},
      {"\xF0\x9F\x98", u"\uFFFD\uFFFD\uFFFD", 0},
      {"\xE2\x82"
       "a\xC3\xBC",
       u"\uFFFD\uFFFDaü", 0},
      {"0123456789abcdef\xC3(", u"0123456789abcdef\uFFFD(", 16},
  };
  for (const auto& [bytes, text, first] : cases) {
    std::u16string result;
    EXPECT_EQ(appendUtf8(result, bytes), first) << testing::PrintToString(bytes);
    EXPECT_EQ(result, text) << testing::PrintToString(bytes);
  }
}

TEST(Utf, LoneSurrogatesBecomeThreeBytes) {
  EXPECT_EQ(utf8FromUtf16(u"\xD83D"), "\xED\xA0\xBD");
  EXPECT_EQ(utf8FromUtf16(u"\xDE00\xD83D"
                          u"a"),
            "\xED\xB8\x80\xED\xA0\xBD"
            "a");
  std::u16string text;
  appendCodePoint(text, 0x110000);
  EXPECT_EQ(text, u"\uFFFD");
}

}  // namespace
}  // namespace kpx
