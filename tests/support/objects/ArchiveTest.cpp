#include "kpx/support/objects/Archive.h"

#include <gtest/gtest.h>

#include <limits>

#include "kpx/report/Exceptions.h"
#include "kpx/support/objects/CObject.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using namespace std::string_literals;

std::string written(const CString& text) {
  std::string bytes;
  CArchive(&bytes) << text;
  return bytes;
}

CString readText(std::string_view bytes) {
  CString text(u"before");
  CArchive archive(bytes);
  archive >> text;
  EXPECT_EQ(archive.remaining(), 0U);
  return text;
}

TEST(Archive, TextsOfEveryFormOfTheLengthComeBack) {
  const struct {
    int length;
    std::string head;  // behind the mark
  } cases[] = {
      {0, "\x00"s},
      {254, "\xFE"s},
      {255, "\xFF\xFF\x00"s},
      {65533, "\xFF\xFD\xFF"s},
      {65534, "\xFF\xFF\xFF\xFE\xFF\x00\x00"s},  // the word FFFE is the mark
      {65536, "\xFF\xFF\xFF\x00\x00\x01\x00"s},
  };
  for (const auto& each : cases) {
    const CString text(u'\u20AC', each.length);
    const std::string bytes = written(text);
    EXPECT_EQ(bytes.substr(0, 3 + each.head.size()), "\xFF\xFE\xFF" + each.head) << each.length;
    EXPECT_EQ(readText(bytes), text) << each.length;
  }
}

TEST(Archive, LiteralsAreStoredAsWhatTheyAre) {
  std::string bytes;
  CArchive archive(&bytes);
  archive << u"a" << L"ä" << std::u16string(u"b") << L'\u20AC' << 'c';
  EXPECT_EQ(bytes, written(u"a") + written(u"ä") + written(u"b") + "\xAC\x20" + "c");
  if (!wideIsUtf16) {
    EXPECT_THROW(archive << static_cast<wchar_t>(0x1F600), InvalidArgException);
  }
}

TEST(Archive, ReadsWhatOthersWrite) {
  EXPECT_EQ(readText("\x03\x80\x81\xE4"s), u"\u20AC\u0081ä");
  EXPECT_EQ(readText("\xFF\x02\x00xy"s), u"xy");
  EXPECT_EQ(readText("\xFF\xFF\xFF\x02\x00\x00\x00xy"s), u"xy");
  EXPECT_EQ(readText("\xFF\xFE\xFF\x01\x3D\xD8"s), u"\xD83D");
  // Behind the mark, the word of the mark is a length.
  EXPECT_EQ(readText("\xFF\xFE\xFF\xFF\xFE\xFF"s + std::string(2 * 65534, 'a')).GetLength(), 65534);
}

TEST(Archive, WhatIsNotThereWholeIsNotRead) {
  const std::string whole = written(u"Höhe") + "\x01\x02\x03\x04"s;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    CArchive archive(std::string_view(whole).substr(0, length));
    CString text(u"before");
    std::int32_t number = 7;
    const bool isTextThere = length >= whole.size() - 4;
    if (isTextThere) {
      archive >> text;
      EXPECT_THROW(archive >> number, ArchiveEndException);
      EXPECT_EQ(number, 7);
    } else {
      EXPECT_THROW(archive >> text, ArchiveEndException);
      EXPECT_EQ(text, u"before");
      EXPECT_EQ(archive.position(), 0U);
    }
  }
  // Lengths that would take all memory or wrap when they are doubled.
  for (const char* const head : {"\xFF\xFF\xFF\xFF\xFF\xFF\xFF", "\xFF\xFF\xFF\xFF\xFF\xFF\x7F"}) {
    CString text;
    CArchive narrow(std::string_view{head, 7});
    EXPECT_THROW(narrow >> text, ArchiveEndException);
    const std::string wide = "\xFF\xFE\xFF"s + head + "ab";
    CArchive archive(wide);
    EXPECT_THROW(archive >> text, ArchiveEndException);
  }
}

/// All kinds of numbers, as a module stores them.
struct Record : CObject {
  std::int8_t tiny = 0;
  std::uint16_t small = 0;
  std::int32_t number = 0;
  std::uint64_t large = 0;
  bool isOn = false;
  float single = 0;
  double real = 0;
  CString text;

  void Serialize(CArchive& archive) override {
    CObject::Serialize(archive);
    if (archive.IsStoring()) {
      archive << tiny << small << number << large << isOn << single << real << text;
    } else {
      archive >> tiny >> small >> number >> large >> isOn >> single >> real >> text;
    }
  }
};

TEST(Archive, ObjectsComeBackAndNumbersAreLittleEndian) {
  Record record;
  record.tiny = -2;
  record.small = 0x1234;
  record.number = std::numeric_limits<std::int32_t>::min();
  record.large = 0x0102030405060708;
  record.isOn = true;
  record.single = -0.5F;
  record.real = 0.1;
  record.text = u"Maß";
  std::string bytes;
  CArchive to(&bytes);
  record.Serialize(to);
  EXPECT_EQ(bytes.substr(0, 15), "\xFE\x34\x12\x00\x00\x00\x80\x08\x07\x06\x05\x04\x03\x02\x01"s);
  Record read;
  CArchive from(bytes);
  read.Serialize(from);
  EXPECT_EQ(from.remaining(), 0U);
  EXPECT_EQ(read.tiny, record.tiny);
  EXPECT_EQ(read.number, record.number);
  EXPECT_EQ(read.large, record.large);
  EXPECT_TRUE(read.isOn);
  EXPECT_EQ(read.single, record.single);
  EXPECT_EQ(read.real, record.real);
  EXPECT_EQ(read.text, record.text);
  EXPECT_THROW(to >> read.real, InvalidArgException);
  EXPECT_THROW(from << record.real, InvalidArgException);
}

}  // namespace
}  // namespace kpx
