#include <gtest/gtest.h>

#include <functional>
#include <random>
#include <string>
#include <vector>

#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/MarkupCheck.h"
#include "kpx/xml/MarkupValidator.h"
#include "kpx/xml/Operations.h"
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
       u"<?xml version='1.0'?>\n<!-- c -->\n<n/>\n"},
      {u"<a/>", u"a", addChild, u"<a>\r\n<n>a&lt;b</n>\r\n</a>"},
      {u"<a x='1' />", u"a", addChild, u"<a x='1' >\r\n<n>a&lt;b</n>\r\n</a>"},
      {u"<a x=b//>", u"a", insertChild, u"<a x=b/ >\r\n<n/>\r\n</a>"},
      {u"<a></a>", u"a", insertChild, u"<a>\r\n<n/>\r\n</a>"},
      {u"<a>\n  </a>", u"a", addChild, u"<a>\n<n>a&lt;b</n>\n  </a>"},
      {u"<r><a/><b/></r>", u"a", add, u"<r><a/>\r\n<n/>\r\n<b/></r>"},
      {u"<r>\n  <a/>\t\n  <b/>\n</r>", u"a", add, u"<r>\n  <a/>\t\n<n/>\n  <b/>\n</r>"},
      {u"<r>\n  <a/>\n  <b/>\n</r>", u"b", insert, u"<r>\n  <a/>\n<n/>\n  <b/>\n</r>"},
      {u"<r>\r<a/></r>\n", u"a", add, u"<r>\r<a/>\r<n/>\r</r>\n"},
      {u"<r><a/><!--c--> </r>", u"r", addChild, u"<r><a/><!--c--> <n>a&lt;b</n>\r\n</r>"},
      {u"<r>\n<a/>\n<!--c-->\n</r>", u"r", addChild, u"<r>\n<a/>\n<!--c-->\n<n>a&lt;b</n>\n</r>"},
      {u"<r>\r\n<a/>\r\n<b/>\r\n</r>", u"r", addBehindChild,
       u"<r>\r\n<a/>\r\n<n/>\r\n<b/>\r\n</r>"},
      {u"<a/>", u"", addChild, u"<a/>\r\n<n>a&lt;b</n>\r\n"},
      {u"<r><a></r>", u"a", addChild, u"<r><a>\r\n<n>a&lt;b</n>\r\n</a></r>"},
      {u"<!-- never ended", u"", add, u"<n/>\r\n<!-- never ended"},
  });
}

TEST(MarkupEdit, TextBesideElementsStaysAsItIs) {
  const auto add = [](CMarkup& d) { return d.AddElem(u"n"); };
  const auto insert = [](CMarkup& d) { return d.InsertElem(u"n"); };
  const auto addChild = [](CMarkup& d) { return d.AddChildElem(u"n"); };
  const auto insertChild = [](CMarkup& d) { return d.InsertChildElem(u"n"); };
  const auto remove = [](CMarkup& d) { return d.RemoveElem(); };
  check({
      {u"<a>data</a>", u"a", insertChild, u"<a>data<n/></a>"},
      {u"<r>\n<a/>\n<b/> t</r>", u"a", add, u"<r>\n<a/><n/>\n<b/> t</r>"},
      {u"<r>t\n <a/>\n<b/></r>", u"b", insert, u"<r>t\n <a/>\n<n/><b/></r>"},
      {u"<r>\n<a/>\nt\n</r>", u"r", addChild, u"<r>\n<a/>\nt\n<n/></r>"},
      {u"<r><![CDATA[t]]><a/>\n</r>", u"r", addChild, u"<r><![CDATA[t]]><a/>\n<n/></r>"},
      {u"<r>&#32;<a/></r>", u"a", add, u"<r>&#32;<a/><n/></r>"},
      {u"<r>\n<a>t</a>\n</r>", u"a", add, u"<r>\n<a>t</a>\n<n/>\n</r>"},
      {u"<r><a/></r>", u"a",
       [](CMarkup& d) {
         // What is known of a parent changes with it.
         return d.AddElem(u"b") && d.AddNode(MarkupNode::text, u"t") && d.AddElem(u"c") &&
                d.FindPrevElem() && d.AddElem(u"d");
       },
       u"<r><a/>\r\n<b/><d/>t\r\n<c/></r>"},
      {u"<r>\nt\n<a/>\n</r>", u"a", remove, u"<r>\nt\n\n</r>"},
      // Text that comes together does not close a CDATA section that there is not.
      {u"<r>]]<a/>></r>", u"a", remove, u"<r>]]&gt;</r>"},
      {u"<r>]]<!--c-->>t</r>", u"r",
       [](CMarkup& d) {
         return d.IntoElem() && d.FindNode(MarkupNode::comment) != 0 && d.RemoveNode() &&
                d.GetData() == u"]]>t";
       },
       u"<r>]]&gt;t</r>"},
      {u"<r>></r>", u"r",
       [](CMarkup& d) {
         return d.IntoElem() && d.FindNode(MarkupNode::text) != 0 &&
                d.InsertNode(MarkupNode::text, u"]]") && d.GetData() == u"]]>";
       },
       u"<r>]&#93;></r>"},
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
       u"<r>\n<x>\n<y/></x>\n<z/>\n<a/>\n</r>"},
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
      {u"<!DOCTYPE a [<!ENTITY auml 'ä'>]><a>old<!--c--></a>", u"a",
       [](CMarkup& d) { return d.SetData(u"&auml; &#228; &", MarkupFlag::withReferences); },
       u"<!DOCTYPE a [<!ENTITY auml 'ä'>]><a>&auml; &#228; &amp;</a>"},
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
         for (const char16_t* name :
              {u"", u"1", u"-a", u"a b", u"a=", u"a>", u"a/", u"a\"", u"a'", u"a\n", u"<a", u"a[1]",
               u"a&b", u"\x01", u"@", u"a{", u"|", u"\xD7", u"a\xD800"}) {
           any |= d.SetTagName(name) || d.AddElem(name) || d.AddChildElem(name) ||
                  d.SetAttrib(name, u"1") || d.AddNode(MarkupNode::element, name);
         }
         return any || d.AddElem(std::u16string_view(u"a\0b", 3));
       }},
      {u"<r><a/></r>", u"a",
       [](CMarkup& d) {
         bool any = false;
         for (const char16_t* markup :
              {u"", u"text", u"<a>", u"<a/><b/>", u"</a>", u"<a></b></a>", u"<!--c-->", u"<a/><",
               u"<a b=1/>", u"<a b='' b=''/>", u"<a>&</a>", u"<a>&e;</a>", u"<a>]]></a>",
               u"<a b='<'/>", u"<a><!--b--c--></a>", u"<{/>", u"<a></a b>",
               u"<!DOCTYPE a [<!ENTITY e ''>]><a>&e;</a>"}) {
           any |= d.AddSubDoc(markup) || d.InsertChildSubDoc(markup);
         }
         for (const char16_t* data : {u"&e;", u"&#1;", u"&#X41;"}) {
           any |= d.SetData(data, MarkupFlag::withReferences) ||
                  d.AddElem(u"b", data, MarkupFlag::withReferences);
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
         } nodes[] = {{2, u""},
                      {2, u" "},
                      {4, u"x"},
                      {4, u""},
                      {8, u"]]>"},
                      {16, u"a?>b"},
                      {32, u"-->"},
                      {32, u"a-->b"},
                      {64, u"x"},
                      {64, u"<!D>"},
                      {64, u"<!DOCTYPE"},
                      {64, u"<!DOCTYPE a><b/>"},
                      {128, u"a"},
                      {0, u"a"},
                      {3, u"a"},
                      {-1, u"a"},
                      {32, u"a--b"},
                      {32, u"a-"},
                      {16, u""},
                      {16, u"1"},
                      {16, u"xml"},
                      {16, u"XmL a='b'"},
                      {64, u"<!DOCTYPE a>"}};
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
      // At the document level
      {u"<?xml\nversion='1.0'?><!DOCTYPE a [<!ENTITY e ''>]><a>&e;</a>", u"",
       [](CMarkup& d) {
         bool any = d.AddNode(MarkupNode::text, u"t") ||
                    d.AddNode(MarkupNode::cdataSection, u"t") ||
                    d.AddNode(MarkupNode::documentType, u"<!DOCTYPE a>") ||
                    d.AddNode(MarkupNode::processingInstruction, u"xml version='1.0'");
         any |= d.FindNode() != MarkupNode::processingInstruction;  // the declaration
         for (const int type : {MarkupNode::whitespace, MarkupNode::comment}) {
           any |= d.InsertNode(type, u" ");
         }
         any |= d.InsertElem(u"n") || d.AddElem(u"n") || d.SetData(u"xml") ||
                d.SetData(u"xml version=\"1.0\" standalone=no");
         any |= d.FindNode() != MarkupNode::documentType;
         return any || d.InsertElem(u"n") || d.RemoveNode() || d.SetData(u"<!DOCTYPE a>");
       }},
      {u"<a/> ", u"a",
       [](CMarkup& d) {
         return d.AddNode(MarkupNode::documentType, u"<!DOCTYPE a>") || d.FindNode() == 0 ||
                d.SetData(u"t") || d.SetData(u" ", MarkupFlag::withCData);
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

// The number that was reported, or -1 after several.
int reported = 0;
void noteReport(int number) noexcept { reported = reported == 0 ? number : -1; }

// Whatever allocation fails: the operation reports it, answers what is neutral, and changes
// nothing.
TEST(MarkupEdit, RunningOutOfMemoryIsReportedAndChangesNothing) {
  const CString value(u"a value that is too long for the text itself <");
  const CString name(u"aVeryLongNameOfAnElement");
  const auto text = [](const CString& answer) { return !answer.IsEmpty(); };
  const struct {
    const char* operation;
    Edit edit;
  } cases[] = {
      {"AddElem", [&](CMarkup& d) { return d.AddElem(name, value); }},
      {"InsertElem", [&](CMarkup& d) { return d.InsertElem(name, value); }},
      {"AddChildElem", [&](CMarkup& d) { return d.AddChildElem(name, value); }},
      {"InsertChildElem", [&](CMarkup& d) { return d.InsertChildElem(name, value); }},
      {"AddSubDoc", [](CMarkup& d) { return d.AddSubDoc(u"<x b='&lt;'><y/><z>t</z></x>"); }},
      {"InsertSubDoc", [](CMarkup& d) { return d.InsertSubDoc(u"<x b='&lt;'><y/><z/></x>"); }},
      {"AddChildSubDoc",
       [](CMarkup& d) {
         return d.AddChildSubDoc(u"<x><y/><y/><y/><y/><y/><y/><y/><y/><y/><z><y>t</y></z></x>");
       }},
      {"InsertChildSubDoc",
       [](CMarkup& d) { return d.InsertChildSubDoc(u"<x b='&lt;'><y/></x>"); }},
      {"SetTagName", [&](CMarkup& d) { return d.SetTagName(name); }},
      {"SetChildTagName", [&](CMarkup& d) { return d.SetChildTagName(name); }},
      {"SetData", [&](CMarkup& d) { return d.IntoElem() && d.SetData(value); }},
      {"SetChildData", [&](CMarkup& d) { return d.SetChildData(value); }},
      {"SetAttrib", [&](CMarkup& d) { return d.SetAttrib(name, value); }},
      {"SetChildAttrib", [&](CMarkup& d) { return d.SetChildAttrib(name, value); }},
      {"RemoveAttrib", [&](CMarkup& d) { return d.RemoveAttrib(u"name"); }},
      {"RemoveChildAttrib", [&](CMarkup& d) { return d.RemoveChildAttrib(u"name"); }},
      {"AddNode", [&](CMarkup& d) { return d.AddNode(MarkupNode::comment, value); }},
      {"InsertNode", [&](CMarkup& d) { return d.InsertNode(MarkupNode::comment, value); }},
      {"RemoveNode",
       [](CMarkup& d) {
         return (d.ResetPos(), d.FindNode(MarkupNode::documentType)) && d.RemoveNode();
       }},
      {"SavePos", [&](CMarkup& d) { return d.SavePos(value); }},
      {"GetTagName", [&](CMarkup& d) { return text(d.GetTagName()); }},
      {"GetChildTagName", [&](CMarkup& d) { return text(d.GetChildTagName()); }},
      {"GetData", [&](CMarkup& d) { return d.IntoElem() && text(d.GetData()); }},
      {"GetChildData", [&](CMarkup& d) { return text(d.GetChildData()); }},
      {"GetAttrib", [&](CMarkup& d) { return text(d.GetAttrib(u"name")); }},
      {"GetChildAttrib", [&](CMarkup& d) { return text(d.GetChildAttrib(u"name")); }},
      {"GetNthAttrib",
       [n = CString(), v = CString()](CMarkup& d) mutable { return d.GetNthAttrib(0, n, v); }},
      {"GetNthChildAttrib",
       [n = CString(), v = CString()](CMarkup& d) mutable { return d.GetNthChildAttrib(0, n, v); }},
      {"GetSubDoc", [&](CMarkup& d) { return text(d.GetSubDoc()); }},
      {"GetChildSubDoc", [&](CMarkup& d) { return text(d.GetChildSubDoc()); }},
      {"GetElemContent", [&](CMarkup& d) { return text(d.GetElemContent()); }},
      {"GetError", [&](CMarkup& d) { return text(d.GetError()); }},
      {"EscapeText", [&](CMarkup&) { return text(CMarkup::EscapeText(value)); }},
      {"UnescapeText", [&](CMarkup&) { return text(CMarkup::UnescapeText(value)); }},
      {"EncodeBase64",
       [&](CMarkup&) {
         return text(
             CMarkup::EncodeBase64(reinterpret_cast<const unsigned char*>("some bytes"), 10));
       }},
      {"GetDeclaredEncoding",
       [&](CMarkup&) {
         return text(CMarkup::GetDeclaredEncoding(u"<?xml encoding='a-long-name'?>"));
       }},
  };
  const CMarkup original(
      u"<!DOCTYPE aVeryLongTagName><aVeryLongTagName name='a long value'><anotherLongTagName "
      u"name='a long value'>some longer data</anotherLongTagName></aVeryLongTagName></lone>");
  setErrorSink(&noteReport);
  for (const auto& each : cases) {
    int failures = 0;
    for (bool done = false; !done; ++failures) {
      CMarkup document(original);
      document.FindElem();
      document.FindChildElem();
      const CString before = document.GetDoc();
      reported = 0;
      {
        const FailingAllocations failing(failures);
        done = each.edit(document);
      }
      const std::string expected = done ? "" : std::string("CMarkup::") + each.operation;
      ASSERT_EQ(operationIn(xmlOperations, reported), expected)
          << reported << " at allocation " << failures;
      EXPECT_EQ(MarkupValidator::check(document), "") << each.operation;
      EXPECT_TRUE(done || document.GetDoc() == before) << each.operation;
      ASSERT_LT(failures, 100) << each.operation;
    }
    EXPECT_GT(failures, 1) << each.operation;
  }

  CMarkup document(original);
  const CString before = document.GetDoc();
  const CString longText(u' ', 1000);
  reported = 0;
  {
    const FailingAllocations failing(0);
    EXPECT_FALSE(document.SetDoc(longText));
  }
  EXPECT_EQ(operationIn(xmlOperations, reported), "CMarkup::SetDoc");
  EXPECT_EQ(document.GetDoc(), before);
  setErrorSink(nullptr);
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

TEST(MarkupEdit, EmptyDataForAnEmptyElementKeepsPositionsInIt) {
  for (const char16_t* const text : {u"<r><a/></r>", u"<r><a></a></r>"}) {
    CMarkup document(text);
    ASSERT_TRUE(goTo(document, u"a"));
    document.IntoElem();
    document.SavePos(u"inside");
    document.OutOfElem();
    EXPECT_TRUE(document.SetData(u""));
    EXPECT_TRUE(document.RestorePos(u"inside"));
    EXPECT_EQ(document.GetDoc(), text);
  }
}

// --- random changes ------------------------------------------------------------------------------

class RandomEditor {
 public:
  RandomEditor(unsigned seed, const char16_t* markup) : random_(seed), document_(markup) {}

  void run(int steps) {
    for (int step = 0; step < steps; ++step) {
      const CString before = document_.GetDoc();
      const bool wasRight = isRight();
      const int kind = pick(24);
      const bool done = act(kind);
      const bool isChange = kind >= 10;
      ASSERT_TRUE((isChange && done) || document_.GetDoc() == before) << "action " << kind;
      ASSERT_TRUE(!wasRight || isRight())
          << "action " << kind << " made of " << before.utf8() << "\n"
          << document_.GetDoc().utf8();
      ASSERT_EQ(problem(document_), "") << "action " << kind << " made of " << before.utf8() << "\n"
                                        << document_.GetDoc().utf8();
    }
  }

 private:
  int pick(int count) { return std::uniform_int_distribution<int>(0, count - 1)(random_); }
  std::u16string_view name() {
    constexpr std::u16string_view names[] = {u"a", u"b",  u"c",  u"longer-name", u"\u00e4",
                                             u"a", u"a{", u"1a", u"\u00d7"};
    return names[pick(9)];
  }
  std::u16string_view data() {
    constexpr std::u16string_view texts[] = {u"",   u"x", u"a < b & \"c\"", u" \r\n", u"]]>",
                                             u"]]", u">", u"\x01",          u"&e;",   u"&#1;"};
    return texts[pick(10)];
  }
  std::u16string_view nodeText() {
    constexpr std::u16string_view texts[] = {u"--",
                                             u"a-",
                                             u"a b",
                                             u"1",
                                             u"xml version='1.0'",
                                             u"xml version='1.1'",
                                             u"xml version='1.0' standalone='yes'",
                                             u"XML",
                                             u"<!DOCTYPE a>",
                                             u"<!DOCTYPE a [<!ENTITY e 'x'>]>",
                                             u"<!DOCTYPE a SYSTEM 'a.dtd'>"};
    return pick(2) != 0 ? data() : texts[pick(11)];
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
        return d.AddSubDoc(pick(2) != 0 ? u"<a x='1'>\n<b/>t<c><a>u</a></c></a>"
                                        : u"<a b=1>&e;</a>");
      case 15:
        return d.InsertChildSubDoc(u"<b><b/></b>");
      case 16:
        return pick(3) == 0 && d.RemoveElem();
      case 17:
        return pick(3) == 0 && d.RemoveChildElem();
      case 18:
        return d.SetTagName(name());
      case 19:
        return d.SetData(nodeText(), flags[pick(4)]);
      case 20:
        return d.SetAttrib(name(), data());
      case 21:
        return d.SetChildAttrib(name(), data());
      case 22:
        return d.RemoveAttrib(name());
      default:
        return pick(3) == 0 ? d.RemoveNode()
                            : (pick(2) != 0 ? d.AddNode(1 << pick(8), nodeText())
                                            : d.InsertNode(1 << pick(8), nodeText()));
    }
  }

  // Whether other programs take the document, but for the number of its roots and for odd
  // characters in values.
  bool isRight() const {
    using Kind = MarkupProblemKind;
    bool right = true;
    const auto take = [&](const MarkupProblem& problem) {
      right = right &&
              (MarkupCheck::isWarning(problem.kind) || problem.kind == Kind::forbiddenCharacter ||
               problem.kind == Kind::rootHasSibling || problem.kind == Kind::noRootElement);
    };
    CMarkup parsed;
    parsed.SetProblemSink(take);
    parsed.SetDoc(document_.GetDoc());
    MarkupCheck::check(document_.GetDoc(), take);
    return right;
  }

  std::mt19937 random_;
  CMarkup document_;
};

TEST(MarkupEdit, RandomChangesKeepRecordsAndTextTogether) {
  constexpr const char16_t* documents[] = {
      u"",
      u"<?xml version=\"1.0\"?>\r\n<r>\r\n<a x=\"1\">data</a>\r\n<b/>\r\n</r>\r\n",
      u"<r>one <a>two</a> three <!--c--> four <b y='1'/><![CDATA[z]]></r>",
      u"\xFEFF<?xml version='1.0'?>\n<!--c-->\n<!DOCTYPE a [<!ENTITY e 'x'>]>\n<a>&e;</a>\n",
      u"<?xml\nversion='1.1'?><!DOCTYPE a SYSTEM 'a.dtd'><a>&#1;<b>]]<!--c-->></b>&f;</a>",
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
