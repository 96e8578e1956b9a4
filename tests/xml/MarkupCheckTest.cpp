#include "kpx/xml/MarkupCheck.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/StoredMarkup.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using namespace literals;
using Kind = MarkupProblemKind;

struct Expected {
  Kind kind;
  int offset;
  CString name = {};
  friend bool operator==(const Expected&, const Expected&) = default;
};

void PrintTo(const Expected& problem, std::ostream* out) {
  *out << '{' << static_cast<int>(problem.kind) << " at " << problem.offset << ' '
       << problem.name.utf8() << '}';
}

std::vector<Expected> problemsOf(std::u16string_view text) {
  std::vector<Expected> problems;
  const int count = MarkupCheck::check(text, [&](const MarkupProblem& problem) {
    problems.push_back({problem.kind, problem.offset, CString(problem.name)});
    EXPECT_EQ(problem.line, 1 + CMarkup::FindErrorLine(text, problem.offset - 1));
    EXPECT_FALSE(describe(problem).IsEmpty());
  });
  EXPECT_EQ(count, static_cast<int>(problems.size()));
  return problems;
}

TEST(MarkupCheck, EachRuleIsToldAtItsPlace) {
  struct Case {
    const char16_t* text;
    std::vector<Expected> problems;
  };
  const Case cases[] = {
      {u"<a b>", {{Kind::attributeWithoutValue, 3, u"b"}}},
      {u"<a b= >", {{Kind::attributeWithoutValue, 3, u"b"}}},
      {u"<a b=c/>", {{Kind::valueWithoutQuotes, 5, u"b"}}},
      {u"<a b='1'c=\"2\"/>", {{Kind::attributeWithoutBlank, 8, u"c"}}},
      {u"<a b='1' c='2'\nb='3' b='4'/>",
       {{Kind::repeatedAttribute, 15, u"b"}, {Kind::repeatedAttribute, 21, u"b"}}},
      {u"<a b='1<2'/>", {{Kind::lessThanInValue, 7, u"b"}}},
      {u"<a b='1\n2'/>", {{Kind::lineBreakInValue, 7, u"b"}}},
      {u"<a 1b='' b~=''/>", {{Kind::nameSyntax, 3, u"1b"}, {Kind::nameSyntax, 9, u"b~"}}},
      {u"<a =''/>", {{Kind::nameSyntax, 3, u"=''"}}},
      {u"<{/>", {{Kind::nameSyntax, 1, u"{"}}},
      {u"<a>x & y &; &lt &1;</a>",
       {{Kind::ampersandWithoutReference, 5},
        {Kind::ampersandWithoutReference, 9},
        {Kind::ampersandWithoutReference, 12},
        {Kind::ampersandWithoutReference, 16}}},
      {u"<a b='&no;'>&yes;</a>",
       {{Kind::unknownEntity, 6, u"no"}, {Kind::unknownEntity, 12, u"yes"}}},
      {u"<!DOCTYPE a SYSTEM 'b'><a>&yes;</a>", {{Kind::uncheckedDocumentType, 0}}},
      {u"<!DOCTYPE a [<!ENTITY b '\">'><!-- <!ENTITY c ''> -->\n<!ENTITY % d ''>]><a>&b;&c;&d;</a>",
       {{Kind::uncheckedDocumentType, 0},
        {Kind::unknownEntity, 77, u"c"},
        {Kind::unknownEntity, 80, u"d"}}},
      {u"<!DOCTYPE a [%d;]><a>&yes;</a>", {{Kind::uncheckedDocumentType, 0}}},
      {u"<?xml version='1.0' standalone='yes'?><!DOCTYPE a SYSTEM 'b'><a>&no;</a>",
       {{Kind::uncheckedDocumentType, 38}, {Kind::unknownEntity, 64, u"no"}}},
      {u"<a>&#0;&#xD800;&#x110000;&#;&#x;&#1F;</a>",
       {{Kind::ampersandWithoutReference, 3},
        {Kind::ampersandWithoutReference, 7},
        {Kind::ampersandWithoutReference, 15},
        {Kind::ampersandWithoutReference, 25},
        {Kind::ampersandWithoutReference, 28},
        {Kind::ampersandWithoutReference, 32}}},
      {u"<a>\x01<!--\xFFFE-->\xDC00\xD800</a>",
       {{Kind::forbiddenCharacter, 3},
        {Kind::forbiddenCharacter, 8},
        {Kind::forbiddenCharacter, 12},
        {Kind::forbiddenCharacter, 13}}},
      {u"<a></a b>", {{Kind::endTagSyntax, 3, u"a"}}},
      {u" x<a/> <![CDATA[]]>\n&#x20;",
       {{Kind::textOutsideRoot, 1}, {Kind::textOutsideRoot, 7}, {Kind::textOutsideRoot, 20}}},
      {u"<a>]]>]]></a>", {{Kind::sectionEndInText, 3}, {Kind::sectionEndInText, 6}}},
      {u"<!-- a--b--c --><!-- - ---><a/>",
       {{Kind::hyphensInComment, 6}, {Kind::hyphensInComment, 23}}},
      {u" <?xml version='1.0'?><a/>", {{Kind::misplacedDeclaration, 1}}},
      {u"<?XML version='1.0'?><a/>", {{Kind::misplacedDeclaration, 0}}},
      {u"<?1?><a/>", {{Kind::nameSyntax, 2, u"1"}}},
      {u"<?xml encoding='UTF-8'?><a/>", {{Kind::declarationSyntax, 0}}},
      {u"<?xml version='2.0'?><a/>", {{Kind::declarationSyntax, 0}}},
      {u"<?xml version='1.0' standalone='yes' encoding='x'?><a/>", {{Kind::declarationSyntax, 0}}},
      {u"<?xml version='1.0' encoding='8'?><a/>", {{Kind::declarationSyntax, 0}}},
      {u"<?xml version=\"1.0?><a/>", {{Kind::unclosedValue, 14, u"version"}}},
      {u"<a/><!DOCTYPE a>", {{Kind::misplacedDocumentType, 4}, {Kind::uncheckedDocumentType, 4}}},
      {u"<!DOCTYPE a><!DOCTYPE a><a/>",
       {{Kind::uncheckedDocumentType, 0},
        {Kind::misplacedDocumentType, 12},
        {Kind::uncheckedDocumentType, 12}}},
      // Version 1.1 has references to control characters, and more line ends.
      {u"<?xml version='1.1'?>\x85<a\x2028 b='\x85'>\x01&#1;&#0;\x7F\x80</a\x85>",
       {{Kind::lineBreakInValue, 29, u"b"},
        {Kind::forbiddenCharacter, 32},
        {Kind::ampersandWithoutReference, 37},
        {Kind::forbiddenCharacter, 41},
        {Kind::forbiddenCharacter, 42}}},
      {u"<?xml version='1.0'?>\x85<a>&#1;\x7F\x80</a>",
       {{Kind::textOutsideRoot, 21}, {Kind::ampersandWithoutReference, 25}}},
      {u"<?xml\x85version='1.1'?><a/>", {{Kind::nameSyntax, 2, u"xml\x85version='1.1'"}}},
  };
  for (const Case& each : cases) {
    EXPECT_EQ(problemsOf(each.text), each.problems) << testing::PrintToString(CString(each.text));
  }
}

TEST(MarkupCheck, RightDocumentsPass) {
  const char16_t* const documents[] = {
      u"\xFEFF<?xml version=\"1.0\" encoding='UTF-8' standalone = \"no\" ?>\r\n<a/>\r\n",
      u"<?xml-stylesheet href='x'?><!-- - --><a b=\"'&lt;&#10;&#x1F600;>\" c:d='\"'>\t&amp;\n</a >",
      u"<ä_-.1><![CDATA[<&--]]>\xD83D\xDE00</ä_-.1><!---->",
  };
  for (const char16_t* const text : documents) {
    EXPECT_EQ(problemsOf(text), std::vector<Expected>()) << testing::PrintToString(CString(text));
    EXPECT_TRUE(CMarkup(text).IsWellFormed());
  }
}

TEST(MarkupCheck, WhatTheParseRecordsIsNotToldAgain) {
  for (const char16_t* const text : {u"<a><b></a>", u"</a>", u"<a>< b></a>", u"<a", u""}) {
    EXPECT_EQ(problemsOf(text), std::vector<Expected>()) << testing::PrintToString(CString(text));
  }
}

TEST(MarkupCheck, BytesAreCheckedAsOtherProgramsReadThem) {
  using namespace std::literals;
  struct Case {
    std::string_view bytes;
    std::size_t errors;
    std::size_t warnings;
    int column;  // of the first problem
  };
  const Case cases[] = {
      {"<a>\xC3\xA4</a>", 0, 0, 0},
      {"<a>\xE4</a>", 1, 0, 4},  // neither UTF-8 nor declared
      {"\xFF\xFE<\0a\0/\0>\0"sv, 0, 0, 0},
      {"<\0a\0/\0>\0"sv, 1, 0, 1},  // no mark
      {"\xFF\xFE<\0?\0x\0m\0l\0 \0v\0e\0r\0s\0i\0o\0n\0=\0'\0001\0.\0000\0'\0 "
       "\0e\0n\0c\0o\0d\0i\0n\0g\0="
       "\0'\0u\0t\0f\0-\0008\0'\0?\0>\0<\0a\0/\0>\0"sv,
       1, 0, 1},
      {"\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><a/>", 1, 0, 1},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4</a>", 0, 0, 0},
      {"<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA4</a>", 0, 1, 47},
      {"<?xml version='1.0' encoding='utf8'?><a>\xE4</a>", 1, 0, 41},
      {"<!DOCTYPE a><a/>", 0, 1, 1},
      {"<a><b/><c/>", 1, 0, 1},  // cut off: no word of a second root
      {"<a/><b><c/>", 2, 0, 5},
      {"<a b='1\n2'/>", 0, 0, 0},  // the suite itself writes it
  };
  for (const Case& each : cases) {
    const StoredMarkup read = checkMarkup(each.bytes);
    EXPECT_EQ(read.problems.count - read.warnings, each.errors) << each.bytes;
    EXPECT_EQ(read.warnings, each.warnings) << each.bytes;
    EXPECT_EQ(read.problems.empty() ? 0 : read.problems.first[0].column, each.column) << each.bytes;
  }

  std::string open;
  for (int i = 0; i < 3000; ++i) open += "<a>";
  const StoredMarkup read = readMarkup(open, 2);
  EXPECT_EQ(read.problems.count, 3000U);
  ASSERT_EQ(read.problems.first.size(), 2U);
  EXPECT_EQ(read.problems.first[1].column, 4);
  EXPECT_TRUE(read.document.GetResult().IsEmpty());
}

}  // namespace
}  // namespace kpx
