#include <gtest/gtest.h>

#include <cmath>
#include <set>

#include "kpx/platform/FileTimes.h"
#include "kpx/support/files/CKpxBaseObjectsUtil.h"
#include "kpx/support/files/CUtf16StdioFile.h"
#include "kpx/support/objects/MakeUuidString.h"
#include "tests/common/FaultyFileSystem.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using File = CUtf16StdioFile;
using Lines = std::vector<CString>;

std::string utf16(std::u16string_view text, bool bigEndian = false) {
  std::string bytes;
  for (const char16_t unit : text) {
    const char high = static_cast<char>(unit >> 8);
    const char low = static_cast<char>(unit);
    bytes += {bigEndian ? high : low, bigEndian ? low : high};
  }
  return bytes;
}

class Utf16FileTest : public testing::Test {
 protected:
  Lines linesOf(std::string_view bytes, std::uint32_t flags = File::modeRead) {
    folder_.write("a.txt", bytes);
    File file;
    EXPECT_NE(file.Open(folder_ / "a.txt", flags), 0);
    Lines lines;
    for (CString line; file.ReadString(line);) lines.push_back(line);
    EXPECT_TRUE(file.problem().ok());
    EXPECT_EQ(file.GetPosition(), bytes.size() - (file.IsUnicodeFile() ? bytes.size() % 2 : 0));
    return lines;
  }

  TemporaryFolder folder_;
};

TEST_F(Utf16FileTest, LinesOfBothByteOrders) {
  // Second ends that come last in a block of 4,096 bytes, or first in the next one.
  const CString long1 = CString(u'a', 2045);
  const CString long2 = CString(u'b', 2048);
  const struct {
    CString content;
    Lines lines;
  } cases[] = {
      {u"", {}},
      {u"eins\r\nzwei\r\n", {u"eins", u"zwei"}},
      {u"ä\n\nb\r\rc\n\rd", {u"ä", u"b", u"c", u"d"}},
      {u"a\r\n\r\nb\n", {u"a", u"", u"b"}},
      {u"\n", {u""}},
      {u"\xD800\xFFFE\n\U0001D11E", {u"\xD800\xFFFE", u"\U0001D11E"}},
      {long1 + u"\r\n" + long2 + u"\r\n" + long1 + u"\n", {long1, long2, long1}},
  };
  for (const auto& [content, lines] : cases) {
    EXPECT_EQ(linesOf("\xFF\xFE" + utf16(content)), lines);
    EXPECT_EQ(linesOf("\xFE\xFF" + utf16(content, true)), lines);
    EXPECT_EQ(linesOf("\xFF\xFE" + utf16(content) + "x"), lines);
  }
}

TEST_F(Utf16FileTest, OtherFilesAreAnsi) {
  const struct {
    std::string content;
    Lines text;
    Lines binary;
  } cases[] = {
      {"", {}, {}},
      {"\xFF", {u"ÿ"}, {u"ÿ"}},
      {"\xFE\xFE", {u"þþ"}, {u"þþ"}},
      {"Stra\xDF"
       "e \x80\r\n\n\rb\r\n",
       {u"Straße €", u"", u"\rb"},
       {u"Straße €\r", u"", u"\rb\r"}},
      {std::string(4095, 'x') + "\r\ny",
       {CString(u'x', 4095), u"y"},
       {CString(u'x', 4095) + u"\r", u"y"}},
  };
  for (const auto& [content, text, binary] : cases) {
    EXPECT_EQ(linesOf(content), text);
    EXPECT_EQ(linesOf(content, File::typeBinary), binary);
  }
}

TEST_F(Utf16FileTest, BufferCutsLongLinesAndGoesOn) {
  const struct {
    std::string content;
    Lines pieces;
  } cases[] = {
      {"\xFF\xFE" + utf16(u"abcdefg\r\nxyz\r\n\r\nz"), {u"abc", u"def", u"g", u"xyz", u"", u"z"}},
      {"abcd\r\nxyz\r\nz", {u"abc", u"d\n", u"xyz", u"\n", u"z"}},
  };
  for (const auto& [content, pieces] : cases) {
    folder_.write("a.txt", content);
    File file;
    ASSERT_NE(file.Open(folder_ / "a.txt", File::modeRead), 0);
    char16_t buffer[5] = {0, 0, 0, 0, u'#'};
    Lines read;
    EXPECT_EQ(file.ReadString(buffer, 1), nullptr);
    EXPECT_EQ(file.ReadString(static_cast<char16_t*>(nullptr), 4), nullptr);
    while (file.ReadString(buffer, 4)) read.push_back(buffer);
    EXPECT_EQ(read, pieces);
    EXPECT_EQ(buffer[4], u'#');
  }
  // No character is halved where the buffer's characters hold a whole one.
  folder_.write("a.txt", "\xFF\xFE" + utf16(u"ab\U0001F600c\xD83D\n\xDE00"));
  File file;
  ASSERT_NE(file.Open(folder_ / "a.txt", File::modeRead), 0);
  wchar_t buffer[4];
  Lines read;
  while (file.ReadString(buffer, 4)) read.push_back(buffer);
  const CString half(u'\xDE00');
  EXPECT_EQ(read, wideIsUtf16 ? (Lines{u"ab\xD83D", half + u"c\xD83D", half})
                              : (Lines{u"ab", u"\U0001F600c", u"\xD83D", half}));
}

TEST_F(Utf16FileTest, WritesOneMarkAtTheStart) {
  File file;
  file.setUnicodeFile(true);
  ASSERT_NE(file.Open(folder_ / "a.txt", File::modeCreate | File::modeWrite), 0);
  EXPECT_NE(file.WriteString(u"ä\n"), 0);
  EXPECT_NE(file.WriteString(u"b\r\n"), 0);
  EXPECT_EQ(file.GetPosition(), 12u);
  CString line;
  EXPECT_EQ(file.ReadString(line), 0);
  EXPECT_EQ(file.problem().status, FileStatus::notOpen);
  ASSERT_NE(file.Close(), 0);
  EXPECT_EQ(folder_.read("a.txt"), "\xFF\xFE" + utf16(u"ä\nb\r\n"));

  // At the end of one that exists, and in the middle of it, in its own byte order.
  folder_.write("a.txt", "\xFE\xFF" + utf16(u"ä\nb\r\n", true));
  ASSERT_NE(file.Open(folder_ / "a.txt", File::modeReadWrite), 0);
  EXPECT_NE(file.ReadString(line), 0);
  EXPECT_NE(file.WriteString(u"c"), 0);
  EXPECT_NE(file.ReadString(line), 0);
  EXPECT_EQ(line, u"");
  EXPECT_EQ(file.SeekToEnd(), 12);
  EXPECT_NE(file.WriteString(u"d"), 0);
  EXPECT_EQ(file.Seek(-15, File::current), -1);
  EXPECT_EQ(file.Seek(-4, File::current), 10);
  EXPECT_NE(file.ReadString(line), 0);
  ASSERT_NE(file.Close(), 0);
  EXPECT_EQ(folder_.read("a.txt"), "\xFE\xFF" + utf16(u"ä\nc\r\nd", true));
}

TEST_F(Utf16FileTest, AnsiTextGetsTheSuitesLineEnds) {
  File file;
  ASSERT_NE(file.Open(folder_ / "a.txt", File::modeCreate | File::modeWrite), 0);
  EXPECT_NE(file.WriteString(u"a\nß\r"), 0);
  EXPECT_NE(file.WriteString(u"\n"), 0);
  ASSERT_NE(file.Close(), 0);
  EXPECT_EQ(folder_.read("a.txt"), "a\r\n\xDF\r\n");
  const std::uint32_t append = File::modeCreate | File::modeNoTruncate | File::modeWrite;
  ASSERT_NE(file.Open(folder_ / "a.txt", append | File::typeBinary), 0);
  EXPECT_EQ(file.SeekToEnd(), 6);
  EXPECT_NE(file.WriteString(u"b\n"), 0);
  // Neither half of a text nor a question mark gets into the file, and Close tells of it.
  EXPECT_EQ(file.WriteString(u"x Ω"), 0);
  EXPECT_EQ(file.problem().status, FileStatus::notEncodable);
  EXPECT_EQ(file.Close(), 0);
  EXPECT_EQ(folder_.read("a.txt"), "a\r\n\xDF\r\nb\n");
}

TEST_F(Utf16FileTest, EachStepThatFailsIsTold) {
  using Step = FaultyFileSystem::Step;
  FaultyFileSystem files;
  const CString text(u'x', 3000);
  for (const auto& [step, passing] : {std::pair(Step::open, 0), std::pair(Step::write, 0),
                                      std::pair(Step::write, 2), std::pair(Step::close, 0)}) {
    files.failOnce(step, passing);
    File file;
    file.setUnicodeFile(true);
    FileResult reason;
    bool good = file.Open(folder_ / "a.txt", File::modeCreate | File::modeWrite, &reason) != 0;
    EXPECT_EQ(good, reason.ok());
    bool closed = true;
    if (good) {
      for (int i = 0; i < 3; ++i) good = file.WriteString(text) != 0 && good;
      closed = file.Close() != 0;
    }
    EXPECT_TRUE(files.hasFailed());
    EXPECT_FALSE(good && closed);
  }
  folder_.write("a.txt", std::string(10000, 'x'));
  for (const int passing : {0, 1, 2}) {
    files.failOnce(Step::readAt, passing);
    File file;
    CString line = u"before";
    const bool read = file.Open(folder_ / "a.txt", File::modeRead) && file.ReadString(line);
    EXPECT_FALSE(read);
    EXPECT_EQ(file.problem().status, FileStatus::noSpace);
  }
  File file;
  EXPECT_EQ(file.Open(folder_ / "missing", File::modeReadWrite), 0);
  EXPECT_EQ(file.problem().status, FileStatus::notFound);
  EXPECT_EQ(file.Seek(0, File::begin), -1);
  EXPECT_EQ(file.WriteString(u"x"), 0);
}

TEST(MakeUuidStringTest, FormOfGivenAndNewOnes) {
  const Guid guid{0x1A2B3C4D, 0x0A05, 0xF6E7, {0x80, 0x09, 0, 1, 2, 3, 4, 0xFF}};
  EXPECT_EQ(MakeUuidString(&guid), u"1A2B3C4D-0A05-F6E7-8009-0001020304FF");
  struct {
    unsigned long Data1;
    unsigned short Data2, Data3;
    unsigned char Data4[8];
  } foreign{1, 2, 3, {4, 5, 6, 7, 8, 9, 10, 11}};
  EXPECT_EQ(MakeUuidString(&foreign), u"00000001-0002-0003-0405-060708090A0B");
  std::set<CString> made;
  for (int i = 0; i < 100; ++i) {
    const CString text = MakeUuidString(nullptr);
    ASSERT_EQ(text.GetLength(), 36);
    EXPECT_EQ(text[14], u'4');
    EXPECT_NE(CString(u"89AB").Find(text[19]), -1);
    EXPECT_TRUE(made.insert(text).second);
  }
}

TEST(FileTimeTest, IsPackedInLocalTime) {
  const TemporaryFolder folder;
  folder.write("a", "x");
  const CString path = folder / "a";
  const double before = CKpxBaseObjectsUtil::GetTimestamp();
  const double written = CKpxBaseObjectsUtil::GetLastWriteFileTime(path);
  EXPECT_LE(written, before);
  EXPECT_GT(written, before - 1000000);  // less than a day
  EXPECT_GT(CKpxBaseObjectsUtil::GetLastAccessFileTime(path), 0.0);
  FileTimes times;
  ASSERT_TRUE(readFileTimes(path, times));
  EXPECT_EQ(CKpxBaseObjectsUtil::GetCreationFileTime(path) > 0, times.created.year > 0);
  EXPECT_EQ(CKpxBaseObjectsUtil::GetLastWriteFileTime(path + u"x"), 0.0);
}

}  // namespace
}  // namespace kpx
