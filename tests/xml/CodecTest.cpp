#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <vector>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/Escape.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

constexpr int attribute = MarkupFlag::attributeValue;
constexpr int references = MarkupFlag::withReferences;

TEST(Codec, OneCharacterRoundTripsThroughBothEncodings) {
  for (const int code :
       {0x1, 0x7F, 0x80, 0x7FF, 0x800, 0xD7FF, 0xE000, 0xFFFF, 0x10000, 0x10FFFF}) {
    char bytes[4];
    int count = 0;
    int needed = 0;
    CMarkup::EncodeCharUTF8(code, bytes, count);
    CMarkup::EncodeCharUTF8(code, nullptr, needed);
    EXPECT_EQ(count, needed);
    const char* byte = bytes;
    EXPECT_EQ(CMarkup::DecodeCharUTF8(byte, bytes + count), code);
    EXPECT_EQ(byte, bytes + count);

    char16_t units[2];
    count = needed = 0;
    CMarkup::EncodeCharUTF16(code, units, count);
    CMarkup::EncodeCharUTF16(code, nullptr, needed);
    EXPECT_EQ(count, needed);
    const char16_t* unit = units;
    EXPECT_EQ(CMarkup::DecodeCharUTF16(unit, units + count), code);
    EXPECT_EQ(unit, units + count);
  }
}

TEST(Codec, DecodingUtf8IsAsLenientAsStoredFilesNeed) {
  struct Case {
    std::string_view bytes;
    int code;
    std::size_t consumed;
  };
  const Case cases[] = {
      {"\x80\x80", 0, 2},           // a stray continuation counts as a lead of two bytes
      {"\xC0\x80", 0, 2},           // overlong
      {"\xED\xA0\x80", 0xD800, 3},  // surrogate
      {"\xC3\xC3", 0xC3, 2},        // only the top bit of a continuation is looked at
      {"\303A", -1, 1},
      {"\xE2\x82", -1, 2},
      {"\xE2\x82 ", -1, 2},
      {"\xF8\x80\x80\x80", -1, 1},
      {"\xFF", -1, 1},
  };
  for (const Case& each : cases) {
    const char* position = each.bytes.data();
    EXPECT_EQ(CMarkup::DecodeCharUTF8(position, position + each.bytes.size()), each.code);
    EXPECT_EQ(static_cast<std::size_t>(position - each.bytes.data()), each.consumed);
  }
}

TEST(Codec, EitherSurrogateHalfTakesWhateverFollows) {
  const char16_t text[] = {0xDC00, u'A', 0xD83D, 0};
  const char16_t* position = text;
  EXPECT_EQ(CMarkup::DecodeCharUTF16(position, nullptr), 0x10000 + u'A');
  EXPECT_EQ(CMarkup::DecodeCharUTF16(position, nullptr), -1);
  EXPECT_EQ(*position, 0);
  position = text;
  EXPECT_EQ(CMarkup::DecodeCharUTF16(position, text + 1), -1);
}

TEST(Codec, Utf8To16CountsUnitsWithoutOutputAndBytesWithIt) {
  struct Case {
    std::string_view bytes;
    int units;
    int bytesTaken;
    std::u16string_view text;
  };
  const Case cases[] = {
      {"\xE2\x82\xAC", 1, 3, u"€"},
      {"\xF0\x9F\x98\x80!", 3, 5, u"\xD83D\xDE00!"},
      {"a\xFF\xC3", 3, 3, u"a??"},
      {{"ab\0c", 4}, 2, 3, u"ab"},
      {"", 0, 0, u""},
  };
  for (const Case& each : cases) {
    const int size = static_cast<int>(each.bytes.size());
    EXPECT_EQ(CMarkup::UTF8To16(nullptr, each.bytes.data(), size), each.units);
    std::vector<char16_t> out(each.text.size());
    EXPECT_EQ(CMarkup::UTF8To16(out.data(), each.bytes.data(), size), each.bytesTaken);
    EXPECT_TRUE(std::equal(out.begin(), out.end(), each.text.begin()));
  }
}

TEST(Codec, Utf16To8StopsBeforeACharacterThatDoesNotFit) {
  const char16_t* const text = u"a€b\xD83D";
  EXPECT_EQ(CMarkup::UTF16To8(nullptr, text, 0), 6);
  const int written[] = {0, 1, 1, 1, 4, 5, 6, 6};
  for (int room = 0; room < 8; ++room) {
    std::string out(8, '#');
    EXPECT_EQ(CMarkup::UTF16To8(out.data(), text, room), written[room]) << room;
    EXPECT_EQ(out.find_first_of('#'), static_cast<std::size_t>(written[room])) << room;
  }
  char out[8];
  CMarkup::UTF16To8(out, text, sizeof out);
  EXPECT_EQ(std::string_view(out, 6), "a\342\202\254b?");
}

TEST(Codec, DetectUtf8TellsABrokenTextFromOneCutShort) {
  struct Case {
    std::string_view bytes;
    int nonAscii;
    bool isUtf8;
    bool cutShort;
  };
  const Case cases[] = {
      {"", 0, true, false},
      {"abc", 0, true, false},
      {"\xC3\xA4 \xE2\x82\xAC", 2, true, false},
      {"ab\xC3", 1, false, true},
      {"\xE2\x82", 1, false, true},
      {"\303A", 1, false, false},
      {"\xFF", 1, false, false},
      {{"a\0\xFF", 3}, 0, true, false},  // the text ends at the zero
  };
  for (const Case& each : cases) {
    int nonAscii = -1;
    bool cutShort = !each.cutShort;
    EXPECT_EQ(CMarkup::DetectUTF8(each.bytes.data(), static_cast<int>(each.bytes.size()), &nonAscii,
                                  &cutShort),
              each.isUtf8);
    EXPECT_EQ(nonAscii, each.nonAscii);
    EXPECT_EQ(cutShort, each.cutShort);
  }
}

TEST(Codec, EscapesWhatTheFlagsSay) {
  struct Case {
    std::u16string_view text;
    int flags;
    std::u16string_view escaped;
  };
  const Case cases[] = {
      {u"a<b>&\"'", 0, u"a&lt;b&gt;&amp;\"'"},
      {u"a<b>&\"'", attribute, u"a&lt;b&gt;&amp;&quot;&apos;"},
      {u"a\r\n\tb", attribute, u"a\r\n\tb"},
      {u"&amp;", 0, u"&amp;amp;"},
      {u"&amp;&#10;&a-b.c:1;&ä;&:;", references, u"&amp;&#10;&a-b.c:1;&ä;&:;"},
      {u"&;&1;&-a;&a b;&a", references, u"&amp;;&amp;1;&amp;-a;&amp;a b;&amp;a"},
      {u"&&lt;<", references, u"&amp;&lt;&lt;"},
      {u"&a\"b;\"", references | attribute, u"&amp;a&quot;b;&quot;"},
      {u"ሦ㰼�", attribute, u"ሦ㰼�"},  // units whose bytes look like specials
      {u"", attribute, u""},
  };
  for (const Case& each : cases) {
    // At every place relative to the blocks in which specials are searched for.
    for (int before = 0; before < 18; ++before) {
      const CString front(u'.', before);
      EXPECT_EQ(CMarkup::EscapeText(front + each.text, each.flags), front + each.escaped);
      EXPECT_EQ(detail::needsEscape(front + each.text, each.flags), each.text != each.escaped);
    }
  }
}

TEST(Codec, UnescapeResolvesReferencesAndLeavesTheRest) {
  struct Case {
    std::u16string_view text;
    std::u16string_view plain;
  };
  const Case cases[] = {
      {u"&lt;&gt;&amp;&quot;&apos;", u"<>&\"'"},
      {u"&#65;&#x41;&#x1F600;&#0065;&#10;",
       u"AA\xD83D\xDE00"
       u"A\n"},
      {u"&amp;lt;", u"&lt;"},
      {u"&unknown;&LT;&lt &;&#;&#x;&#12a;&#xG;", u"&unknown;&LT;&lt &;&#;&#x;&#12a;&#xG;"},
      {u"&#0;&#1;&#xD800;&#xFFFF;&#x110000;&#99999999999999999999;",
       u"&#0;&#1;&#xD800;&#xFFFF;&#x110000;&#99999999999999999999;"},
      {u"&", u"&"},
      {u"&#6", u"&#6"},
      {u"x&&lt;", u"x&<"},
  };
  for (const Case& each : cases) {
    for (int before = 0; before < 18; ++before) {
      const CString front(u'.', before);
      EXPECT_EQ(CMarkup::UnescapeText(front + each.text), front + each.plain);
    }
  }
}

TEST(Codec, CDataSectionIsDividedAtItsOwnEnd) {
  std::u16string section;
  detail::appendCDataSection(section, u"a]]>b]]]>]]");
  EXPECT_EQ(section, u"<![CDATA[a]]]]><![CDATA[>b]]]]]><![CDATA[>]]]]>");
}

std::vector<unsigned char> someBytes(int count) {
  std::vector<unsigned char> bytes(static_cast<std::size_t>(count));
  unsigned value = 17;
  for (unsigned char& byte : bytes) byte = static_cast<unsigned char>(value = value * 73 + 41);
  return bytes;
}

TEST(Base64, HasTheLayoutOfStoredDocuments) {
  struct Case {
    std::string_view bytes;
    std::u16string_view text;
  };
  const Case cases[] = {
      {"", u"\r\n"},        {"f", u"\r\nZg==\r\n"},        {"fo", u"\r\nZm8=\r\n"},
      {"foo", u"\r\nZm9v"}, {"foob", u"\r\nZm9vYg==\r\n"}, {"\xFB\xFF\xBF", u"\r\n+/+/"},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(CMarkup::EncodeBase64(reinterpret_cast<const unsigned char*>(each.bytes.data()),
                                    static_cast<int>(each.bytes.size())),
              each.text);
  }
  // 48 bytes fill a line. Its break comes once, also after a padded group that fills it.
  const std::vector<unsigned char> bytes = someBytes(96);
  const struct {
    int bytes;
    int units;
  } sizes[] = {{45, 62}, {46, 68}, {47, 68}, {48, 68}, {49, 74}, {51, 72}, {95, 134}, {96, 134}};
  for (const auto& each : sizes) {
    const CString text = CMarkup::EncodeBase64(bytes.data(), each.bytes);
    EXPECT_EQ(text.GetLength(), each.units) << each.bytes;
    EXPECT_EQ(text.Mid(66, 2), each.units > 66 ? u"\r\n" : u"");
    EXPECT_FALSE(text.EndsWith(u"\r\n\r\n"));
  }
}

TEST(Base64, ReadsBackEverySizeAndRefusesTooLittleRoom) {
  for (int size = 0; size < 200; ++size) {
    const std::vector<unsigned char> bytes = someBytes(size);
    const CString text = CMarkup::EncodeBase64(bytes.data(), size);
    std::vector<unsigned char> out(
        static_cast<std::size_t>(CMarkup::DecodeBase64(text, nullptr, 0)));
    EXPECT_EQ(CMarkup::DecodeBase64(text, out.data(), static_cast<int>(out.size())), size);
    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), out.begin()));
    if (size < 2) continue;  // no room at all asks for the size
    EXPECT_EQ(CMarkup::DecodeBase64(text, out.data(), size), size);
    EXPECT_EQ(CMarkup::DecodeBase64(text, out.data(), size - 1), 0);
  }
}

TEST(Base64, DecodingForgivesWhatStandsBetween) {
  struct Case {
    std::u16string_view text;
    std::string_view bytes;
  };
  const Case cases[] = {
      {u"Z\r\nm9\rv\nZg==", "foof"},
      {u"Zm9vZg", "foo"},     // an unfinished group is dropped
      {u"Zg==Zm9v", "ffoo"},  // padding in the middle ends its group only
      {u"====", ""},
      {u"", ""},
  };
  for (const Case& each : cases) {
    unsigned char out[16];
    const int count = CMarkup::DecodeBase64(each.text, out, sizeof out);
    EXPECT_EQ(std::string_view(reinterpret_cast<char*>(out), static_cast<std::size_t>(count)),
              each.bytes);
  }
  unsigned char odd[3];
  unsigned char zero[3];
  for (const char16_t unit : {u'?', u' ', u'é', u'ţ'}) {
    EXPECT_EQ(CMarkup::DecodeBase64(CString(u"Zm") + unit + u"v", odd, 3), 3);
    EXPECT_EQ(CMarkup::DecodeBase64(u"ZmAv", zero, 3), 3);
    EXPECT_TRUE(std::equal(odd, odd + 3, zero));
  }
}

}  // namespace
}  // namespace kpx
