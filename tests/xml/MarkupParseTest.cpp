#include <gtest/gtest.h>

#include <stdexcept>

#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/MarkupValidator.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using namespace literals;

CString repeated(int count, std::u16string_view part) {
  CString text;
  text.Preallocate(count * static_cast<int>(part.size()));
  for (int i = 0; i < count; ++i) text += part;
  return text;
}

void appendOutline(CMarkup& document, CString& out) {
  while (document.FindElem()) {
    out += repeated(document.GetElemLevel(), u".") + document.GetTagName() + u" "_cs;
    document.IntoElem();
    appendOutline(document, out);
    document.OutOfElem();
  }
}

// The start tags in document order, each with as many dots before it as its level.
CString outline(CMarkup& document) {
  CString out;
  document.ResetPos();
  appendOutline(document, out);
  return out;
}

TEST(MarkupParse, WellFormedDocumentsGiveTheirElementsAndNoOutcome) {
  struct Case {
    const char16_t* text;
    const char16_t* outline;
  };
  const Case cases[] = {
      {u"<a/>", u"a "},
      {u"<a></a >", u"a "},
      {u"\n<a\n>\t<b />x<c></c\n></a>\n", u"a .b .c "},
      {u"<a b='>' c=\">/>\" d = '\"' e=\"'\"/>", u"a "},
      {u"<a b=\"<x>\"><!--<x>--><![CDATA[<x>]]><?p <x>?></a>", u"a "},
      {u"<!DOCTYPE a [<!ENTITY b \"]>\"><!-- ' ]> --><?p ]>?>]><a/>", u"a "},
      {u"<!DOCTYPE a><a/>", u"a "},
      {u"<a>-->]]>?>/>></a>", u"a "},
      {u"<!-->--><a><![CDATA[]]]]></a>", u"a "},
      {u"<ä><{/><:_/><é:x/></ä>", u"ä .{ .:_ .é:x "},
      // A quote matters only where a value begins.
      {u"<a><b don't>x</b><c d=e'></c><f g = '>'/></a>", u"a .b .c .f "},
      {u"<a b=/></a>", nullptr},
      {u"<r><a=\"b>c\"></a><d'></d'><e\tf='>'/></r>", u"r .a=\"b .d' .e "},
      // The end tag may leave out what follows the name in the start tag.
      {u"<a[1]><b=c></b></a>", u"a[1] .b=c "},
  };
  for (const Case& each : cases) {
    CMarkup document(each.text);
    EXPECT_EQ(MarkupValidator::check(document), "") << testing::PrintToString(CString(each.text));
    EXPECT_EQ(document.IsWellFormed(), each.outline != nullptr);
    if (!each.outline) continue;
    EXPECT_EQ(document.GetResult(), u"");
    EXPECT_EQ(outline(document), each.outline);
  }
}

TEST(MarkupParse, ErrorsAreRecordedWordedAndLeaveTheRestReadable) {
  struct Case {
    const char16_t* text;
    const char16_t* result;
    const char16_t* error;
    const char16_t* outline;
  };
  const Case cases[] = {
      {u"", u"<no_root_element/>", u"no root element", u""},
      {u"just text", u"<no_root_element/>", u"no root element", u""},
      {u"<a/><b/>", u"<root_has_sibling/>", u"root element has sibling", u"a b "},
      {u"<a><b></a>",
       u"<unended_start_tag tagname=\"b\" offset=\"3\" offset2=\"5\"/>"
       u"End tag 'a' at offset 6 does not match start tag  --> Error in line 0\n",
       u"start tag 'b' at offset 3 expecting end tag at offset 5", u"a .b "},
      {u"<a>\n</b></a>",
       u"<lone_end_tag tagname=\"b\" offset=\"4\"/>"
       u"End tag 'b' at offset 4 does not match start tag  --> Error in line 1\n",
       u"lone end tag 'b' at offset 4", u"a "},
      {u"<a>\n<b",
       u"<unterminated_tag_syntax type=\"start_tag\" offset=\"4\"/>"
       u"No start tag for end tag 'b' at offset 4 --> Error in line 1\n"
       u"<unended_start_tag tagname=\"a\" offset=\"0\" offset2=\"5\"/>"
       u"End tag '' at offset 6 does not match start tag  --> Error in line 1\n",
       u"unterminated tag at offset 4\nstart tag 'a' at offset 0 expecting end tag at offset 5",
       u"a "},
      // What was inside unended elements follows them, in order, one level up for each.
      {u"<r><a><x/><b><y><z/></y><c><w/></r>",
       u"<unended_start_tag tagname=\"c\" offset=\"24\" offset2=\"30\"/>"
       u"End tag 'r' at offset 31 does not match start tag  --> Error in line 0\n"
       u"<unended_start_tag tagname=\"b\" offset=\"10\" offset2=\"30\"/>"
       u"End tag 'r' at offset 31 does not match start tag  --> Error in line 0\n"
       u"<unended_start_tag tagname=\"a\" offset=\"3\" offset2=\"30\"/>"
       u"End tag 'r' at offset 31 does not match start tag  --> Error in line 0\n",
       nullptr, u"r .a .x .b .y ..z .c .w "},
      {u"<a>< b><c/></a>", u"<first_tag_syntax offset=\"3\"/>",
       u"tag syntax error at offset 3 expecting tag name / ! or ?", u"a .c "},
      {u"<a><!b><c/></a>", u"<exclamation_tag_syntax offset=\"3\"/>",
       u"tag syntax error at offset 3 expecting markup declaration", u"a .c "},
      {u"<a><!-b><c/></a>", u"<comment_tag_syntax offset=\"3\"/>",
       u"tag syntax error at offset 3 expecting - to begin comment", u"a .c "},
      {u"<a><![CDAT[b]]><c/></a>", u"<cdata_section_syntax offset=\"3\"/>",
       u"tag syntax error at offset 3 expecting 'CDATA'", u"a .c "},
      {u"<!DOCTYPES a><a/>", u"<doctype_tag_syntax offset=\"0\"/>",
       u"tag syntax error at offset 0 expecting 'DOCTYPE' [ or -", u"a "},
      // Names with markup in them stand in plain lines as they are, and hide nothing.
      {u"<a></b<c=\"></d></a>",
       u"<lone_end_tag tagname=\"b&lt;c=&quot;\" offset=\"3\"/>"
       u"End tag 'b<c=\"' at offset 3 does not match start tag  --> Error in line 0\n"
       u"<lone_end_tag tagname=\"d\" offset=\"11\"/>"
       u"End tag 'd' at offset 11 does not match start tag  --> Error in line 0\n",
       u"lone end tag 'b<c=\"' at offset 3\nlone end tag 'd' at offset 11", u"a "},
  };
  for (const Case& each : cases) {
    CMarkup document(each.text);
    EXPECT_EQ(MarkupValidator::check(document), "") << testing::PrintToString(CString(each.text));
    EXPECT_FALSE(document.IsWellFormed());
    EXPECT_EQ(document.GetResult(), each.result);
    if (each.error) {
      EXPECT_EQ(document.GetError(), each.error);
    }
    EXPECT_EQ(outline(document), each.outline);
  }
}

TEST(MarkupParse, UnterminatedTagsAreNamedByWhatWasOpen) {
  const std::pair<const char16_t*, const char16_t*> cases[] = {
      {u"<", u"tag"},
      {u"<!", u"tag"},
      {u"<a b='x>", u"start_tag"},
      {u"</", u"end_tag"},
      {u"<!-", u"comment"},
      {u"<!-->-", u"comment"},
      {u"<!--->", u"comment"},
      {u"<![CDATA", u"cdata_section"},
      {u"<![CDATA[]]", u"cdata_section"},
      {u"<?>", u"processing_instruction"},
      {u"<!DOC", u"document_type"},
      {u"<!DOCTYPE a [>", u"document_type"},
      {u"<!DOCTYPE a \">", u"document_type"},
  };
  for (const auto& [text, type] : cases) {
    CMarkup document(CString(u"<a/>") + CString(text));
    const CString record = CString(u"<unterminated_tag_syntax type=\"") + CString(type) +
                           CString(u"\" offset=\"4\"/>No start tag");
    EXPECT_TRUE(document.GetResult().StartsWith(record)) << testing::PrintToString(CString(text));
    EXPECT_FALSE(document.IsWellFormed());
  }
}

TEST(MarkupParse, FlagsTellWhatWasUnendedAndWhereEndTagsWereAlone) {
  CMarkup document(u"<a><b><c></b></x></a>");
  const auto flagsOf = [&](const char16_t* name) {
    document.ResetPos();
    document.FindElem();
    while (document.GetTagName() != name) {
      if (!document.FindChildElem(name) && !document.FindChildElem()) return -1;
      document.IntoElem();
    }
    return document.GetElemFlags();
  };
  EXPECT_EQ(flagsOf(u"a"), 0x200000);
  EXPECT_EQ(flagsOf(u"b"), 0x200000);
  EXPECT_EQ(flagsOf(u"c"), 0x100000);
  // The caller's bits come and go without touching the others.
  EXPECT_TRUE(document.SetElemFlags(-1));
  EXPECT_EQ(document.GetElemFlags(), 0x0f100000);
  EXPECT_TRUE(document.SetElemFlags(0x01100000));
  EXPECT_EQ(document.GetElemFlags(), 0x01100000);
  document.ResetPos();
  EXPECT_FALSE(document.SetElemFlags(-1));
  EXPECT_EQ(document.GetElemFlags(), 0);
}

TEST(MarkupParse, CaseOfTagNamesCountsUnlessTheDocumentSaysOtherwise) {
  EXPECT_FALSE(CMarkup(u"<A></a>").IsWellFormed());
  CMarkup document(MarkupFlag::ignoreCase);
  EXPECT_TRUE(document.SetDoc(u"<A><Ärger></ÄRGER></a>"));
  EXPECT_FALSE(document.SetDoc(u"<A></ab>"));
}

TEST(MarkupParse, WhatTheFieldsCannotHoldIsRefusedNeverWrapped) {
  const CString name = repeated(1020, u"n");
  const CString blanks = repeated(ElemPos::maxStartTag - 3, u" ");
  struct Case {
    CString text;
    bool wellFormed;
    int elements;
    const char16_t* limit;
  };
  const Case cases[] = {
      {u"<"_cs + name + u"></"_cs + name + u">"_cs, true, 1, u""},
      {u"<r><"_cs + name + u"n></"_cs + name + u"n></r>"_cs, false, 2, u"end_tag"},
      {u"<r><a/><a"_cs + blanks + u"></a></r>"_cs, true, 3, u""},
      // The refused element takes what is in it along, and nothing else.
      {u"<r><a/><a "_cs + blanks + u"><b></b><c/></a><d/></r>"_cs, false, 3, u"start_tag"},
      {repeated(65536, u"<a>") + repeated(65536, u"</a>"), true, 65536, u""},
      {u"<a>"_cs + repeated(65536, u"<a>") + repeated(65536, u"</a>") + u"<b/></a>"_cs, false,
       65537, u"level"},
  };
  for (const Case& each : cases) {
    CMarkup document;
    EXPECT_EQ(document.SetDoc(each.text), each.wellFormed);
    EXPECT_EQ(document.GetDocElemCount(), each.elements);
    EXPECT_EQ(MarkupValidator::check(document), "");
    const CString record = u"<limit_exceeded type=\""_cs + CString(each.limit) + u"\""_cs;
    EXPECT_TRUE(each.wellFormed || document.GetResult().StartsWith(record));
    EXPECT_EQ(document.GetError().IsEmpty(), each.wellFormed);
  }
}

TEST(MarkupParse, RecordsEndAtAThousandUnitsButPlainLinesAndTheSinkGoOn) {
  int problems = 0;
  CMarkup document;
  document.SetProblemSink([&](const MarkupProblem&) { ++problems; });
  document.SetDoc(u"<a>"_cs + repeated(1000, u"</b>\n") + u"</a>"_cs);
  EXPECT_EQ(problems, 1000);
  const CString& result = document.GetResult();
  int lines = 0;
  for (int at = result.Find(u'\n'); at >= 0; at = result.Find(u'\n', at + 1)) ++lines;
  EXPECT_EQ(lines, 1000);
  const int lastRecord = CString(result).MakeReverse().Find(u"gat_dne_enol<");
  EXPECT_LT(result.GetLength() - lastRecord, 1000 + 60);
  EXPECT_GT(result.GetLength() - lastRecord, 900);
}

TEST(MarkupParse, SinkIsToldLinesAndColumnsFromOne) {
  struct Told {
    CString name;
    MarkupProblemKind kind;
    int offset, line, column;
  };
  std::vector<Told> told;
  CMarkup document;
  document.SetProblemSink([&](const MarkupProblem& problem) {
    told.push_back({problem.name, problem.kind, problem.offset, problem.line, problem.column});
  });
  document.SetDoc(u"<a>\n <b>\n\n< x></c>\n</a>\n<d/>");
  ASSERT_EQ(told.size(), 4u);
  const Told expected[] = {{{}, MarkupProblemKind::firstTagSyntax, 10, 4, 1},
                           {u"c", MarkupProblemKind::loneEndTag, 14, 4, 5},
                           {u"b", MarkupProblemKind::unendedStartTag, 5, 2, 2},
                           {{}, MarkupProblemKind::rootHasSibling, 24, 6, 1}};
  for (std::size_t i = 0; i < told.size(); ++i) {
    EXPECT_EQ(told[i].kind, expected[i].kind);
    EXPECT_EQ(told[i].name, expected[i].name);
    EXPECT_EQ(told[i].offset, expected[i].offset);
    EXPECT_EQ(told[i].line, expected[i].line);
    EXPECT_EQ(told[i].column, expected[i].column);
  }
}

int reportedNumber = 0;

TEST(MarkupParse, FailureInsideIsReportedAndKeepsWhatWasBuilt) {
  CMarkup document;
  document.SetProblemSink([](const MarkupProblem&) { throw std::runtime_error("sink"); });
  const ErrorSink before = setErrorSink([](int number) noexcept { reportedNumber = number; });
  EXPECT_FALSE(document.SetDoc(u"<a><b><c/></x><d/></b></a>"));
  setErrorSink(before);
  EXPECT_EQ(reportedNumber, 75068);
  EXPECT_EQ(MarkupValidator::check(document), "");
  EXPECT_EQ(outline(document), u"a b c ");
}

TEST(MarkupParse, ErrorLineCountsThroughTheOffset) {
  const CString text = u"a\nb\n\nc"_cs;
  const int lines[] = {0, 1, 1, 2, 3, 3, 3, 3};
  for (int offset = 0; offset < 8; ++offset) {
    EXPECT_EQ(CMarkup::FindErrorLine(text, offset), lines[offset]) << offset;
  }
  EXPECT_EQ(CMarkup::FindErrorLine(text, -1), 0);
  EXPECT_EQ(CMarkup::FindErrorLine(u"", 0), 0);
}

TEST(MarkupParse, CopiesAreDeepAndTakingOverLeavesAnEmptyDocument) {
  CMarkup source(u"<a><b/></a>");
  source.FindChildElem();
  source.IntoElem();
  source.SavePos(u"here");
  CMarkup copy(source);
  EXPECT_EQ(copy.GetTagName(), source.GetTagName());
  source.SetTagName(u"changed");
  EXPECT_EQ(copy.GetDoc(), u"<a><b/></a>");
  copy.ResetPos();
  EXPECT_TRUE(copy.RestorePos(u"here"));

  CMarkup moved(std::move(copy));
  // NOLINTBEGIN(bugprone-use-after-move,clang-analyzer-cplusplus.Move): what is left is promised
  EXPECT_EQ(outline(moved), u"a .b ");
  EXPECT_TRUE(copy.GetDoc().IsEmpty());
  EXPECT_EQ(copy.GetDocElemCount(), 0);
  EXPECT_FALSE(copy.FindElem());
  EXPECT_EQ(MarkupValidator::check(copy), "");
  // NOLINTEND(bugprone-use-after-move,clang-analyzer-cplusplus.Move)
  EXPECT_EQ(moved.TakeDoc(), u"<a><b/></a>");
  EXPECT_EQ(MarkupValidator::check(moved), "");
  EXPECT_FALSE(moved.RestorePos(u"here"));
}

TEST(MarkupParse, DocumentOpenForAStreamIsNeitherCopiedNorCounted) {
  constexpr int reading = 16;
  constexpr int writing = 32;
  for (const int state : {reading, writing}) {
    CMarkup stream(state);
    stream.SetDoc(u"<a><b/></a>");
    EXPECT_TRUE(stream.IsWellFormed());
    EXPECT_EQ(stream.GetDocElemCount(), 0);
    EXPECT_EQ(stream.GetElemLevel(), 0);
    CMarkup other(u"<x/>");
    other = stream;
    EXPECT_EQ(other.GetDoc(), u"<x/>");
    stream = other;
    EXPECT_EQ(stream.GetDoc(), u"<a><b/></a>");
  }
  CMarkup writer(writing);
  writer.SetDoc(u"<a>");
  EXPECT_TRUE(writer.IsWellFormed());
  CMarkup reader(reading);
  EXPECT_FALSE(reader.SetDoc(u"<a>"));
}

}  // namespace
}  // namespace kpx
