#include <gtest/gtest.h>

#include <initializer_list>
#include <set>
#include <vector>

#include "kpx/config/CFGHeader.h"
#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "kpx/xml/CMarkup.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/ObjectXml.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using Keys = std::vector<CString>;

CFGConfig configWith(const Keys& keys) {
  CFGConfig config;
  config.Class.Name = u"Test";
  for (const CString& key : keys) {
    config.AddSetting(u"0", key, u"64", ColumnType::integer, u"caption", 1, 0, 0);
  }
  return config;
}

TEST(Config, ElementNameComesFromTheClassName) {
  const struct {
    const char16_t* className;
    const char16_t* elementName;
  } cases[] = {
      {u"", u"CFGConfig"},
      {u"CFGConfigPolar", u"CFGConfigPolar"},
      {u"Polar", u"CFGConfigPolar"},
      {u"CFGConfig", u"CFGConfig"},
      {u"CFGConfi", u"CFGConfigCFGConfi"},
      {u"cfgconfigPolar", u"CFGConfigcfgconfigPolar"},
      {u"CFGClassHeader", u"CFGConfigCFGClassHeader"},
  };
  for (const auto& each : cases) {
    CFGConfig config;
    config.Class.Name = each.className;
    EXPECT_EQ(config.GetElementName(), each.elementName);
    EXPECT_EQ(loadFromXml(config, xmlOf(config)), 1);
  }
}

TEST(Config, AddSettingPutsTheGroupIntoCategory) {
  CFGConfig config;
  config.AddSetting(u"value", u"key", u"group", ColumnType::text, u"caption", 2, 3, 4);
  CFGCol column;
  ASSERT_TRUE(config.Class.FindCol(u"key", column));
  EXPECT_EQ(column.Category, u"group");
  EXPECT_EQ(column.Caption, u"caption");
  EXPECT_EQ(column.Value.Value, u"value");
  EXPECT_EQ(column.Type, ColumnType::text);
  EXPECT_EQ(column.Param1, 2);
  EXPECT_EQ(column.Prec, 3);
  EXPECT_EQ(column.Param5, 4);
  EXPECT_EQ(column.Param6, 1);
}

TEST(Config, OnlyAddColTouchesTheKeyOrder) {
  CFGClass object;
  object.ColAt(u"at").Value.Value = u"1";
  EXPECT_TRUE(object.ColAt(u"at").Name.IsEmpty());
  object.SetCol(u"set", CFGCol(u"2", u"another name", u"", 4, u""));
  EXPECT_EQ(object.find(u"set")->Name, u"another name");
  EXPECT_TRUE(object.KeyOrder.empty());

  object.AddCol(CFGCol(u"3", u"added", u"", 4, u""));
  object.AddCol(CFGCol(u"4", u"added", u"", 4, u""));
  object.AddCol(CFGCol(u"5", u"at", u"", 4, u""));
  EXPECT_EQ(object.KeyOrder, (Keys{u"added"}));
  EXPECT_EQ(object.find(u"added")->Value.Value, u"4");
  EXPECT_EQ(object.find(u"at")->Value.Value, u"5");

  CFGCol unchanged(u"x", u"", u"", 4, u"");
  EXPECT_FALSE(object.FindCol(u"absent", unchanged));
  EXPECT_EQ(unchanged.Value.Value, u"x");
}

TEST(Config, KeyOrderGrowsAndRefusesNegativePlaces) {
  CFGClass object;
  object.SetKeyAt(2, u"c");
  EXPECT_EQ(object.KeyOrder, (Keys{u"", u"", u"c"}));
  object.SetKeyAt(50, object.KeyOrder[2]);
  EXPECT_EQ(object.KeyOrder[50], u"c");
  EXPECT_THROW(object.SetKeyAt(-1, u"d"), InvalidArgException);
  EXPECT_THROW(object.SetKeyCount(-1), InvalidArgException);
  object.SetKeyCount(0);
  EXPECT_TRUE(object.KeyOrder.empty());
}

TEST(Config, ReadingUpdatesKnownSettingsAndAddsNone) {
  const CFGConfig file = [] {
    CFGConfig config = configWith({u"both", u"file only", u"no value"});
    config.Name = u"from file";
    config.ClassID = 5;
    config.Class.ColAt(u"both").Value.Value = u"7";
    config.Class.ColAt(u"both").Param1 = 9;
    return config;
  }();
  CFGConfig config = configWith({u"object only", u"both"});
  config.Class.ColAt(u"both").CodedValues.resize(2);
  ASSERT_EQ(loadFromXml(config, xmlOf(file)), 1);

  EXPECT_EQ(config.Name, u"from file");
  EXPECT_EQ(config.ClassID, 5);
  EXPECT_EQ(config.Class.Cols.size(), 2u);
  EXPECT_EQ(config.Class.find(u"object only")->Value.Value, u"0");
  EXPECT_EQ(config.Class.find(u"both")->Value.Value, u"7");
  // A column that is read is replaced whole, so what is never written falls back.
  EXPECT_EQ(config.Class.find(u"both")->Param1, 1);
  EXPECT_TRUE(config.Class.find(u"both")->CodedValues.empty());
  EXPECT_EQ(config.Class.KeyOrder, (Keys{u"object only", u"both"}));
}

TEST(Config, ReadsAllItsClassesAndSkipsStrangers) {
  CFGConfig config = configWith({u"a", u"b", u"c"});
  const char16_t* const text =
      u"<?xml version=\"1.0\"?><!-- c --><CFGConfigTest Name='n'><Stranger/>"
      u"<CFGClass Name='Renamed'><Other/><CFGCol Name='a'><X/><CFGValue Value='1'/></CFGCol>"
      u"<CFGCol><CFGValue Value='9'/></CFGCol><CFGCol Name='b'/></CFGClass>"
      u"<CFGClass><CFGCol Name='c'><CFGValue Value='3'/></CFGCol>"
      u"<CFGCol Name='a'><CFGValue Value='4'/></CFGCol></CFGClass></CFGConfigTest>";
  ASSERT_EQ(loadFromXml(config, text), 1);
  EXPECT_EQ(config.Class.Name, u"Renamed");
  EXPECT_EQ(config.Class.find(u"a")->Value.Value, u"4");
  EXPECT_EQ(config.Class.find(u"b")->Value.Value, u"");
  EXPECT_EQ(config.Class.find(u"c")->Value.Value, u"3");
  EXPECT_EQ(config.Class.Cols.size(), 3u);
}

TEST(Config, SeveralInOneDocumentAreReadOneAfterAnother) {
  CMarkup document;
  document.AddElem(u"root");
  document.IntoElem();
  for (const char16_t* const name : {u"first", u"second"}) {
    CFGConfig config = configWith({u"k"});
    config.Name = name;
    ASSERT_EQ(config.serializeXML(&document), 1);
  }
  document.OutOfElem();
  document.ResetChildPos();
  Keys names;
  while (document.FindChildElem()) {
    CFGConfig config = configWith({u"k"});
    EXPECT_EQ(config.loadByXML(&document), 1);
    names.push_back(config.Name);
  }
  EXPECT_EQ(names, (Keys{u"first", u"second"}));
}

TEST(Config, AssignmentKeepsWhatOnlyTheTargetHas) {
  CFGConfig target = configWith({u"target", u"both"});
  CFGConfig source = configWith({u"source", u"both"});
  source.Class.ColAt(u"both").Value.Value = u"5";
  source.Name = u"source";
  source.ClassID = 3;
  source.Reserved2 = 4;
  const CFGConfig copy(source);

  target = source;
  EXPECT_EQ(target.Class.Cols.size(), 3u);
  EXPECT_EQ(target.Class.KeyOrder, (Keys{u"source", u"both"}));
  EXPECT_EQ(target.Class.find(u"both")->Value.Value, u"5");
  EXPECT_EQ(target.Name, u"source");
  EXPECT_EQ(target.ClassID, 3);
  EXPECT_EQ(target.Reserved2, 4);

  source.Class.ColAt(u"both").Value.Value = u"6";
  EXPECT_EQ(copy.Class.find(u"both")->Value.Value, u"5");
  EXPECT_EQ(copy.Class.Cols.size(), 2u);
}

std::vector<int> reported;

struct RecordReports {
  RecordReports() : before(setErrorSink([](int number) noexcept { reported.push_back(number); })) {
    reported.reserve(100);
  }
  ~RecordReports() { setErrorSink(before); }
  ErrorSink before;
};

// From the part that failed to the whole, which leaves the document as it was.
TEST(Config, FailureWhileWritingIsReportedFromTheInside) {
  const RecordReports scope;
  CFGConfig config = configWith({u"key"});
  CFGCol& column = config.Class.ColAt(u"key");
  column.Caption = CString(u'c', 1000);
  column.Value.Value = CString(u'v', 5000);
  std::set<std::vector<int>> seen;
  for (int failures = 0;; ++failures) {
    CMarkup document;
    reported.clear();
    {
      const FailingAllocations failing(failures);
      if (config.serializeXML(&document) == 1) break;
    }
    EXPECT_TRUE(document.GetDoc().IsEmpty());
    seen.insert(reported);
  }
  for (const std::vector<int>& chain : std::initializer_list<std::vector<int>>{
           {42920, 42905, 42893, 42885},
           {42922, 42920, 42905, 42893, 42885},  // the name of the value's element
           {42905, 42893, 42885},
           {42893, 42885},
           {42885}}) {
    EXPECT_TRUE(seen.contains(chain)) << testing::PrintToString(chain);
  }
}

TEST(Config, FailureWhileReadingIsAnsweredAndKeepsTheValue) {
  const RecordReports scope;
  const CString before(u'b', 100);
  const CString after(u'a', 100);
  CFGConfig file = configWith({u"first", u"second"});
  for (auto& entry : file.Class.Cols) entry.value.Value.Value = after;
  const CString text = xmlOf(file);
  bool failed = true;
  for (int failures = 0; failed; ++failures) {
    CFGConfig config = configWith({u"first", u"second"});
    for (auto& entry : config.Class.Cols) entry.value.Value.Value = before;
    CMarkup document;
    document.SetDoc(text);
    document.FindChildElem();
    {
      const FailingAllocations failing(failures);
      failed = config.loadByXML(&document) != 1;
      EXPECT_EQ(failed, failing.hasFailed());
    }
    for (const auto& entry : config.Class.Cols) {
      const CString& value = entry.value.Value.Value;
      EXPECT_TRUE(value == after || (failed && value == before)) << value.utf8();
    }
  }
}

TEST(Header, CreatesItsColumnsOnceAndKeepsTheirCaptions) {
  CFGHeader header;
  EXPECT_EQ(header.Class.KeyOrder, (Keys{u"Class", u"Description"}));
  EXPECT_EQ(header.Class.find(u"Class")->Caption, u"Class ");
  EXPECT_EQ(header.setClass(u"A"), 1);
  EXPECT_EQ(header.setDescription(u"B"), 1);
  EXPECT_EQ(header.getClass(), u"A");
  EXPECT_EQ(header.getDescription(), u"B");
  EXPECT_EQ(header.Class.KeyOrder.size(), 2u);

  header.Class.RemoveCols();
  EXPECT_EQ(header.getClass(), u"");
  EXPECT_TRUE(header.Class.Cols.empty());
}

TEST(Header, ResetPosRestoresTheOrderOnly) {
  CFGHeader header;
  header.Class.KeyOrder = {u"x", u"Description", u"y"};
  header.Class.RemoveCols();
  header.ResetPos();
  EXPECT_EQ(header.Class.KeyOrder, (Keys{u"Class", u"Description"}));
  EXPECT_TRUE(header.Class.Cols.empty());
}

// Whatever was read before it, the first of a repeated attribute counts, as for every other
// reader of the document.
TEST(Config, RepeatedAttributeIsReadAsTheDocumentReadsIt) {
  CMarkup document;
  document.SetDoc(u"<CFGValue Value=\"1\" TransID=\"7\" Value=\"2\" Data=\"5\" ColID=\"3\"/>");
  CFGValue value;
  ASSERT_EQ(value.loadByXML(&document), 1);
  EXPECT_EQ(value.Value, document.GetChildAttrib(u"Value"));
  EXPECT_EQ(value.Value, u"1");
  EXPECT_EQ(value.TransID, 7);
  EXPECT_EQ(value.Data, 5);
  EXPECT_EQ(value.ColID, 3);
}

// An object whose element could not be read back is refused, neither lost nor in silence.
TEST(Config, NameThatIsNoElementNameIsRefusedAndReported) {
  const RecordReports scope;
  for (const char16_t* name : {u"A B", u"a>b", u"X/", u"X ObjectID=\"77\" y=\"", u"a{"}) {
    CFGConfig config;
    config.Class.Name = name;
    CMarkup document;
    reported.clear();
    EXPECT_EQ(config.serializeXML(&document), 0) << CString(name).utf8();
    EXPECT_EQ(reported, std::vector<int>{42885}) << CString(name).utf8();
    EXPECT_TRUE(document.GetDoc().IsEmpty());
  }
}

}  // namespace
}  // namespace kpx
