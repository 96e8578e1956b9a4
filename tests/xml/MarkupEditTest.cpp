#include <gtest/gtest.h>

#include <functional>
#include <new>
#include <random>
#include <string>
#include <vector>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/MarkupValidator.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using Edit = std::function<bool(CMarkup&)>;

// Goes to the element with this name at any depth, as the main element.
bool goTo(CMarkup& document, std::u16string_view name) {
  if (document.FindElem(name)) return true;
  for (document.ResetMainPos(); document.FindElem();) {
    document.IntoElem();
    if (goTo(document, name)) return true;
    document.OutOfElem();
  }
  return false;
}

// What a parse makes of the text has to be what the document has: each element in order with its
// level, its place and its state.
std::string outline(CMarkup document) {
  std::string lines;
  document.ResetPos();
  std::vector<int> open;
  bool down = document.FindElem();
  while (down || document.GetElemLevel() > 0 || !document.GetTagName().IsEmpty()) {
    int begin = 0;
    int end = 0;
    document.GetOffsets(begin, end);
    lines += std::to_string(document.GetElemLevel()) + document.GetTagName().utf8() + " " +
             std::to_string(begin) + "-" + std::to_string(end) +
             (document.GetElemFlags() & 0x100000 ? " unended\n" : "\n");
    document.IntoElem();
    down = document.FindElem();
    while (!down) {
      if (!document.OutOfElem() || document.GetTagName().IsEmpty()) return lines;
      down = document.FindElem();
    }
  }
  return lines;
}

std::string problem(const CMarkup& document) {
  std::string wrong = MarkupValidator::check(document);
  if (!wrong.empty()) return wrong;
  CMarkup parsed(document.GetDocFlags());
  parsed.SetDoc(document.GetDoc());
  const std::string expected = outline(parsed);
  const std::string found = outline(document);
  return found == expected ? std::string() : "a parse makes\n" + expected + "not\n" + found;
}

// --- what changes write --------------------------------------------------------------------------

struct Case {
  const char16_t* before;
  const char16_t* at;  // the main element; "" for none
  Edit edit;
  const char16_t* after;
};

void check(const std::vector<Case>& cases) {
  for (const Case& each : cases) {
    CMarkup document(each.before);
    ASSERT_TRUE(*each.at == 0 || goTo(document, each.at));
    EXPECT_TRUE(each.edit(document)) << CString(each.before).utf8();
    EXPECT_EQ(document.GetDoc(), each.after) << CString(each.before).utf8();
    EXPECT_EQ(problem(document), "") << document.GetDoc().utf8();
  }
}

TEST(MarkupEdit, AddedElementsStandOnTheirOwnLines) {
  const auto add = [](CMarkup& d) { return d.AddElem(u"n"); };
  const auto insert = [](CMarkup& d) { return d.InsertElem(u"n"); };
  const auto addChild = [](CMarkup& d) { return d.AddChildElem(u"n", u"a<b"); };
  const auto insertChild = [](CMarkup& d) { return d.InsertChildElem(u"n"); };
  const auto addBehindChild = [](CMarkup& d) { return d.FindChildElem() && d.AddChildElem(u"n"); };
  check({
      {u"", u"", add, u"<n/>\r\n"},
      {u"<?xml version='1.0'?>", u"", add, u"<?xml version='1.0'?>\r\n<n/>\r\n"},
      {u"<?xml version='1.0'?>\n<!-- c -->\n", u"", insert,
       u"<?xml version='1.0'?>\n<!-- c -->\n<n/>\r\n"},
      {u"<a/>", u"a", addChild, u"<a>\r\n<n>a&lt;b</n>\r\n</a>"},
      {u"<a x='1' />", u"a", addChild, u"<a x='1' >\r\n<n>a&lt;b</n>\r\n</a>"},
      {u"<a x=b//>", u"a", insertChild, u"<a x=b/ >\r\n<n/>\r\n</a>"},
      {u"<a></a>", u"a", insertChild, u"<a>\r\n<n/>\r\n</a>"},
      {u"<a>\n  </a>", u"a", addChild, u"<a>\n<n>a&lt;b</n>\r\n  </a>"},
      {u"<a>data</a>", u"a", insertChild, u"<a>data<n/>\r\n</a>"},
      {u"<r><a/><b/></r>", u"a", add, u"<r><a/>\r\n<n/>\r\n<b/></r>"},
      {u"<r>\n  <a/>\t\n  <b/>\n</r>", u"a", add, u"<r>\n  <a/>\t\n<n/>\r\n  <b/>\n</r>"},
      {u"<r>\n  <a/>\n  <b/>\n</r>", u"b", insert, u"<r>\n  <a/>\n<n/>\r\n  <b/>\n</r>"},
      {u"<r><a/> text <b/></r>", u"b", insert, u"<r><a/> text <n/>\r\n<b/></r>"},
      {u"<r>\r\n<a/>\r\n<b/>\r\n</r>", u"r", addBehindChild,
       u"<r>\r\n<a/>\r\n<n/>\r\n<b/>\r\n</r>"},
      {u"<a/>", u"", addChild, u"<a/>\r\n<n>a&lt;b</n>\r\n"},
      {u"<r><a></r>", u"a", addChild, u"<r><a>\r\n<n>a&lt;b</n>\r\n</a></r>"},
      {u"<!-- never ended", u"", add, u"<n/>\r\n<!-- never ended"},
  });
}

TEST(MarkupEdit, SubDocumentsKeepTheirText) {
  check({
      {u"<r/>", u"r",
       [](CMarkup& d) {
         return d.AddChildSubDoc(u"<?xml version='1.0'?><!--lost--><x><y a='1'/>t<z/></x>\n") &&
                d.AddChildSubDoc(d.GetChildSubDoc());
       },
       u"<r>\r\n<x><y a='1'/>t<z/></x>\r\n<x><y a='1'/>t<z/></x>\r\n</r>"},
      {u"<r>\n<a/>\n</r>", u"a",
       [](CMarkup& d) { return d.InsertSubDoc(u"<x>\n<y/></x>") && d.AddSubDoc(u"<z/>"); },
       u"<r>\n<x>\n<y/></x>\r\n<z/>\r\n<a/>\n</r>"},
      {u"<r><a/></r>", u"r",
       [](CMarkup& d) {
         // A part of the document itself.
         return d.InsertChildSubDoc(d.GetDoc().view().substr(3, 4));
       },
       u"<r>\r\n<a/>\r\n<a/></r>"},
  });
}

TEST(MarkupEdit, RemovingTakesTheLineThatWouldStayEmpty) {
  const auto remove = [](CMarkup& d) { return d.RemoveElem(); };
  check({
      {u"<r>\r\n<a/>\r\n<b/>\r\n</r>", u"a", remove, u"<r>\r\n<b/>\r\n</r>"},
      {u"<r>\n  <a><x/></a> \n  <b/>\n</r>", u"a", remove, u"<r>\n  <b/>\n</r>"},
      {u"<r>text <a/>\n</r>", u"a", remove, u"<r>text \n</r>"},
      {u"<r><a/><b/></r>", u"b", remove, u"<r><a/></r>"},
      {u"<r><a></r>", u"a", remove, u"<r></r>"},
      {u"<a/>\n", u"", [](CMarkup& d) { return d.RemoveChildElem(); }, u""},
  });
}

TEST(MarkupEdit, SearchGoesOnBehindARemovedElement) {
  CMarkup document(u"<r><a/><b/><a/><a/><c/></r>");
  document.FindElem();
  std::u16string left;
  while (document.FindChildElem()) {
    if (document.GetChildTagName() == u"a") {
      document.RemoveChildElem();
    } else {
      left += document.GetChildTagName().view();
    }
  }
  EXPECT_EQ(left, u"bc");
  EXPECT_EQ(document.GetDoc(), u"<r><b/><c/></r>");
  EXPECT_EQ(document.GetDocElemCount(), 3);
}

TEST(MarkupEdit, AttributesAreSetInPlace) {
  const auto set = [](CMarkup& d) { return d.SetAttrib(u"x", u"<\"'&>"); };
  const auto shorten = [](CMarkup& d) { return d.SetAttrib(u"x", u""); };
  const auto remove = [](CMarkup& d) { return d.RemoveAttrib(u"x"); };
  check({
      {u"<a/>", u"a", set, u"<a x=\"&lt;&quot;&apos;&amp;&gt;\"/>"},
      {u"<a y='1' ></a>", u"a", shorten, u"<a y='1' x=\"\" ></a>"},
      {u"<a x='1' y='2'>t</a>", u"a", set, u"<a x='&lt;&quot;&apos;&amp;&gt;' y='2'>t</a>"},
      {u"<a x y='2'/>", u"a", shorten, u"<a x=\"\" y='2'/>"},
      {u"<a y='2' x = />", u"a", shorten, u"<a y='2' x =\"\" />"},
      {u"<a x=1/>", u"a", shorten, u"<a x=\"\"/>"},
      {u"<a y=1/>", u"a", shorten, u"<a y=1 x=\"\"/>"},
      {u"<a y=>t</a>", u"a", shorten, u"<a x=\"\" y=>t</a>"},
      {u"<a y=\"x\" xx='1'/>", u"a", shorten, u"<a y=\"x\" xx='1' x=\"\"/>"},
      {u"<a x='1' y='2'/>", u"a", remove, u"<a y='2'/>"},
      {u"<a y='2'\n x='1'/>", u"a", remove, u"<a y='2'/>"},
      {u"<a x='1'y='2'/>", u"a", remove, u"<a y='2'/>"},
      {u"<a y=b/ x='1'></a>", u"a", remove, u"<a y=b/ ></a>"},
      {u"<a/x='1'>t</a>", u"a", remove, u"<a>t</a>"},
      {u"<r><a/>text</r>", u"a",
       [](CMarkup& d) {
         // So does this one, behind the place of the change.
         const auto part = [&](int from) { return d.GetDoc().view().substr(from, 4); };
         return d.SetAttrib(part(7), part(7)) && d.SetTagName(part(6));
       },
       u"<r><text text=\"text\"/>text</r>"},
      {u"<r><b/><a><c/></a><d/></r>", u"a", set,
       u"<r><b/><a x=\"&lt;&quot;&apos;&amp;&gt;\"><c/></a><d/></r>"},
      {u"<a/>", u"a",
       [](CMarkup& d) {
         // The text that is set lies in the document itself.
         return d.SetAttrib(u"long", d.GetDoc().view()) && d.SetAttrib(u"a", -2147483647 - 1) &&
                d.SetAttrib(d.GetDoc().view().substr(3, 4), d.GetDoc().view().substr(3, 4));
       },
       u"<a long=\"long\" a=\"-2147483648\"/>"},
  });
}

TEST(MarkupEdit, ManyAttributesAreWrittenOnce) {
  CMarkup document;
  document.AddElem(u"a");
  std::u16string expected = u"<a";
  for (int round = 0; round < 2; ++round) {
    for (char16_t first = u'a'; first <= u'z'; ++first) {
      for (const std::u16string_view rest : {u"", u"b", u"bcdefgh", u"bXdefgh"}) {
        const std::u16string name = first + std::u16string(rest);
        ASSERT_TRUE(document.SetAttrib(CString(name), u"1"));
        if (round == 0) expected += u" " + name + u"=\"1\"";
      }
    }
  }
  EXPECT_EQ(document.GetDoc(), CString(expected + u"/>\r\n"));
  EXPECT_EQ(problem(document), "");
}

TEST(MarkupEdit, AttributesOfAnotherDocumentAreNotTakenForKnown) {
  CMarkup reparsed;
  reparsed.AddElem(u"a");
  reparsed.SetAttrib(u"x", 1);
  CMarkup assigned;
  assigned.AddElem(u"a");
  assigned.SetAttrib(u"x", 1);
  reparsed.SetDoc(u"<a y='1'/>");
  reparsed.FindElem();
  assigned = reparsed;
  for (CMarkup* document : {&reparsed, &assigned}) {
    EXPECT_TRUE(document->SetAttrib(u"y", 2));
    EXPECT_EQ(document->GetDoc(), u"<a y='2'/>");
  }
}

TEST(MarkupEdit, NamesAndDataAreReplaced) {
  check({
      {u"<r><a x='1'/></r>", u"a", [](CMarkup& d) { return d.SetTagName(u"long"); },
       u"<r><long x='1'/></r>"},
      {u"<long >t<b/></long >", u"long", [](CMarkup& d) { return d.SetTagName(u"a"); },
       u"<a >t<b/></a >"},
      {u"<r><a/></r>", u"r",
       [](CMarkup& d) { return d.FindChildElem() && d.SetChildTagName(u"r"); }, u"<r><r/></r>"},
      {u"<r><a/><b/></r>", u"a", [](CMarkup& d) { return d.SetData(u"1 & \"2\""); },
       u"<r><a>1 &amp; \"2\"</a><b/></r>"},
      {u"<a>old<!--c--></a>", u"a",
       [](CMarkup& d) { return d.SetData(u"&auml; &", MarkupFlag::withReferences); },
       u"<a>&auml; &amp;</a>"},
      {u"<a/>", u"a", [](CMarkup& d) { return d.SetData(u"<]]>", MarkupFlag::withCData); },
       u"<a><![CDATA[<]]]]><![CDATA[>]]></a>"},
      {u"<a>old</a>", u"a", [](CMarkup& d) { return d.SetData(u""); }, u"<a></a>"},
      {u"<a/>", u"a", [](CMarkup& d) { return d.SetData(u""); }, u"<a/>"},
      {u"<r><a>text</r>", u"a", [](CMarkup& d) { return d.SetData(-7); }, u"<r><a>-7</a>text</r>"},
      {u"<a>x</b>y</a>", u"a",
       [](CMarkup& d) { return d.GetElemFlags() != 0 && d.SetData(u"z") && d.GetElemFlags() == 0; },
       u"<a>z</a>"},
  });
}

TEST(MarkupEdit, NodesAreAddedWhereTheyAre) {
  check({
      {u"", u"",
       [](CMarkup& d) {
         return d.AddNode(MarkupNode::processingInstruction, u"xml version=\"1.0\"") &&
                d.AddNode(MarkupNode::documentType, u"<!DOCTYPE a [<!ENTITY e '>'>]>") &&
                d.AddNode(MarkupNode::element, u"a") && d.IntoElem() &&
                d.AddNode(MarkupNode::cdataSection, u"<&") &&
                d.InsertNode(MarkupNode::comment, u"-c") && d.AddNode(MarkupNode::text, u"t & ");
       },
       u"<?xml version=\"1.0\"?><!DOCTYPE a [<!ENTITY e '>'>]>\r\n"
       u"<a><!---c-->t &amp; <![CDATA[<&]]></a>\r\n"},
      {u"<?xml version='1.0'?><r/>", u"",
       [](CMarkup& d) { return d.InsertNode(MarkupNode::comment, u"c"); },
       u"<?xml version='1.0'?><!--c--><r/>"},
      {u"<r>one<a/>three</r>", u"a",
       [](CMarkup& d) {
         return d.AddNode(MarkupNode::text, u"two ") && d.GetData() == u"two three" &&
                d.SetData(u" ") && d.GetNodeType() == MarkupNode::whitespace &&
                d.SetData(u"2", MarkupFlag::withCData) && d.GetNodeType() == 8;
       },
       u"<r>one<a/><![CDATA[2]]></r>"},
      {u"<r>1<!--c-->2<a/></r>", u"",
       [](CMarkup& d) {
         // What stood beside the removed node becomes one text, and the current node.
         return d.FindElem() && d.IntoElem() && d.FindNode(MarkupNode::comment) != 0 &&
                d.RemoveNode() && d.GetData() == u"12" && d.FindNode() == MarkupNode::element;
       },
       u"<r>12<a/></r>"},
  });
}

// --- refusals ------------------------------------------------------------------------------------

TEST(MarkupEdit, RefusedChangesLeaveTheDocumentAsItWas) {
  const CString longName(u'n', ElemPos::maxEndTag - 2);
  const CString longValue(u'v', ElemPos::maxStartTag);
  const struct {
    const char16_t* markup;
    const char16_t* at;
    Edit edit;
  } cases[] = {
      {u"<r><a/></r>", u"", [](CMarkup& d) { return d.AddElem(u"") || d.SetTagName(u"x"); }},
      {u"<r><a/></r>", u"",
       [](CMarkup& d) {
         return d.SetData(u"x") || d.SetAttrib(u"x", u"") || d.RemoveElem() || d.RemoveNode() ||
                d.RemoveAttrib(u"x") || d.SetElemFlags(0);
       }},
      {u"<r><a/></r>", u"a",
       [](CMarkup& d) {
         bool any = false;
         for (const char16_t* name : {u"", u"1", u"-a", u"a b", u"a=", u"a>", u"a/", u"a\"", u"a'",
                                      u"a\n", u"<a", u"a[1]", u"a&b", u"\x01", u"@"}) {
           any |= d.SetTagName(name) || d.AddElem(name) || d.AddChildElem(name) ||
                  d.SetAttrib(name, u"1") || d.AddNode(MarkupNode::element, name);
         }
         return any || d.AddElem(std::u16string_view(u"a\0b", 3));
       }},
      {u"<r><a/></r>", u"a",
       [](CMarkup& d) {
         bool any = false;
         for (const char16_t* markup :
              {u"", u"text", u"<a>", u"<a/><b/>", u"</a>", u"<a></b></a>", u"<!--c-->", u"<a/><"}) {
           any |= d.AddSubDoc(markup) || d.InsertChildSubDoc(markup);
         }
         return any;
       }},
      {u"<r>t<a/></r>", u"r",
       [](CMarkup& d) { return d.SetData(u"x") || d.SetAttrib(u"", u"") || d.SetData(u""); }},
      {u"<r>t<a/></r>", u"a",
       [](CMarkup& d) {
         const struct {
           int type;
           const char16_t* text;
         } nodes[] = {{2, u""},    {2, u" "},     {4, u"x"},          {4, u""},
                      {8, u"]]>"}, {16, u"a?>b"}, {32, u"-->"},       {32, u"a-->b"},
                      {64, u"x"},  {64, u"<!D>"}, {64, u"<!DOCTYPE"}, {64, u"<!DOCTYPE a><b/>"},
                      {128, u"a"}, {0, u"a"},     {3, u"a"},          {-1, u"a"}};
         bool any = false;
         for (const auto& node : nodes) {
           any |= d.AddNode(node.type, node.text) || d.InsertNode(node.type, node.text);
         }
         return any;
       }},
      {u"<r><!--c--></r>", u"",
       [](CMarkup& d) {
         return !d.FindElem() || !d.IntoElem() || !d.FindNode() || d.SetData(u"-->") ||
                d.IntoElem() || d.SetAttrib(u"a", u"");
       }},
      // An end tag that had no start tag would find one; a start tag without an end would get one.
      {u"<r></b></r>", u"r", [](CMarkup& d) { return d.SetTagName(u"b"); }},
      {u"<r><u></r>", u"u", [](CMarkup& d) { return d.SetTagName(u"r"); }},
      {u"<a b=\"=c\">t</a>", u"a", [](CMarkup& d) { return d.SetTagName(u"a="); }},
      // What a record cannot hold.
      {u"<r><a/></r>", u"a", [&](CMarkup& d) { return d.AddElem(longName, u"data"); }},
      {u"<r><a>t</a></r>", u"a", [&](CMarkup& d) { return d.SetTagName(longName); }},
      {u"<r><a/></r>", u"a", [&](CMarkup& d) { return d.SetAttrib(u"x", longValue); }},
      {u"<r><a/></r>", u"a",
       [&](CMarkup& d) { return d.AddElem(longValue) || d.SetTagName(longValue); }},
  };
  for (const auto& each : cases) {
    CMarkup document(each.markup);
    ASSERT_TRUE(*each.at == 0 || goTo(document, each.at));
    EXPECT_FALSE(each.edit(document)) << CString(each.markup).utf8();
    EXPECT_EQ(document.GetDoc(), each.markup);
    EXPECT_EQ(MarkupValidator::check(document), "");
  }
}

TEST(MarkupEdit, LongestNamesAndDeepestLevelsCanBeUsed) {
  CMarkup document;
  const CString name(u'n', ElemPos::maxEndTag - 3);
  ASSERT_TRUE(document.AddElem(name, u"data"));
  const CString tooLong(u'n', ElemPos::maxEndTag - 2);
  ASSERT_TRUE(document.AddElem(tooLong));     // without an end tag it fits
  EXPECT_FALSE(document.AddChildElem(u"c"));  // but not when it would get one
  EXPECT_FALSE(document.SetData(u"data"));
  EXPECT_EQ(MarkupValidator::check(document), "");

  std::u16string deep;
  for (int level = 0; level < ElemPos::maxLevel; ++level) deep += u"<a>";
  for (int level = 0; level < ElemPos::maxLevel; ++level) deep += u"</a>";
  ASSERT_TRUE(document.SetDoc(CString(deep)));
  ASSERT_TRUE(document.FindElem());
  while (document.FindChildElem()) document.IntoElem();
  EXPECT_FALSE(document.AddChildSubDoc(u"<b><c/></b>"));
  EXPECT_TRUE(document.AddChildSubDoc(u"<b/>"));
  document.IntoElem();
  EXPECT_EQ(document.GetElemLevel(), ElemPos::maxLevel);
  EXPECT_FALSE(document.AddChildElem(u"c"));
  EXPECT_EQ(MarkupValidator::check(document), "");
}

TEST(MarkupEdit, RunningOutOfMemoryChangesNothing) {
  const CString value(u"a value that is too long for the text itself <");
  const Edit edits[] = {
      [](CMarkup& d) { return d.AddElem(u"aVeryLongNameOfAnElement", u"data <"); },
      [](CMarkup& d) {
        return d.AddChildSubDoc(u"<x><y/><y/><y/><y/><y/><y/><y/><y/><y/><z><y>t</y></z></x>");
      },
      [&](CMarkup& d) { return d.SetAttrib(u"aVeryLongNameOfAnAttribute", value); },
      [&](CMarkup& d) { return d.SetData(value); },
      [](CMarkup& d) { return d.SetTagName(u"aVeryLongNameOfAnElement"); },
      [&](CMarkup& d) { return d.AddNode(MarkupNode::comment, value); },
      [&](CMarkup& d) { return d.SavePos(value); },
  };
  for (const Edit& edit : edits) {
    int failures = 0;
    for (bool done = false; !done; ++failures) {
      CMarkup document(u"<r><a/></r>");
      document.FindElem();
      document.FindChildElem();
      document.IntoElem();
      const CString before = document.GetDoc();
      try {
        const FailingAllocations failing(failures);
        done = edit(document);
      } catch (const std::bad_alloc&) {
        done = false;
      }
      EXPECT_EQ(MarkupValidator::check(document), "");
      EXPECT_EQ(document.GetTagName().IsEmpty(), document.GetNodeType() != 1);
      EXPECT_TRUE(done || document.GetDoc() == before);
      ASSERT_LT(failures, 100);
    }
    EXPECT_GT(failures, 1);
  }
}

// --- saved positions -----------------------------------------------------------------------------

TEST(MarkupEdit, SavedPositionsMoveWithTheText) {
  CMarkup document(u"<r><a/>text<!--c--><b><c/></b>end</r>");
  document.FindElem();
  document.IntoElem();
  document.FindNode(MarkupNode::comment);
  document.SavePos(u"comment");
  document.FindElem();
  document.FindChildElem();
  document.SavePos(u"c");
  document.FindNode(MarkupNode::text);
  document.SavePos(u"end");
  ASSERT_TRUE(goTo(document, u"r") || (document.ResetPos(), document.FindElem()));
  document.SetAttrib(u"x", u"moves all of them");
  document.FindChildElem(u"a");
  document.SetChildAttrib(u"y", u"too");
  document.AddChildElem(u"n");  // before the comment
  EXPECT_EQ(MarkupValidator::check(document), "");
  ASSERT_TRUE(document.RestorePos(u"comment"));
  EXPECT_EQ(document.GetData(), u"c");
  EXPECT_TRUE(document.FindPrevElem());
  EXPECT_EQ(document.GetTagName(), u"n");
  ASSERT_TRUE(document.RestorePos(u"end"));
  EXPECT_EQ(document.GetData(), u"end");
  document.FindPrevElem(u"b");
  document.RemoveElem();
  EXPECT_FALSE(document.RestorePos(u"c"));  // it was in the removed element
  ASSERT_TRUE(document.RestorePos(u"end"));
  EXPECT_EQ(document.GetData(), u"end");
  EXPECT_EQ(MarkupValidator::check(document), "");
}

// --- random changes ------------------------------------------------------------------------------

class RandomEditor {
 public:
  RandomEditor(unsigned seed, const char16_t* markup) : random_(seed), document_(markup) {}

  void run(int steps) {
    for (int step = 0; step < steps; ++step) {
      const CString before = document_.GetDoc();
      const int kind = pick(24);
      const bool done = act(kind);
      const bool isChange = kind >= 10;
      ASSERT_TRUE((isChange && done) || document_.GetDoc() == before) << "action " << kind;
      ASSERT_EQ(problem(document_), "") << "action " << kind << " made of " << before.utf8() << "\n"
                                        << document_.GetDoc().utf8();
    }
  }

 private:
  int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
  std::u16string_view name() {
    constexpr std::u16string_view names[] = {u"a", u"b", u"c", u"longer-name", u"\u00e4"};
    return names[pick(5)];
  }
  std::u16string_view data() {
    constexpr std::u16string_view texts[] = {u"", u"x", u"a < b & \"c\"", u" \r\n", u"]]>"};
    return texts[pick(5)];
  }
  std::u16string_view savedName() { return pick(2) != 0 ? u"1" : u"2"; }

  bool act(int kind) {
    constexpr int flags[] = {0, 0, MarkupFlag::withReferences, MarkupFlag::withCData};
    CMarkup& d = document_;
    switch (kind) {
      case 0:
        return d.FindElem();
      case 1:
        return d.FindPrevElem();
      case 2:
        return d.FindChildElem();
      case 3:
        return d.IntoElem();
      case 4:
        return d.OutOfElem();
      case 5:
      case 6:
        return d.FindNode() != 0;
      case 7:
        return d.SavePos(savedName());
      case 8:
        return d.RestorePos(savedName());
      case 9:
        d.ResetPos();
        return true;
      case 10:
        return d.AddElem(name(), data(), flags[pick(4)]);
      case 11:
        return d.InsertElem(name(), data());
      case 12:
        return d.AddChildElem(name());
      case 13:
        return d.InsertChildElem(name(), data());
      case 14:
        return d.AddSubDoc(u"<a x='1'>\n<b/>t<c><a>u</a></c></a>");
      case 15:
        return d.InsertChildSubDoc(u"<b><b/></b>");
      case 16:
        return pick(3) == 0 && d.RemoveElem();
      case 17:
        return pick(3) == 0 && d.RemoveChildElem();
      case 18:
        return d.SetTagName(name());
      case 19:
        return d.SetData(data(), flags[pick(4)]);
      case 20:
        return d.SetAttrib(name(), data());
      case 21:
        return d.SetChildAttrib(name(), data());
      case 22:
        return d.RemoveAttrib(name());
      default:
        return pick(3) == 0 ? d.RemoveNode()
                            : (pick(2) != 0 ? d.AddNode(1 << pick(8), data())
                                            : d.InsertNode(1 << pick(8), data()));
    }
  }

  std::mt19937 random_;
  CMarkup document_;
};

TEST(MarkupEdit, RandomChangesKeepRecordsAndTextTogether) {
  constexpr const char16_t* documents[] = {
      u"",
      u"<?xml version=\"1.0\"?>\r\n<r>\r\n<a x=\"1\">data</a>\r\n<b/>\r\n</r>\r\n",
      u"<r>one <a>two</a> three <!--c--> four <b y='1'/><![CDATA[z]]></r>",
      u"<a/><b/>text<c/>",
      u"<r><a>text<b></r>",
      u"<r></b><a></c></a><b></r></a>",
      u"<r><a x=1 y=http://h/ z><b/></a><longer-name / ></r> <!-- never ended",
      u"<a><a><b></a><b></a>< junk><c></a></b></c>",
  };
  unsigned seed = 1;
  for (const char16_t* markup : documents) {
    for (int round = 0; round < 12; ++round) {
      RandomEditor editor(seed++, markup);
      editor.run(120);
      if (HasFatalFailure()) {
        ADD_FAILURE() << "seed " << seed - 1;
        return;
      }
    }
  }
}

}  // namespace
}  // namespace kpx
