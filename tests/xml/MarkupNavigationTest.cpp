#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/MarkupValidator.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

CString text(std::u16string_view units) { return CString(units); }

// --- positions -----------------------------------------------------------------------------------

TEST(MarkupNavigation, WalksSiblingsAndChildrenBothWays) {
  CMarkup document(u"<r><a/><b><x/><y/><x/></b><a/></r>");
  ASSERT_TRUE(document.FindElem(u"r"));
  EXPECT_FALSE(document.FindElem());
  EXPECT_EQ(document.GetTagName(), u"r");  // stays where it was
  ASSERT_TRUE(document.IntoElem());
  EXPECT_TRUE(document.FindElem(u"a"));
  EXPECT_FALSE(document.FindElem(u"c"));
  EXPECT_TRUE(document.FindElem(u"a"));
  EXPECT_TRUE(document.FindPrevElem());
  EXPECT_EQ(document.GetTagName(), u"b");
  EXPECT_TRUE(document.FindChildElem(u"x"));
  EXPECT_TRUE(document.FindChildElem(u"x"));
  EXPECT_FALSE(document.FindChildElem());
  EXPECT_TRUE(document.FindPrevChildElem());
  EXPECT_EQ(document.GetChildTagName(), u"y");
  document.ResetChildPos();
  EXPECT_EQ(document.GetChildTagName(), u"");
  EXPECT_TRUE(document.FindPrevChildElem());
  EXPECT_EQ(document.GetChildTagName(), u"x");
  document.ResetMainPos();
  EXPECT_EQ(document.GetTagName(), u"");
  EXPECT_TRUE(document.FindPrevElem(u"a"));
  EXPECT_FALSE(document.FindElem());
}

TEST(MarkupNavigation, ChildSearchWithoutMainElementUsesTheFirstOne) {
  CMarkup document(u"<r><a><x/></a><b/></r>");
  document.FindElem();
  document.IntoElem();
  EXPECT_FALSE(document.FindChildElem(u"missing"));
  EXPECT_EQ(document.GetTagName(), u"");
  ASSERT_TRUE(document.FindChildElem());
  EXPECT_EQ(document.GetTagName(), u"a");
  EXPECT_EQ(document.GetChildTagName(), u"x");
}

TEST(MarkupNavigation, RootIsTheChildOfADocumentWithoutPosition) {
  CMarkup document(u"<r a='1'>data<x/></r>");
  EXPECT_EQ(document.GetChildTagName(), u"r");
  EXPECT_EQ(document.GetChildAttrib(u"a"), u"1");
  EXPECT_EQ(document.GetChildData(), u"data");
  EXPECT_EQ(document.GetTagName(), u"");
  ASSERT_TRUE(document.IntoElem());
  EXPECT_EQ(document.GetTagName(), u"r");
  ASSERT_TRUE(document.OutOfElem());
  EXPECT_FALSE(document.OutOfElem());
  EXPECT_EQ(document.GetChildTagName(), u"r");
  EXPECT_FALSE(document.FindChildElem());
}

TEST(MarkupNavigation, EmptyDocumentAnswersNothing) {
  CMarkup document;
  CString name;
  int begin = 0;
  EXPECT_FALSE(document.FindElem() || document.FindPrevElem() || document.FindChildElem() ||
               document.IntoElem() || document.OutOfElem() || document.RestorePos() ||
               document.GetNthAttrib(0, name, name) || document.GetOffsets(begin, begin) ||
               document.GetChildOffsets(begin, begin) || document.FindNode() != 0);
  EXPECT_EQ(document.GetChildTagName(), u"");
  EXPECT_EQ(document.GetData(), u"");
}

TEST(MarkupNavigation, NamesMatchWholeAndWithTheCaseRuleOfTheDocument) {
  constexpr auto markup = u"<r><ab/><a\tx='1'/><a/></r>";
  CMarkup exact(markup);
  exact.FindElem();
  EXPECT_TRUE(exact.FindChildElem(u"a"));
  EXPECT_EQ(exact.GetChildAttrib(u"x"), u"1");
  EXPECT_FALSE(exact.FindChildElem(u"A"));
  CMarkup folded(MarkupFlag::ignoreCase);
  folded.SetDoc(u"<r><\u00c4b/><A/></r>");
  folded.FindElem();
  EXPECT_TRUE(folded.FindChildElem(u"\u00e4B"));
  EXPECT_TRUE(folded.FindChildElem(u"a"));
}

TEST(MarkupNavigation, SavedPositionsComeBackAndEndWithTheDocument) {
  CMarkup document(u"<r><a><x/></a><b/>text</r>");
  document.FindElem();
  document.FindChildElem();
  document.SavePos(u"child");
  document.IntoElem();
  document.FindElem(u"b");
  EXPECT_EQ(document.FindNode(MarkupNode::text), MarkupNode::text);
  document.SavePos();
  document.ResetPos();
  ASSERT_TRUE(document.RestorePos(u"child"));
  EXPECT_EQ(document.GetTagName() + document.GetChildTagName(), u"ra");
  ASSERT_TRUE(document.RestorePos());
  EXPECT_EQ(document.GetData(), u"text");
  EXPECT_EQ(MarkupValidator::check(document), "");

  const CMarkup copy(document);
  EXPECT_EQ(copy.GetData(), u"text");
  CMarkup walked(copy);
  EXPECT_TRUE(walked.FindPrevElem());
  EXPECT_EQ(walked.GetTagName(), u"b");
  document.SetDoc(u"<r/>");
  EXPECT_FALSE(document.RestorePos());
}

// --- objects that write and read themselves ------------------------------------------------------

TEST(MarkupObjects, AnObjectCanBeAddedAsAChildAndSteppedInto) {
  CMarkup document;
  document.AddElem(u"Root");
  for (int i = 0; i < 2; ++i) {
    document.AddChildElem(u"Point");
    document.SetChildAttrib(u"OID", i);
    document.IntoElem();
    document.AddChildElem(u"Note", u"a");
    document.AddChildElem(u"Note", u"b");
    document.OutOfElem();
    document.SetChildAttrib(u"Last", i);
  }
  EXPECT_EQ(document.GetDoc(),
            u"<Root>\r\n"
            u"<Point OID=\"0\" Last=\"0\">\r\n<Note>a</Note>\r\n<Note>b</Note>\r\n</Point>\r\n"
            u"<Point OID=\"1\" Last=\"1\">\r\n<Note>a</Note>\r\n<Note>b</Note>\r\n</Point>\r\n"
            u"</Root>\r\n");
  EXPECT_EQ(MarkupValidator::check(document), "");
}

// --- reading -------------------------------------------------------------------------------------

TEST(MarkupReading, AttributesOfOddTags) {
  const struct {
    const char16_t* tag;
    const char* attributes;
  } cases[] = {
      {u"<a/>", ""},
      {u"<a x=\"1\" y='2'/>", "x=1;y=2;"},
      {u"<a x = \"1\"\r\n\ty\n=\n'2' >", "x=1;y=2;"},
      {u"<a x=\"a>b/>\" y=\"it's\">", "x=a>b/>;y=it's;"},
      {u"<a x=\"1\"y=\"2\">", "x=1;y=2;"},
      {u"<a x=1 y=2/>", "x=1;y=2;"},
      {u"<a x=http://h/p/ y=2>", "x=http://h/p/;y=2;"},
      {u"<a checked x=\"1\" off/>", "checked=;x=1;off=;"},
      {u"<a x= y=\"1\">", "x=y=\"1\";"},
      {u"<a x=/>", "x=;"},
      {u"<a =\"lost\" x=\"1\">", "x=1;"},
      {u"<a/x=\"1\"/>", "x=1;"},
      {u"<a x=b=\"c > d\" y=2>", "x=b=\"c > d\";y=2;"},
      {u"<a x=\"&lt;&#228;&amp;lt;&nbsp;\">", "x=<\xc3\xa4&lt;&nbsp;;"},
      {u"<a x=\"1\" x=\"2\">", "x=1;x=2;"},
  };
  for (const auto& each : cases) {
    std::string found;
    for (AttributeReader attribute{std::u16string_view(each.tag)}; attribute.next();) {
      found += CString(attribute.name()).utf8() + "=" + attribute.value().utf8() + ";";
    }
    EXPECT_EQ(found, each.attributes) << text(each.tag).utf8();
  }
}

TEST(MarkupReading, AttributesAreFoundInAnyOrder) {
  const CMarkup document(u"<r a='1' b='2' c='3' b='4'/>");
  AttributeReader attributes = document.ReadChildAttribs();
  std::string found;
  CString value;
  for (const char16_t* name : {u"a", u"b", u"c", u"missing", u"a", u"c", u"B", u"", u"b"}) {
    found += attributes.read(name, value) ? value.utf8() : "-";
  }
  EXPECT_EQ(found, "123-13--2");  // the first b, wherever the reader stands
  EXPECT_EQ(document.GetChildAttrib(u"b"), u"2");
  EXPECT_FALSE(document.HasChildAttrib(u"missing"));
  CString name;
  ASSERT_TRUE(document.GetNthChildAttrib(2, name, value));
  EXPECT_EQ(name + value, u"c3");
  EXPECT_FALSE(document.GetNthChildAttrib(4, name, value));
  EXPECT_FALSE(document.GetNthChildAttrib(-1, name, value));
}

TEST(MarkupReading, DataGoesUpToTheFirstChild) {
  const struct {
    const char16_t* markup;
    const char16_t* data;
  } cases[] = {
      {u"<a/>", u""},
      {u"<a></a>", u""},
      {u"<a>x &lt; y</a>", u"x < y"},
      {u"<a>x<!-- & -->y<?p z?>z</a>", u"xyz"},
      {u"<a>1<![CDATA[<&amp;]]>2<b/>3</a>", u"1<&amp;2"},
      {u"<a> \r\n<b/></a>", u" \r\n"},
      {u"<a>x</b>y</a>", u"xy"},
      {u"<a>x", u""},
  };
  for (const auto& each : cases) {
    CMarkup document(each.markup);
    EXPECT_EQ(document.GetChildData(), each.data) << text(each.markup).utf8();
    document.FindElem();
    EXPECT_EQ(document.GetData(), each.data) << text(each.markup).utf8();
  }
}

TEST(MarkupReading, OffsetsCutTheTextOut) {
  constexpr auto markup = u"<r>\n <a x=' 1 ' y>data</a></r>";
  CMarkup document(markup);
  document.FindElem();
  document.FindChildElem();
  const auto cut = [&](int begin, int end) { return document.GetDoc().Mid(begin, end - begin); };
  int begin = 0;
  int end = 0;
  ASSERT_TRUE(document.GetChildOffsets(begin, end));
  EXPECT_EQ(cut(begin, end), document.GetChildSubDoc());
  EXPECT_EQ(document.GetChildSubDoc(), u"<a x=' 1 ' y>data</a>");
  ASSERT_TRUE(document.GetChildAttribOffsets(u"x", begin, end));
  EXPECT_EQ(cut(begin, end), u" 1 ");
  ASSERT_TRUE(document.GetChildAttribOffsets(u"y", begin, end));
  EXPECT_EQ(cut(0, begin), u"<r>\n <a x=' 1 ' y");
  EXPECT_EQ(begin, end);
  EXPECT_FALSE(document.GetAttribOffsets(u"x", begin, end));
  EXPECT_EQ(document.GetElemContent(), u"\n <a x=' 1 ' y>data</a>");
}

// --- nodes ---------------------------------------------------------------------------------------

std::string nodesOf(CMarkup& document) {
  std::string found;
  while (const int kind = document.FindNode()) {
    found += std::to_string(kind) + "[" + document.GetData().utf8() + "]";
    EXPECT_EQ(MarkupValidator::check(document), "");
  }
  return found;
}

TEST(MarkupNodes, EveryKindIsFoundInItsPlace) {
  CMarkup document(
      u"<?xml version=\"1.0\"?>\n<!DOCTYPE r [<!ENTITY e '>'>]>"
      u"<r> <!--c--><a>in</a>x &amp; y<![CDATA[<z>]]></b><?p i?></r><!---->");
  EXPECT_EQ(nodesOf(document),
            "16[xml version=\"1.0\"]4[\n]64[<!DOCTYPE r [<!ENTITY e '>'>]>]"
            "1[ ]32[]");
  document.ResetPos();
  EXPECT_EQ(document.FindNode(MarkupNode::element), MarkupNode::element);
  document.IntoElem();
  EXPECT_EQ(nodesOf(document), "4[ ]32[c]1[in]2[x & y]8[<z>]128[b]16[p i]");
  document.ResetMainPos();
  EXPECT_EQ(document.FindNode(MarkupNode::comment | MarkupNode::cdataSection), 32);
  EXPECT_EQ(document.FindNode(MarkupNode::comment | MarkupNode::cdataSection), 8);
  EXPECT_EQ(document.FindNode(MarkupNode::comment | MarkupNode::cdataSection), 0);
  EXPECT_EQ(document.GetNodeType(), 8);  // stays where it was
  EXPECT_TRUE(document.FindPrevElem());
  EXPECT_EQ(document.GetTagName(), u"a");
}

TEST(MarkupNodes, NodesOfALevelMakeUpItsWholeText) {
  for (const char16_t* markup :
       {u"a<r>b</r>c<!--d-->e", u" <a><b></a> </c> <![CDATA[x]]>", u"<a/>< junk><b/><!x><?p?>",
        u"<a/> <!-- never ended", u"x<a><b></a></b>y<c", u"<r><a></r></a>"}) {
    CMarkup document(markup);
    CString whole;
    int last = 0;
    int begin = 0;
    int end = 0;
    while (document.FindNode() != 0) {
      ASSERT_TRUE(document.GetOffsets(begin, end));
      EXPECT_GE(begin, last);
      // What is no markup at all makes no node.
      const CString between = document.GetDoc().Mid(last, begin - last);
      EXPECT_TRUE(between.IsEmpty() || between[0] == u'<') << between.utf8();
      EXPECT_EQ(document.GetSubDoc(), document.GetDoc().Mid(begin, end - begin));
      last = end;
    }
    const CString rest = document.GetDoc().Mid(last);
    EXPECT_TRUE(rest.IsEmpty() || rest[0] == u'<') << rest.utf8();
  }
}

}  // namespace
}  // namespace kpx
