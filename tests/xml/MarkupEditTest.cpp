#include <gtest/gtest.h>

#include <functional>
#include <vector>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/MarkupValidator.h"
#include "tests/common/MarkupOutline.h"
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
    EXPECT_EQ(outlineProblem(document), "") << document.GetDoc().utf8();
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
  EXPECT_EQ(outlineProblem(document), "");
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
  ASSERT_TRUE(document.AddElem(CString(u'n', ElemPos::maxStartTag - 3)));
  EXPECT_FALSE(document.AddElem(CString(u'n', ElemPos::maxStartTag - 2)));
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

}  // namespace
}  // namespace kpx
