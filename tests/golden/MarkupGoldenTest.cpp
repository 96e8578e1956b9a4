// Configurations, points and other markup, as saved files.

#include <gtest/gtest.h>

#include <string>
#include <vector>

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
  for (const CString& encoding :
       split(u"UTF-8 UTF-16 UTF-16LE UTF-16BE UTF-32 US-ASCII ISO-8859-1 ISO-8859-2 ISO-8859-15 "
             u"windows-1250 windows-1251 windows-1252 IBM437 IBM850 KOI8-R macintosh Shift_JIS "
             u"EUC-JP ISO-2022-JP GBK Big5 EUC-KR",
             u' ')) {
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

TEST(MarkupGolden, Base64) {
  std::vector<unsigned char> data;
  GoldenLines lines;
  for (int length = 0; length <= 200; ++length) {
    const CString text = CMarkup::EncodeBase64(data.data(), length);
    lines.add(u"%d bytes\t%d\t%08X", length, text.GetLength(), crcOf(text.utf8()));
    if (length == 47 || length == 48 || length == 200) lines.append(u"%s|\n", text);
    data.push_back(static_cast<unsigned char>(length * 167 + 250));
  }
  expectGolden("base64.txt", lines.bytes());
}

TEST(MarkupGolden, Escaping) {
  GoldenLines lines;
  for (const CString& text : {pasted, CString(u"&amp; &#228; &#xE4; &unknown; &#xD83D; &#0; &"),
                              CString(u"]]>]]&gt;"), CString(u"\x01\x7F\x85\xA0\xFFFE")}) {
    for (const int flags : {0, MarkupFlag::withReferences, MarkupFlag::attributeValue}) {
      lines.add(u"%X\t%s", flags, CMarkup::EscapeText(text, flags));
    }
    lines.add(u"-\t%s", CMarkup::UnescapeText(text));
  }
  expectGolden("escaping.txt", lines.bytes());
}

}  // namespace
}  // namespace kpx
