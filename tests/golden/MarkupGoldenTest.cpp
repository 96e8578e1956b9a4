// Configurations, points and other markup, as saved files.

#include <gtest/gtest.h>

#include <string>

#include "kpx/config/CJob.h"
#include "kpx/config/CProject.h"
#include "kpx/config/CUser.h"
#include "kpx/settings/AllSettings.h"
#include "kpx/settings/Catalogue.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"
#include "kpx/xml/MarkupFormat.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/domain/PunktobjektFields.h"
#include "tests/golden/Golden.h"

namespace kpx {
namespace {

// Whatever a person may type or paste; the last but one has lost its other half.
const CString pasted = u"Größe \"<&>' €\r\nzweite\tZeile \U0001F600 \xD83D, ]]>";

CString declaration(const CString& encoding) {
  return u"<?xml version=\"1.0\" encoding=\"" + encoding + u"\"?>\r\n";
}

/// The bytes of the file that a document becomes.
std::string saved(CMarkup& document) {
  const TemporaryFolder folder;
  EXPECT_TRUE(document.Save(folder / "saved.xml", MarkupFlag::allowLoss))
      << document.GetError().utf8();
  return folder.read("saved.xml");
}

std::string savedObject(const CDBObject& object, const CString& encoding) {
  CMarkup document;
  document.SetDoc(declaration(encoding));
  EXPECT_EQ(object.serializeXML(&document), 1);
  return saved(document);
}

TEST(MarkupGolden, DefaultsOfEveryClass) {
  addBuiltInTexts();
  GoldenLines lines;
  for (const SettingsClass* const each : settingsClasses()) {
    const std::unique_ptr<CDBObject> object = each->make();
    const std::string utf8 = savedObject(*object, u"UTF-8");
    const std::string utf16 = savedObject(*object, u"UTF-16LE");
    lines.add(u"%s\t%zu %08X\t%zu %08X", each->name, utf8.size(), crcOf(utf8), utf16.size(),
              crcOf(utf16));
  }
  expectGolden("classes.tsv", lines.bytes());
}

CMarkup projectDocument(const CString& encoding) {
  CMarkup document;
  document.SetDoc(declaration(encoding));
  document.AddElem(u"Projektdatei");
  document.SetAttrib(u"Bemerkung", pasted);
  document.IntoElem();
  CProject project;
  project.ObjectID = 7;
  project.created = 20210305083334.0;
  project.Name = u"Aue";
  project.Description = pasted;
  project.Path = u"D:\\Projekte\\Aue";
  project.serializeXML(&document);
  CJob job;
  job.Name = u"Tag 1";
  job.serializeXML(&document);
  CUser user;
  user.Name = u"Möller";
  user.serializeXML(&document);

  CFGNASExport nas;
  nas.Name = pasted;
  nas.serializeXML(&document);
  CTripelPole pole;
  for (auto&& column : pole.Class.Cols) column.value.Value.Value = pasted;
  pole.serializeXML(&document);
  CFGConfigDXFConvertTextHeader header;
  header.setDescription(u"Höhen");
  header.serializeXML(&document);
  CFGConfigDXFConvertTextRow row;
  row.setLayer(u"Punkte");
  row.setSize(2.675);
  CFGConfigDXFConvertTextTable table;
  table.SetCol(u"1", row);
  table.serializeXML(&document);
  row.serializeXML(&document);
  for (const CString& key : table.Class.KeyOrder) table.Class.find(key)->serializeXML(&document);
  for (const auto& cell : row.Cells) cell.value.serializeXML(&document);
  CFGConfigAdjustGroupTable().Class.serializeXML(&document);

  document.AddElem(u"Text", pasted);
  document.AddElem(u"Daten", pasted, MarkupFlag::withCData);
  document.AddNode(MarkupNode::comment, u"geändert");
  document.OutOfElem();
  return document;
}

TEST(MarkupGolden, ProjectDocument) {
  addBuiltInTexts();
  CMarkup document = projectDocument(u"UTF-8");
  expectGolden("project.xml", saved(document));
  CMarkup wide = projectDocument(u"UTF-16");
  expectGolden("project_utf16.xml", saved(wide));
  CMarkup formatted;
  formatted.SetDoc(formatMarkup(document));
  expectGolden("project_formatted.xml", saved(formatted));
}

TEST(MarkupGolden, PointsOfNas) {
  CMarkup document;
  document.SetDoc(declaration(u"UTF-8"));
  document.AddElem(u"Points");
  EXPECT_EQ(fullPoint().serializeXML(&document), 1);
  document.ResetChildPos();
  CNAS_Punktobjekt read;
  EXPECT_EQ(read.loadByXML(&document), 1);
  read.ObjArt = 11004;
  EXPECT_EQ(read.serializeXML(&document), 1);
  EXPECT_EQ(CNAS_Punktobjekt().serializeXML(&document), 1);
  expectGolden("points.xml", saved(document));
}

// Bytes that an encoding leaves undefined are not here: some systems read them as control
// characters.
TEST(MarkupGolden, EncodingsOfFiles) {
  addBuiltInTexts();
  GoldenLines lines;
  for (const CString encoding :
       {u"UTF-8",        u"UTF-16",       u"UTF-16LE",   u"UTF-16BE",    u"UTF-32",
        u"US-ASCII",     u"ISO-8859-1",   u"ISO-8859-2", u"ISO-8859-15", u"windows-1250",
        u"windows-1251", u"windows-1252", u"IBM437",     u"IBM850",      u"KOI8-R",
        u"macintosh",    u"Shift_JIS",    u"EUC-JP",     u"ISO-2022-JP", u"GBK",
        u"Big5",         u"EUC-KR"}) {
    CMarkup document = projectDocument(encoding);
    document.AddChildElem(u"Orte", u"Łódź Київ Αθήνα 漢字 かな 서울 – “Œ” ½ ¹ ÿ");
    const std::string bytes = saved(document);
    const DecodedText back = decodeMarkupBytes(bytes);
    GoldenSum text;
    text.add(back.text);
    lines.add(u"%s\t%zu %08X\t%d %08X", encoding, bytes.size(), crcOf(bytes), back.codePage,
              text.crc());
  }
  expectGolden("encodings.tsv", lines.bytes());
}

}  // namespace
}  // namespace kpx
