#include "kpx/xml/Encoding.h"

#include <gtest/gtest.h>

#include <random>

#include "kpx/xml/CMarkup.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using namespace std::literals;

TEST(Encoding, NamesAreFoundWithoutRegardToCaseAndWhole) {
  EXPECT_EQ(CMarkup::GetEncodingCodePage(u"UTF-8"), CodePage::utf8);
  EXPECT_EQ(CMarkup::GetEncodingCodePage(u"utf-16be"), CodePage::utf16BigEndian);
  EXPECT_EQ(CMarkup::GetEncodingCodePage(u"Iso-8859-15"), 28605);
  for (const char16_t* const name : {u"", u"UTF", u"UTF-80", u"65001", u" UTF-8"}) {
    EXPECT_EQ(CMarkup::GetEncodingCodePage(name), 0);
  }
  for (const int codePage : {65001, 1200, 1201, 28591, 1252, 850}) {
    EXPECT_EQ(encodingCodePage(encodingName(codePage)), codePage);
  }
  EXPECT_EQ(encodingName(4711), u"");
}

TEST(Encoding, DeclaredEncodingStandsInTheXmlDeclarationOnly) {
  struct Case {
    std::u16string_view document;
    std::u16string_view name;
  };
  const Case cases[] = {
      {u"<?xml version=\"1.0\" encoding=\"UTF-8\"?><a/>", u"UTF-8"},
      {u"<?xml version='1.0'\n encoding = 'ISO-8859-1' standalone='no'?>", u"ISO-8859-1"},
      {u"\xFEFF\r\n<?xml encoding='x'?>", u"x"},
      {u"<?xml version='1.0' encoding='windows-1252", u""},
      {u"<?xml version=\" encoding='no' \"?><a encoding='no'/>", u""},
      {u"<?xml version='1.0'?><a encoding='no'/>", u""},
      {u"<?xml-stylesheet encoding='no'?>", u""},
      {u"<a encoding='no'/>", u""},
      {u"<!-- <?xml encoding='no'?> --><a/>", u""},
      {u"", u""},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(CMarkup::GetDeclaredEncoding(each.document), each.name);
  }
}

TEST(Encoding, BytesAreReadByMarkThenDeclarationThenByWhatTheyAllow) {
  struct Case {
    std::string_view bytes;
    int codePage;
    bool mark;
    std::u16string_view text;
  };
  const Case cases[] = {
      {"<a>\xC3\xA4</a>", 65001, false, u"<a>ä</a>"},
      {"\xEF\xBB\xBF<a>\xC3\xA4</a>", 65001, true, u"<a>ä</a>"},
      {"<a>\xE4\x80\x81</a>", 65001, false, u"<a>\x4001</a>"},
      {"<a>\xE4\x80</a>", 1252, false, u"<a>ä€</a>"},
      {"\xFF\xFE<\0a\0/\0>\0"sv, 1200, true, u"<a/>"},
      {"\xFE\xFF\0<\0a\0/\0>"sv, 1201, true, u"<a/>"},
      {"<\0a\0/\0>\0"sv, 1200, false, u"<a/>"},
      {"\0<\0a\0/\0>"sv, 1201, false, u"<a/>"},
      {"\xFF\xFE\0\0<\0\0\0/\0\0\0"sv, 12000, true, u"</"},
      {"<?xml encoding='ISO-8859-1'?>\x80\xE4", 28591, false,
       u"<?xml encoding='ISO-8859-1'?>\x80ä"},
      {"<?xml encoding='windows-1252'?>\x80\x81", 1252, false,
       u"<?xml encoding='windows-1252'?>€\x81"},
      {"<?xml encoding='KOI8-R'?>\xC1", 20866, false, u"<?xml encoding='KOI8-R'?>а"},
      // The mark is believed, not the declaration.
      {"\xEF\xBB\xBF<?xml encoding='ISO-8859-1'?>\xC3\xA4", 65001, true,
       u"<?xml encoding='ISO-8859-1'?>ä"},
      // What was declared cannot be right: such bytes could not have been read so far.
      {"<?xml encoding='UTF-16'?>\xC3\xA4", 65001, false, u"<?xml encoding='UTF-16'?>ä"},
      {"<?xml encoding='x-own'?>\xE4", 1252, false, u"<?xml encoding='x-own'?>ä"},
      {"<?xml encoding='x-own'?>", 20127, false, u"<?xml encoding='x-own'?>"},
      {"", 65001, false, u""},
      {"\xEF\xBB\xBF", 65001, true, u""},
      {"\xFF\xFE", 1200, true, u""},
  };
  for (const Case& each : cases) {
    const DecodedText decoded = decodeMarkupBytes(each.bytes);
    EXPECT_EQ(decoded.text, each.text);
    EXPECT_EQ(decoded.codePage, each.codePage) << each.bytes;
    EXPECT_EQ(decoded.mark, each.mark) << each.bytes;
    EXPECT_EQ(decoded.invalid, 0u) << each.bytes;
    // And back.
    EXPECT_EQ(encodeMarkupText(decoded.text, {decoded.codePage, decoded.mark}).bytes, each.bytes);
  }
}

TEST(Encoding, TellsWhatIsWrongWithTheBytes) {
  struct Case {
    std::string_view bytes;
    std::u16string_view text;
    std::size_t firstInvalid;
    std::size_t invalid;
    bool cutShort;
    std::size_t nulls;
  };
  constexpr std::size_t none = DecodedText::none;
  const Case cases[] = {
      // A U+FFFD that stands in the file itself is not counted.
      {"\xEF\xBB\xBF\xEF\xBF\275a\377b\xC3", u"\uFFFDa\uFFFDb\uFFFD", 7, 2, true, 0},
      {"\xEF\xBB\277a\xE2\x82", u"a\uFFFD\uFFFD", 4, 2, true, 0},
      {"\xEF\xBB\xBF\xC0\x80", u"\uFFFD\uFFFD", 3, 2, false, 0},
      {"\xFF\xFE<\0a"sv, u"<", 4, 1, true, 0},
      {"<a>\0</a>\0"sv, u"<a></a>", none, 0, false, 2},
      {"\xFE\xFF\0<\0\0\0a"sv, u"<a", none, 0, false, 1},
  };
  for (const Case& each : cases) {
    const DecodedText decoded = decodeMarkupBytes(each.bytes);
    EXPECT_EQ(decoded.text, each.text);
    EXPECT_EQ(decoded.firstInvalid, each.firstInvalid) << each.bytes;
    EXPECT_EQ(decoded.invalid, each.invalid) << each.bytes;
    EXPECT_EQ(decoded.cutShort, each.cutShort) << each.bytes;
    EXPECT_EQ(decoded.nulls, each.nulls) << each.bytes;
  }
  EXPECT_TRUE(decodeMarkupBytes("<?xml encoding='x-own'?>\xC3\xA4").declarationWrong);
  EXPECT_TRUE(decodeMarkupBytes("<?xml encoding='UTF-16'?>").declarationWrong);
  EXPECT_FALSE(decodeMarkupBytes("<?xml encoding='US-ASCII'?>").declarationWrong);
  EXPECT_TRUE(decodeMarkupBytes("\xC3\xA4").guessed);
  EXPECT_FALSE(decodeMarkupBytes("a").guessed);
}

TEST(Encoding, BinaryIsRefusedAndKeepsTheOfferedText) {
  const std::string binary = "\177ELF\2\1\1" + std::string(200, '\0') + "code";
  CString offered = u"the old document";
  const DecodedText decoded = decodeMarkupBytes(binary, std::move(offered));
  EXPECT_EQ(decoded.refusal, DecodingRefusal::binary);
  EXPECT_TRUE(decoded.text.IsEmpty());
  // NOLINTNEXTLINE(bugprone-use-after-move): what is refused takes nothing
  EXPECT_EQ(offered, u"the old document");
  EXPECT_EQ(decodeMarkupBytes("\xFF\xFE" + binary).refusal, DecodingRefusal::binary);
  // A few zeros in a long text are not enough.
  EXPECT_EQ(decodeMarkupBytes(std::string(100000, 'x') + std::string(20, '\0')).refusal,
            DecodingRefusal::none);
}

TEST(Encoding, TextTakesTheMemoryOfTheOfferedOne) {
  CString offered(std::u16string(5000, u'x'));
  const char16_t* const memory = offered.GetString();
  const DecodedText decoded = decodeMarkupBytes(std::string(4000, 'y'), std::move(offered));
  EXPECT_EQ(decoded.text.GetString(), memory);
}

TEST(Encoding, EveryByteOfOurSingleByteEncodingsComesBack) {
  std::string all;
  for (int byte = 1; byte < 256; ++byte) all.push_back(static_cast<char>(byte));
  for (const std::string_view name : {"ISO-8859-1", "windows-1252"}) {
    std::string bytes = "<?xml encoding='";
    bytes.append(name).append("'?>").append(all).append(all).append(all);
    const DecodedText decoded = decodeMarkupBytes(bytes);
    EXPECT_EQ(decoded.text.GetLength(), static_cast<int>(bytes.size()));
    const EncodedText encoded = encodeMarkupText(decoded.text, {decoded.codePage});
    EXPECT_EQ(encoded.bytes, bytes);
    EXPECT_EQ(encoded.references + encoded.losses, 0u);
  }
}

TEST(Encoding, WhatAnEncodingDoesNotHaveIsWrittenAsMarkupAllows) {
  struct Case {
    std::u16string_view text;
    int codePage;
    std::string_view bytes;
    std::size_t references;
    std::size_t losses;
  };
  const Case cases[] = {
      {u"<a b='€'>€\xD83D\xDE00</a>", 28591, "<a b='&#8364;'>&#8364;&#128512;</a>", 3, 0},
      {u"<a b='\"€\"' €='€'/>", 28591, "<a b='\"&#8364;\"' _='&#8364;'/>", 2, 1},
      {u"<€>x</€>", 28591, "<_>x</_>", 0, 2},
      {u"<![CDATA[1 € <]]>", 28591, "<![CDATA[1 ]]>&#8364;<![CDATA[ <]]>", 1, 0},
      {u"<!--€--><?p €?><!DOCTYPE €>", 28591, "<!--&#8364;--><?p &#8364;?><!DOCTYPE &#8364;>", 0,
       3},
      {u"<a>ä€\x81\x80</a>", 1252, "<a>\xE4\x80\x81&#128;</a>", 1, 0},
      {u"<a>ä</a>", 20127, "<a>&#228;</a>", 1, 0},
      {u"<a>\xD83D</a>", 28591, "<a>?</a>", 0, 1},
      // The pair in the middle of them is whole.
      {u"<a>\xD83D\xD83D\xDE00\xDE00</a>", 65001, "<a>\xEF\xBF\xBD\xF0\x9F\x98\x80\xEF\xBF\xBD</a>",
       0, 2},
      {u"<a>ж€</a>", 20866, "<a>\xD6&#8364;</a>", 1, 0},
      {u"<a \x30AB€='€'>\x30AB€</a>", 50220,
       "<a \x1B$B%+\x1B(B_='&#8364;'>\x1B$B%+\x1B(B&#8364;</a>", 2, 1},
      {u"unfinished <a €", 28591, "unfinished <a &#8364;", 1, 0},
      // What no reference can name.
      {{u"<a>\0</a>", 8}, 65001, "<a>\xEF\xBF\xBD</a>", 0, 1},
      {{u"<a>\0</a>", 8}, 1201, "\0<\0a\0>\xFF\xFD\0<\0/\0a\0>"sv, 0, 1},
      {u"<a>\xFFFF</a>", 28591, "<a>?</a>", 0, 1},
      // What would be written, but read back as another character.
      {u"<a b='¥'>~</a>", 932, "<a b='&#165;'>~</a>", 1, 0},
      {u"<a>\x1B</a>", 50220, "<a>?</a>", 0, 1},
  };
  for (const Case& each : cases) {
    const EncodedText encoded = encodeMarkupText(each.text, {each.codePage});
    EXPECT_EQ(encoded.bytes, each.bytes);
    EXPECT_EQ(encoded.references, each.references) << each.bytes;
    EXPECT_EQ(encoded.losses, each.losses) << each.bytes;
    EXPECT_EQ(encoded.firstLoss == MarkupEncoder::none, each.losses == 0) << each.bytes;
  }
  EXPECT_FALSE(encodeMarkupText(u"<a/>", {4711}).usable);
}

// Pairs and what must be replaced lie at every place relative to pieces and blocks.
TEST(Encoding, LongTextsRoundTripInEveryEncoding) {
  std::mt19937 random(11);
  CString text(u"<a>");
  while (text.GetLength() < 200000) {
    switch (random() % 8) {
      case 0:
        text += u"\xD83D\xDE00";
        break;
      case 1:
        text += u"€ä";
        break;
      default:
        text +=
            CString(static_cast<char16_t>(u'a' + random() % 26), static_cast<int>(random() % 40));
    }
  }
  text += u"</a>";
  for (const int codePage : {65001, 1200, 1201, 54936}) {
    const EncodedText encoded = encodeMarkupText(text, {codePage, true});
    EXPECT_EQ(encoded.references + encoded.losses, 0u) << codePage;
    if (codePage == 54936) continue;  // nothing in the bytes tells it
    EXPECT_TRUE(decodeMarkupBytes(encoded.bytes).text == text) << codePage;
  }
  for (const int codePage : {28591, 1252, 20127, 28592}) {
    const EncodedText encoded = encodeMarkupText(text, {codePage});
    EXPECT_EQ(encoded.losses, 0u);
    DecodedText decoded = decodeMarkupBytes(
        "<?xml encoding='" + std::string(encodingName(codePage).utf8()) + "'?>" + encoded.bytes);
    EXPECT_TRUE(CMarkup::UnescapeText(decoded.text).EndsWith(text)) << codePage;
  }
}

}  // namespace
}  // namespace kpx
