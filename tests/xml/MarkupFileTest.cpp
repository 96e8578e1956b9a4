#include <gtest/gtest.h>

#include "kpx/xml/CMarkup.h"
#include "tests/common/FaultyFileSystem.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using namespace std::literals;
using Step = FaultyFileSystem::Step;

TEST(MarkupFile, UnchangedDocumentIsSavedAsTheSameBytes) {
  const TemporaryFolder folder;
  const std::string_view files[] = {
      "<a>\r\n<b c='\xC3\xA4'/>\n\r</a>\r\n",
      "\xEF\xBB\xBF<?xml version='1.0' encoding='UTF-8'?><a>\xC3\xA4</a>",
      "\xEF\xBB\xBF<?xml version='1.0' encoding='ISO-8859-1'?><a>\xC3\xA4</a>",
      "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4\x80</a>",
      "<?xml version='1.0' encoding='windows-1252'?><a>\x80\x81\x8D\x8F\x90\x9D</a>",
      "<a>Stra\337e</a>",
      "<?xml version='1.0' encoding='UTF-16'?><a>\xE4</a>",
      "<?xml version='1.0' encoding='x-own'?><a>\xE4</a>",
      "<?xml version='1.0' encoding='KOI8-R'?><a>\xC1</a>",
      "\xFF\xFE<\0a\0>\0\x3D\xD8<\0/\0a\0>\0"sv,  // with half a character
      "\xFE\xFF\0<\0a\0/\0>"sv,
      "<\0a\0/\0>\0"sv,
      "\xFE\xFF\0<\0?\0x\0m\0l\0 \0e\0n\0c\0o\0d\0i\0n\0g\0=\0'\0U\0T\0F\0-\0008\0'\0?\0>\0<\0a\0/\0>"sv,
  };
  for (const std::string_view bytes : files) {
    folder.write("in.xml", bytes);
    CMarkup document;
    EXPECT_TRUE(document.Load(folder / "in.xml")) << bytes;
    CMarkup copy(document);
    CMarkup moved(std::move(document));
    for (CMarkup* const each : {&copy, &moved}) {
      EXPECT_TRUE(each->Save(folder / "out.xml")) << bytes;
      EXPECT_EQ(folder.read("out.xml"), bytes);
    }
  }
}

TEST(MarkupFile, ChangedDeclarationDecidesTheEncoding) {
  const TemporaryFolder folder;
  folder.write("in.xml", "<?xml version='1.0' encoding='UTF-8'?><a>\xC3\xA4\xE2\x82\xAC</a>");
  CMarkup document;
  ASSERT_TRUE(document.Load(folder / "in.xml"));
  CString text = document.GetDoc();
  text.Replace(u"UTF-8", u"ISO-8859-1");
  document.SetDoc(text);
  EXPECT_TRUE(document.Save(folder / "out.xml"));
  EXPECT_EQ(folder.read("out.xml"),
            "<?xml version='1.0' encoding='ISO-8859-1'?><a>\xE4&#8364;</a>");
  text.Replace(u"ISO-8859-1", u"UTF-16");
  document.SetDoc(text);
  EXPECT_TRUE(document.Save(folder / "out.xml"));
  EXPECT_TRUE(folder.read("out.xml").starts_with("\xFF\xFE<\0?\0"sv));
  EXPECT_TRUE(document.Load(folder / "out.xml"));
  EXPECT_EQ(document.GetDoc(), text);

  // An unknown one is refused, and the file stays.
  folder.write("out.xml", "old");
  text.Replace(u"UTF-16", u"x-own");
  document.SetDoc(text);
  EXPECT_FALSE(document.Save(folder / "out.xml"));
  EXPECT_EQ(folder.read("out.xml"), "old");
  EXPECT_GE(document.GetError().Find(u"'x-own'"), 0);
}

TEST(MarkupFile, DocumentOfItsOwnIsSavedAsUtf8) {
  const TemporaryFolder folder;
  CMarkup document(u"<a>ä</a>");
  EXPECT_TRUE(document.Save(folder / "out.xml"));
  EXPECT_EQ(folder.read("out.xml"), "<a>\xC3\xA4</a>");
  // Setting another text forgets how the one before was stored.
  folder.write("in.xml", "<a>\xE4</a>");
  EXPECT_TRUE(document.Load(folder / "in.xml"));
  document.SetDoc(u"<a>ä</a>");
  EXPECT_TRUE(document.Save(folder / "out.xml"));
  EXPECT_EQ(folder.read("out.xml"), "<a>\xC3\xA4</a>");
}

TEST(MarkupFile, OutcomesAreRecordedBeforeThoseOfTheParse) {
  const TemporaryFolder folder;
  struct Case {
    std::string_view bytes;
    std::u16string_view result;
  };
  const Case cases[] = {
      {"<a/>", u"<read encoding=\"UTF-8\" length=\"4\"/>"},
      {"\xEF\xBB\xBF<a>\xFF</a>",
       u"<read encoding=\"UTF-8\" length=\"8\"/><bom encoding=\"UTF-8\"/>"
       u"<conversion_loss count=\"1\" offset2=\"6\"/>"},
      {"<a>\xC3\xA4</a>", u"<read encoding=\"UTF-8\" length=\"8\"/><utf8_detection/>"},
      {"<a>\xE4</a>",
       u"<read encoding=\"windows-1252\" length=\"8\"/>"
       u"<converted_from encoding=\"windows-1252\" length=\"8\"/>"},
      {"\0<\0a\0/\0>\0"sv,
       u"<read encoding=\"UTF-16BE\" length=\"4\"/><endian_swap/><truncation_error/>"
       u"<conversion_loss count=\"1\" offset2=\"8\"/>"},
      {"<a>\0</a>"sv, u"<read encoding=\"UTF-8\" length=\"7\"/><nulls_removed count=\"1\"/>"},
      {"", u"<read encoding=\"UTF-8\" length=\"0\"/><no_root_element/>"},
      {"<a/><b/>", u"<read encoding=\"UTF-8\" length=\"8\"/><root_has_sibling/>"},
  };
  for (const Case& each : cases) {
    folder.write("in.xml", each.bytes);
    CMarkup document;
    document.Load(folder / "in.xml");
    EXPECT_EQ(document.GetResult(), each.result);
  }

  CMarkup document(u"<?xml version='1.0' encoding='ISO-8859-1'?><a><!--€--></a>");
  EXPECT_TRUE(document.Save(folder / "out.xml", MarkupFlag::allowLoss));
  EXPECT_EQ(document.GetResult(),
            u"<write encoding=\"ISO-8859-1\" length=\"58\"/>"
            u"<converted_to encoding=\"ISO-8859-1\" length=\"58\"/>"
            u"<conversion_loss encoding=\"ISO-8859-1\" count=\"1\" offset2=\"50\"/>");
}

// Neither what a file holds nor what a document holds gets lost without a word.
TEST(MarkupFile, SaveRefusesToLose) {
  const TemporaryFolder folder;
  const auto refuses = [&](CMarkup& document, const char16_t* loss) {
    folder.write("out.xml", "old");
    EXPECT_FALSE(document.Save(folder / "out.xml"));
    EXPECT_TRUE(document.GetResult().EndsWith(loss)) << document.GetResult().utf8();
    EXPECT_TRUE(document.GetResult().StartsWith(u"<file_error msg=\"cannot write"));
    EXPECT_EQ(folder.read("out.xml"), "old");
    EXPECT_TRUE(document.Save(folder / "out.xml", MarkupFlag::allowLoss));
    EXPECT_NE(folder.read("out.xml"), "old");
  };
  const struct {
    std::string_view bytes;
    const char16_t* loss;
  } files[] = {
      {"<?xml encoding='UTF-8'?><a>\xE4\xE4</a>", u"<conversion_loss count=\"2\" offset2=\"27\"/>"},
      {"<?xml encoding='ISO-8859-3'?><a>\xA5</a>",
       u"<conversion_loss count=\"1\" offset2=\"32\"/>"},
      // Shift_JIS has two spellings of these; another is written.
      {"<?xml encoding='Shift_JIS'?><a>\xFA\x54.\xEE\xF9</a>",
       u"<conversion_loss count=\"4\" offset2=\"31\"/>"},
      {"<a>\0</a>"sv, u"<conversion_loss count=\"1\" offset2=\"3\"/>"},
      {"\xFF\xFE<\0a\0/\0>\0 "sv, u"<conversion_loss count=\"1\" offset2=\"10\"/>"},
  };
  for (const auto& each : files) {
    folder.write("in.xml", each.bytes);
    CMarkup document;
    EXPECT_TRUE(document.Load(folder / "in.xml"));
    CMarkup copy(document);
    refuses(copy, each.loss);
    document.FindElem();
    document.SetAttrib(u"changed", 1);
    refuses(document, each.loss);
    document.SetDoc(document.GetDoc());
    EXPECT_TRUE(document.Save(folder / "in.xml"));
    EXPECT_TRUE(copy.Load(folder / "in.xml"));
    EXPECT_TRUE(copy.Save(folder / "out.xml"));
  }

  CMarkup document(u"<a b='\xDC00'>\xD83D\xD83D\xDE00</a>");
  refuses(document, u"<conversion_loss encoding=\"UTF-8\" count=\"2\" offset2=\"6\"/>");
  document.SetDoc(u"<?xml encoding='UTF-16'?>" + document.GetDoc());
  EXPECT_TRUE(document.Save(folder / "out.xml"));
  EXPECT_TRUE(document.Load(folder / "out.xml"));
  EXPECT_TRUE(document.GetDoc().EndsWith(u"<a b='\xDC00'>\xD83D\xD83D\xDE00</a>"));
  document.FindElem();
  document.SetAttrib(u"b", u"1\0002"sv);
  refuses(document, u"<conversion_loss encoding=\"UTF-16\" count=\"1\" offset2=\"32\"/>");
}

// Only who asks for it is told of the other program; what the document wrote itself is its own.
TEST(MarkupFile, FileThatAnotherProgramChangedIsKeptOnRequest) {
  const TemporaryFolder folder;
  const CString path = folder / "a.xml";
  folder.write("a.xml", "<a/>");
  CMarkup document;
  ASSERT_TRUE(document.Load(path));
  document.SetChildAttrib(u"n", 1);
  EXPECT_TRUE(document.Save(path, MarkupFlag::unlessChanged));
  document.SetChildAttrib(u"n", 2);
  EXPECT_TRUE(document.Save(path, MarkupFlag::unlessChanged));
  const CMarkup copy(document);
  folder.write("a.xml", "<a n=\"3\"/>");
  for (CMarkup each : {copy, document}) {
    EXPECT_FALSE(each.Save(path, MarkupFlag::unlessChanged));
    EXPECT_GE(each.GetError().Find(u"changed"), 0) << each.GetError().utf8();
    // A text that is set in place of the one that was read is to replace the same file.
    each.SetDoc(u"<b/>");
    EXPECT_FALSE(each.Save(path, MarkupFlag::unlessChanged));
  }
  EXPECT_EQ(folder.read("a.xml"), "<a n=\"3\"/>");
  EXPECT_TRUE(document.Save(path));
  EXPECT_EQ(folder.read("a.xml"), "<a n=\"2\"/>");
}

TEST(MarkupFile, WhatCannotBeReadLeavesTheDocument) {
  const TemporaryFolder folder;
  folder.write("binary.xml", "<a>" + std::string(100, '\0'));
  folder.write("good.xml", "<b/>");
  CMarkup document(u"<a><b/></a>");
  FaultyFileSystem files;
  for (const std::string_view name : {"missing.xml", ".", "binary.xml", "good.xml"}) {
    if (name == "good.xml") files.failOnce(Step::read);
    EXPECT_FALSE(document.Load(folder / name));
    EXPECT_TRUE(document.GetResult().StartsWith(u"<file_error msg=\"cannot read")) << name;
    EXPECT_EQ(document.GetDoc(), u"<a><b/></a>");
    EXPECT_TRUE(document.IsWellFormed());
  }
  EXPECT_TRUE(document.Load(folder / "good.xml"));
}

TEST(MarkupFile, SaveThatFailsAnywhereLeavesTheOldFileAndTellsSo) {
  const TemporaryFolder folder;
  folder.write("job.xml", "<old/>");
  // Long enough for several pieces.
  CMarkup document(u"<a>" + CString(u'x', 300000) + u"</a>");
  FaultyFileSystem files;
  const struct {
    Step step;
    int passing;
  } faults[] = {{Step::open, 0},  {Step::write, 0}, {Step::write, 3},
                {Step::flush, 0}, {Step::close, 0}, {Step::putInPlace, 0}};
  for (const auto& fault : faults) {
    files.failOnce(fault.step, fault.passing);
    EXPECT_FALSE(document.Save(folder / "job.xml"));
    EXPECT_TRUE(files.hasFailed()) << static_cast<int>(fault.step);
    EXPECT_EQ(folder.read("job.xml"), "<old/>");
    EXPECT_EQ(folder.names().size(), 1u);
    EXPECT_GE(document.GetError().Find(u"no space left"), 0);
  }
  EXPECT_TRUE(document.Save(folder / "job.xml"));
  EXPECT_EQ(folder.read("job.xml").size(), 300007u);
}

}  // namespace
}  // namespace kpx
