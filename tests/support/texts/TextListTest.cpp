#include <gtest/gtest.h>

#include <string>
#include <tuple>

#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "kpx/support/objects/Archive.h"
#include "kpx/support/texts/internal/BuiltInTexts.h"
#include "kpx/support/texts/LanguageFile.h"
#include "kpx/support/texts/TextCheck.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/support/texts/TextTable.h"
#include "kpx/support/texts/TextTemplate.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/FaultyFileSystem.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TextList listOf(std::vector<TextEntry> entries) { return {0, CString(), std::move(entries)}; }

// --- language files -------------------------------------------------------------------------

class LanguageFile : public testing::Test {
 protected:
  LanguageFile() {
    detail::clearTexts();
    AddMLT(1, u"eins");
    AddMLT(2, u"zwei");
  }
  ~LanguageFile() override { detail::clearTexts(); }

  CString file(std::string_view bytes) const {
    folder_.write("X.LNG", bytes);
    return folder_ / "X.LNG";
  }

  TemporaryFolder folder_;
};

TEST_F(LanguageFile, OverlaysTheStore) {
  const TextList list = listOf({{1, u"a\r\nb\rc\n"}, {2, CString()}, {70000, u"new"}, {-1, u"x"}});
  ASSERT_EQ(LoadMLTFile(file(languageFileBytes(list))), 1);
  EXPECT_EQ(GetMLT(1), u"a\nb\rc\n");
  EXPECT_EQ(GetMLT(2), u"zwei");
  EXPECT_EQ(GetMLT(70000), u"new");
  EXPECT_EQ(GetMLT(-1), u"x");
}

TEST_F(LanguageFile, CountsBelowOneHoldNothing) {
  for (const std::int32_t count : {0, -1}) {
    std::string bytes;
    CArchive(&bytes) << std::uint32_t{7} << CString(u"title") << count << std::int32_t{1}
                     << CString(u"x");
    EXPECT_EQ(LoadMLTFile(file(bytes)), 1);
    EXPECT_EQ(GetMLT(1), u"eins");
  }
}

TEST_F(LanguageFile, KeepsWhatStandsBeforeAnEarlyEnd) {
  const TextList list{3, u"title", {{1, u"one"}, {2, u"two"}, {3, u"three"}}};
  const std::string whole = languageFileBytes(list);
  std::size_t read = 0;
  for (std::size_t length = 0; length < whole.size(); ++length) {
    detail::clearTexts();
    EXPECT_THROW(LoadMLTFile(file(whole.substr(0, length))), ArchiveEndException) << length;
    TextList part;
    EXPECT_FALSE(readLanguageFile(whole.substr(0, length), part).isWhole);
    EXPECT_GE(part.entries.size(), read);
    read = part.entries.size();
    for (const TextEntry& entry : list.entries) {
      const bool isRead = static_cast<std::size_t>(entry.id) <= read;
      EXPECT_EQ(GetMLT(entry.id), isRead ? entry.text : CString()) << length;
    }
  }
  EXPECT_EQ(read, 2U);
  // A count that would take all memory.
  std::string bytes;
  CArchive(&bytes) << std::uint32_t{0} << CString() << std::int32_t{0x7FFFFFFF} << std::int32_t{1};
  TextList part;
  EXPECT_FALSE(readLanguageFile(bytes, part).isWhole);
  // Missing memory is told apart from a file that ends early.
  for (int count = 0; count < 3; ++count) {
    const FailingAllocations failing(count);
    const LanguageFileResult result = readLanguageFile(whole, part);
    EXPECT_EQ(result.hasFailed, failing.hasFailed());
    EXPECT_EQ(result.isWhole, !failing.hasFailed());
  }
  EXPECT_FALSE(readLanguageFile(whole.substr(1), part).hasFailed);
}

TEST_F(LanguageFile, WhatCannotBeOpenedChangesNothing) {
  const std::uint64_t reported = errorCounts().reported;
  EXPECT_EQ(LoadMLTFile(folder_ / "none.LNG"), 0);
  EXPECT_EQ(LoadMLTFile(folder_ / ""), 0);
  FaultyFileSystem files;
  const CString good = file(languageFileBytes(listOf({{1, u"one"}})));
  files.failOnce(FaultyFileSystem::Step::read);
  EXPECT_EQ(LoadMLTFile(good), 0);
  EXPECT_EQ(GetMLT(1), u"eins");
  EXPECT_EQ(errorCounts().reported, reported);
}

// --- lists ----------------------------------------------------------------------------------

TEST(TextList, ComesBackFromEveryForm) {
  CString everyUnit;
  for (int unit = 0; unit < 0x10000; unit += unit < 0x3000 || unit >= 0xD000 ? 1 : 16) {
    everyUnit += static_cast<char16_t>(unit);
  }
  const TextList list{4000000000U,
                      u"title\nof two lines",
                      {{7, everyUnit},
                       {-2147483647 - 1, u"\\n \t#"},
                       {7, CString()},
                       {2147483647, u" \xFEFF\r\n"}}};
  TextList read;
  EXPECT_TRUE(readTextTable(textTableBytes(list), read).empty());
  EXPECT_EQ(read, list);
  const std::string bytes = languageFileBytes(list);
  const LanguageFileResult result = readLanguageFile(bytes + "more", read);
  EXPECT_EQ(read, list);
  EXPECT_TRUE(result.isWhole);
  EXPECT_EQ(result.end, bytes.size());
  EXPECT_EQ(result.announced, 4);
}

TEST(TextList, BadLinesAreNamedAndTheOthersRead) {
  const std::string_view bad[] = {"7 text",      "x\ttext", "2147483648\ttext", "7\ta\\q",
                                  "7\ta\\",      "7\ta\tb", "7\ta\rb",          "7\t\\u12g4",
                                  "7\t\\uD83",   "7\t\xFF", "# header\t-1",     "+7\ttext",
                                  "# title\t\\x"};
  std::string bytes = "\xEF\xBB\xBF# a comment\r\n\n1\tfirst\r\n";
  for (const std::string_view line : bad) bytes += std::string(line) + "\n";
  bytes += "2\tlast \\u00e4";
  TextList list;
  const Problems<TextTableProblem> problems = readTextTable(bytes, list);
  ASSERT_EQ(problems.count, std::size(bad));
  ASSERT_EQ(problems.leftOut(), 0U);
  for (std::size_t i = 0; i < problems.count; ++i) {
    EXPECT_EQ(problems.first[i].line, static_cast<int>(i) + 4) << bad[i];
    EXPECT_FALSE(problems.first[i].message.IsEmpty());
  }
  EXPECT_EQ(list, listOf({{1, u"first"}, {2, u"last ä"}}));
}

TEST(TextList, DifferencesAreThoseThatReadersSee) {
  const TextList before = listOf({{3, u"c"}, {1, u"a"}, {1, u"b"}, {5, u"e"}, {9, u"i"}});
  const TextList after = listOf({{1, u"b"}, {3, u"C"}, {3, CString()}, {4, u"d"}, {5, u"e"}});
  const std::vector<TextDifference> found = differencesOf(before, after);
  std::vector<std::tuple<int, CString, CString>> shown;
  shown.reserve(found.size());
  for (const TextDifference& each : found) shown.emplace_back(each.id, each.before, each.after);
  EXPECT_EQ(shown, (std::vector<std::tuple<int, CString, CString>>{
                       {3, u"c", u"C"}, {4, u"", u"d"}, {9, u"i", u""}}));
  const TextCoverage coverage = coverageOf(after, before);
  EXPECT_EQ(coverage.translated, 3U);
  EXPECT_EQ(coverage.sameAsGerman, 2U);
  EXPECT_EQ(coverage.missing, std::vector<std::int32_t>{9});
  EXPECT_EQ(coverage.unknown, std::vector<std::int32_t>{4});
  EXPECT_EQ(coverage.percent(), 75.0);
}

// --- templates ------------------------------------------------------------------------------

TEST(TextTemplate, TakesTheSameValues) {
  const struct {
    std::u16string_view german;
    std::u16string_view other;
    bool same;
  } cases[] = {
      {u"%s in %.3f", u"%-8s: %7.2lf", true},
      {u"%d", u"%05ld", true},
      {u"100 %% von %d", u"%d of 100", true},
      {u"%x", u"%d", true},
      {u"%s %d", u"%d %s", false},
      {u"%s", u"none", false},
      {u"%s", u"%s %s", false},
      {u"%d", u"%*d", false},
      {u"%.2f", u"%.*f", false},
      {u"%d", u"%hd", false},
      {u"%s", u"%1$s", false},
      {u"%s", u"%n", false},
      {u"%d", u"%", false},
      {u"%c", u"%d", false},
      {u"%%", u"%*%", false},
      {u"%d", u"%%d", false},
      {u"100 %", u"100 %", true},
      {u"", u"", true},
  };
  for (const auto& each : cases) {
    EXPECT_EQ(takeSameValues(each.german, each.other), each.same) << CString(each.other).utf8();
    EXPECT_EQ(takeSameValues(each.other, each.german), each.same) << CString(each.other).utf8();
  }
}

TEST(TextTemplate, GermanStandsInForAWrongTranslation) {
  detail::clearTexts();
  EXPECT_EQ(CString(templateText(614)), u"Fehler");  // before the store is filled
  AddMLT(541, u"An error has occurred in %d (%s, %s)");
  AddMLT(24, u"%s is missing. Create it?");
  AddMLT(4300, u"%d");
  EXPECT_EQ(CString(templateText(541)), CString(builtInText(541)));
  EXPECT_EQ(CString(templateText(24)), u"%s is missing. Create it?");
  EXPECT_EQ(CString(templateText(4300)), u"%d");
  EXPECT_EQ(CString(templateText(4300, u"%s")), u"%s");
  detail::clearTexts();
}

// --- checks ---------------------------------------------------------------------------------

TEST(TextCheck, FindsWhatDoesNotMatch) {
  using Kind = TextFindingKind;
  const struct {
    std::u16string_view german;
    std::u16string_view other;
    std::vector<Kind> findings;
  } cases[] = {
      {u"%d von %s", u"%s of %d", {Kind::placeholders}},
      {u"10 % der Fläche", u"10 % complete", {}},
      {u"10 % der Fläche", u"10 % complete %s", {Kind::placeholders}},
      {u"&Datei\tStrg+D", u"&File\tCtrl+F", {}},
      {u"&Datei\tStrg+D", u"File", {Kind::accelerator, Kind::tabs}},
      {u"Maß && &Zahl", u"R&&D & &Number", {}},
      {u"eins\nzwei", u"one\r\ntwo", {}},
      {u"eins\nzwei", u"one two", {Kind::lineBreaks}},
      {u"eins\nzwei\n", u"\none\ntwo", {Kind::lineBreaks}},
      {u"Höhe", u"123456789012345678", {}},
      {u"Höhe", u"1234567890123456789", {Kind::tooLong}},
      {u"Höhe\n12345678901234567890", u"123456789012345678901234567890\nheight", {}},
      {u"Höhe", u"", {Kind::emptyText}},
  };
  for (const auto& each : cases) {
    const Problems<TextFinding> found =
        checkTexts(listOf({{5, CString(each.other)}}), listOf({{5, CString(each.german)}}));
    std::vector<Kind> kinds;
    for (const TextFinding& finding : found) {
      kinds.push_back(finding.kind);
      EXPECT_FALSE(describe(finding.kind).IsEmpty());
    }
    EXPECT_EQ(kinds, each.findings) << CString(each.other).utf8();
  }
  const Problems<TextFinding> found =
      checkTexts(listOf({{1, u"a"}, {2, u"b"}, {1, u"c"}}), listOf({{1, u"x"}, {1, u"a"}}));
  ASSERT_EQ(found.count, 2U);
  EXPECT_EQ(found.first[0].kind, Kind::unknownId);
  EXPECT_EQ(found.first[0].index, 1U);
  EXPECT_EQ(found.first[1].kind, Kind::repeatedId);
  EXPECT_EQ(found.first[1].id, 1);
}

}  // namespace
}  // namespace kpx
