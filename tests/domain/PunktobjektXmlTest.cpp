#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/MarkupValidator.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"
#include "tests/domain/PunktobjektFields.h"

namespace kpx {
namespace {

/// The element as it is written into an empty document.
CString written(const CNAS_Punktobjekt& point) {
  CMarkup document;
  EXPECT_EQ(point.serializeXML(&document), 1);
  return document.GetChildSubDoc();
}

/// A document at its root element.
CMarkup atRoot(const CString& content) {
  CMarkup document;
  document.SetDoc(u"<root>" + content + u"</root>");
  EXPECT_TRUE(document.FindElem());
  return document;
}

/// Fails unless every field that is written, and none else, was read.
void expectSame(const CNAS_Punktobjekt& read, const CNAS_Punktobjekt& expected) {
  EXPECT_EQ(read.IsEqual(expected), 1);
  EXPECT_EQ(read.LockState, expected.LockState);
  for (const PointText& text : pointTexts) {
    EXPECT_EQ(read.*text.field, expected.*text.field) << text.name;
  }
  ASSERT_EQ(read.ZeigtAufExternes.size(), expected.ZeigtAufExternes.size());
  for (std::size_t i = 0; i < read.ZeigtAufExternes.size(); ++i) {
    EXPECT_EQ(read.ZeigtAufExternes[i].Fachdaten, expected.ZeigtAufExternes[i].Fachdaten);
    EXPECT_EQ(read.ZeigtAufExternes[i].FachdatenUrl, expected.ZeigtAufExternes[i].FachdatenUrl);
    EXPECT_EQ(read.ZeigtAufExternes[i].Reserved, u"");
  }
}

// Their order in a whole point stands in the golden file of points.
TEST(PunktobjektXml, OnlyWhatIsSetIsWritten) {
  CNAS_Punktobjekt point;
  point.ObjArt = 11003;
  point.LockState = -1;
  EXPECT_EQ(written(point), u"<CNAS_Punktobjekt ObjArt=\"11003\" IsIndirektAbgemarkt=\"\"/>");
  point.LockState = 5;
  point.ObjectID = 6;  // of the header only the lock state is written
  point.Sicherungspunkte = {u"", u"s2"};
  point.ZeigtAufExternes = {{u"r", u"1\"", u"", u"3", u"4"}, {}};
  EXPECT_EQ(written(point),
            u"<CNAS_Punktobjekt Lock=\"5\" ObjArt=\"11003\" IsIndirektAbgemarkt=\"\">\r\n"
            u"<Sicherungspunkt/>\r\n"
            u"<Sicherungspunkt>s2</Sicherungspunkt>\r\n"
            u"<ZeigtAufExternes Art=\"1&quot;\" Fachdaten=\"3\" FachdatenUrl=\"4\"/>\r\n"
            u"<ZeigtAufExternes/>\r\n"
            u"</CNAS_Punktobjekt>");
}

TEST(PunktobjektXml, EveryFieldComesBackAlsoIntoAUsedRecord) {
  const CNAS_Punktobjekt full = fullPoint();
  for (const CNAS_Punktobjekt& point : {full, CNAS_Punktobjekt()}) {
    CMarkup document = atRoot(written(point));
    CNAS_Punktobjekt fresh;
    CNAS_Punktobjekt used = full;
    used.Anlass = u"of the point before";
    for (CNAS_Punktobjekt* const read : {&fresh, &used}) {
      ASSERT_EQ(read->loadByXML(&document), 1);
      expectSame(*read, point);
    }
    EXPECT_EQ(used.ObjectID, 1) << "the header is not written, so it stays";
    EXPECT_EQ(used.Reserved2, 7);
    EXPECT_TRUE(used.Punktorte == full.Punktorte);
    EXPECT_TRUE(fresh.Punktorte.empty());
  }
}

TEST(PunktobjektXml, AwkwardListEntriesComeBack) {
  CNAS_Punktobjekt point;
  point.Sicherungspunkte = {u" ",     u"\t\r\n",   u"]]>",    u"<![CDATA[x]]>",
                            u"&amp;", u"<!-- -->", u"\n a \n"};
  CMarkup document = atRoot(written(point));
  EXPECT_TRUE(document.IsWellFormed());
  CNAS_Punktobjekt read;
  ASSERT_EQ(read.loadByXML(&document), 1);
  EXPECT_EQ(read.Sicherungspunkte, point.Sicherungspunkte);
}

TEST(PunktobjektXml, HeaderAttributesAreTakenAndAbsentOnesStay) {
  CMarkup document = atRoot(
      u"<CNAS_Punktobjekt TransID='70' changed='01.02.2003-04:05:06' Punktkennung='k'/>"
      u"<CNAS_Punktobjekt ObjArt='-3x' Lock='99999999999' created='2021-03-05'/>");
  CNAS_Punktobjekt point = fullPoint();
  ASSERT_TRUE(document.FindChildElem());
  ASSERT_EQ(point.loadByXML(&document), 1);
  EXPECT_EQ(point.TransID, 70);
  EXPECT_EQ(point.changed, 20030201040506.0);
  EXPECT_EQ(point.created, 19991231235959.0);
  EXPECT_EQ(point.UserCreatedID, 5);
  EXPECT_EQ(point.ObjArt, 11003);
  EXPECT_EQ(point.Punktkennung, u"k");
  EXPECT_EQ(point.LockState, 0);
  EXPECT_EQ(point.OID, u"");
  EXPECT_TRUE(point.Sicherungspunkte.empty());
  ASSERT_TRUE(document.FindChildElem());
  ASSERT_EQ(point.loadByXML(&document), 1);
  EXPECT_EQ(point.ObjArt, -3);
  EXPECT_EQ(point.LockState, 2147483647);
  EXPECT_EQ(point.created, 20210305000000.0);
  EXPECT_EQ(point.TransID, 70);
}

TEST(PunktobjektXml, PointsAreFoundAmongOtherElements) {
  CMarkup document = atRoot(
      u"<Other><CNAS_Punktobjekt OID='inner'/></Other><CNAS_Punktobjekt OID='a'/>"
      u"text<cnas_punktobjekt OID='case'/><CNAS_Punktobjekt OID='b'/>");
  CNAS_Punktobjekt point;
  ASSERT_EQ(point.loadByXML(&document), 1);
  EXPECT_EQ(point.OID, u"a");
  ASSERT_EQ(point.loadByXML(&document), 1);
  EXPECT_EQ(point.OID, u"a") << "the current child is the one that is read";
  ASSERT_TRUE(document.FindChildElem());
  ASSERT_EQ(point.loadByXML(&document), 1);
  EXPECT_EQ(point.OID, u"b");
  document.ResetChildPos();
  std::vector<CString> found;
  while (document.FindChildElem(point.getClassName())) {
    ASSERT_EQ(point.loadByXML(&document), 1);
    found.push_back(point.OID);
  }
  EXPECT_EQ(found, (std::vector<CString>{u"a", u"b"}));
}

TEST(PunktobjektXml, NothingIsReadOrWrittenWhereThereIsNoPlace) {
  CNAS_Punktobjekt point = fullPoint();
  const CNAS_Punktobjekt before(point);
  for (const char16_t* const content : {u"", u"<Other/>", u"<a><CNAS_Punktobjekt/></a>"}) {
    CMarkup document = atRoot(content);
    EXPECT_EQ(point.loadByXML(&document), 0);
    EXPECT_EQ(document.GetTagName(), u"root");
  }
  CMarkup empty;
  EXPECT_EQ(point.loadByXML(&empty), 0);
  EXPECT_EQ(point.loadByXML(nullptr), 0);
  EXPECT_EQ(point.serializeXML(nullptr), 0);
  CMarkup atDocument = atRoot(u"");
  atDocument.ResetPos();
  EXPECT_EQ(point.serializeXML(&atDocument), 0) << "it would be a second root";
  EXPECT_EQ(atDocument.GetDoc(), u"<root></root>");
  CMarkup inside = atRoot(u"");
  inside.IntoElem();
  EXPECT_EQ(point.serializeXML(&inside), 0) << "there is no main element to write below";
  EXPECT_EQ(inside.GetDoc(), u"<root></root>");
  EXPECT_EQ(written(point), written(before));
  EXPECT_EQ(point.ObjectID, before.ObjectID);
}

TEST(PunktobjektXml, WritingGoesOnBehindTheCurrentChild) {
  CMarkup document = atRoot(u"<first/><last/>");
  document.FindChildElem();
  CNAS_Punktobjekt point;
  for (const char16_t* const oid : {u"1", u"2"}) {
    point.OID = oid;
    ASSERT_EQ(point.serializeXML(&document), 1);
    EXPECT_EQ(document.GetTagName(), u"root");
    EXPECT_EQ(document.GetChildAttrib(u"OID"), oid);
  }
  CString order;
  for (document.ResetChildPos(); document.FindChildElem();) {
    order += document.GetChildTagName() + document.GetChildAttrib(u"OID") + u' ';
  }
  EXPECT_EQ(order, u"first CNAS_Punktobjekt1 CNAS_Punktobjekt2 last ");
  EXPECT_EQ(MarkupValidator::check(document), "");
}

TEST(PunktobjektXml, IllFormedAndHostileElementsAreReadAsFarAsTheyMakeSense) {
  struct Case {
    CString content;
    CString oid;
    std::vector<CString> protectionPoints;
    std::size_t references;
  };
  const Case cases[] = {
      {u"<CNAS_Punktobjekt OID='a' OID='b'/>", u"a", {}, 0},
      {u"<CNAS_Punktobjekt OID=a><Sicherungspunkt>1", u"a", {}, 0},
      {u"<CNAS_Punktobjekt OID='&lt;&bad;&#xD800;'></wrong></CNAS_Punktobjekt>",
       u"<&bad;&#xD800;",
       {},
       0},
      {u"<CNAS_Punktobjekt OID><Sicherungspunkt><![CDATA[<1>]]></Sicherungspunkt>"
       u"<CNAS_Punktobjekt OID='x'><Sicherungspunkt>inner</Sicherungspunkt></CNAS_Punktobjekt>"
       u"<ZeigtAufExternes><ZeigtAufExternes/></ZeigtAufExternes><Sicherungspunkt>2<b/>3"
       u"</Sicherungspunkt></CNAS_Punktobjekt>",
       u"",
       {u"<1>", u"2"},
       1},
  };
  for (const Case& each : cases) {
    CMarkup document = atRoot(each.content);
    CNAS_Punktobjekt point = fullPoint();
    ASSERT_EQ(point.loadByXML(&document), 1) << each.content.utf8();
    EXPECT_EQ(point.OID, each.oid);
    EXPECT_EQ(point.ZeigtAufExternes.size(), each.references);
    EXPECT_EQ(point.Sicherungspunkte, each.protectionPoints) << each.content.utf8();
    EXPECT_EQ(document.GetChildTagName(), point.GetElementName()) << "the position moved";
  }

  // Hours if the cost grew with the square of the size.
  CString content = u"<CNAS_Punktobjekt>";
  for (int i = 0; i < 300000; ++i) content += u"<Sicherungspunkt>1</Sicherungspunkt><x/>";
  CMarkup document = atRoot(content + u"</CNAS_Punktobjekt>");
  CNAS_Punktobjekt point;
  ASSERT_EQ(point.loadByXML(&document), 1);
  EXPECT_EQ(point.Sicherungspunkte.size(), 300000u);
}

TEST(PunktobjektXml, LackOfMemoryChangesNeitherRecordNorDocument) {
  const CNAS_Punktobjekt full = fullPoint();
  const CString text = written(full);
  CNAS_Punktobjekt old;
  old.OID = u"the one that was there before";
  old.Punktorte[1] = CAaaPunktortUUID(1, 1);
  for (const bool reads : {true, false}) {
    int failures = 0;
    for (bool done = false; !done; ++failures) {
      CMarkup document = atRoot(reads ? text : CString(u"<a/>"));
      const CString before = document.GetDoc();
      CNAS_Punktobjekt point = old;
      const ErrorCounts counts = errorCounts();
      {
        const FailingAllocations failing(failures);
        done = (reads ? point.loadByXML(&document) : full.serializeXML(&document)) == 1;
      }
      EXPECT_EQ(errorCounts().reported == counts.reported, done);
      if (!done) {
        EXPECT_EQ(written(point), written(old));
        EXPECT_EQ(document.GetDoc(), before);
      } else if (reads) {
        expectSame(point, full);
      }
      EXPECT_EQ(point.Punktorte.size(), 1u);
      EXPECT_EQ(document.GetTagName(), u"root");
      EXPECT_EQ(MarkupValidator::check(document), "");
      ASSERT_LT(failures, 200);
    }
    EXPECT_GT(failures, reads ? 30 : 1);
  }
}

}  // namespace
}  // namespace kpx
