#include <gtest/gtest.h>

#include "kpx/config/CFGCol.h"
#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

/// A header in which every field differs from its default and from the others.
void fillHeader(CDBObject& object) {
  object.ObjectID = 11;
  object.LockState = 12;
  object.Reserved1 = 13;
  object.UserChangedID = -14;
  object.UserCreatedID = 15;
  object.changed = 20210305083334.0;
  object.created = 19991231235959.0;
  object.TransID = 2147483647;
  object.Reserved2 = 18;
}

void expectWrittenHeader(const CDBObject& object, const CDBObject& expected) {
  EXPECT_EQ(object.ObjectID, expected.ObjectID);
  EXPECT_EQ(object.UserChangedID, expected.UserChangedID);
  EXPECT_EQ(object.UserCreatedID, expected.UserCreatedID);
  EXPECT_EQ(object.changed, expected.changed);
  EXPECT_EQ(object.created, expected.created);
  EXPECT_EQ(object.TransID, expected.TransID);
}

void expectUnwrittenHeader(const CDBObject& object, const CDBObject& expected) {
  EXPECT_EQ(object.LockState, expected.LockState);
  EXPECT_EQ(object.Reserved1, expected.Reserved1);
  EXPECT_EQ(object.Reserved2, expected.Reserved2);
}

const CString awkward = u"a<b> & \"c\" 'd' ä€\U0001F600\tend ";

CFGCol fullColumn() {
  CFGCol column(u"0.02", u"Tol", awkward, ColumnType::real, u"Toleranz", 21, 22, 23, 24, 25, 26);
  fillHeader(column);
  column.ClassID = 31;
  column.Length = 32;
  column.Nullable = 33;
  column.Empty = 34;
  column.Default = awkward;
  column.Unit = 35;
  column.Param2 = 36;
  column.Ranges.resize(2);
  column.CodedValues.resize(1);
  column.CodedValues[0].Value = u"code";
  column.Commands.resize(3);
  column.Value.Data = 37;
  return column;
}

/// Writes the object below a root element and makes it the current child.
template <class Object>
CMarkup documentWith(const Object& object) {
  CMarkup document;
  document.AddElem(u"root");
  document.IntoElem();
  EXPECT_EQ(object.serializeXML(&document), 1);
  CMarkup again;
  again.SetDoc(document.GetDoc());
  EXPECT_TRUE(again.IsWellFormed()) << again.GetError().utf8();
  EXPECT_TRUE(again.FindElem());
  EXPECT_TRUE(again.FindChildElem());
  return again;
}

TEST(Cells, ColumnIsWrittenInTheOrderThatStoredFilesHave) {
  CFGCol column(u"1", u"Key", u"Group", ColumnType::integer, u"Caption");
  column.changed = 20210305083334.0;
  const CMarkup document = documentWith(column);
  EXPECT_EQ(document.GetChildSubDoc(),
            u"<CFGCol ObjectID=\"0\" UserChangedID=\"0\" UserCreatedID=\"0\" "
            u"changed=\"05.03.2021-08:33:34\" created=\"00.00.0000-00:00:00\" TransID=\"0\" "
            u"ClassID=\"0\" Type=\"1\" Name=\"Key\" Caption=\"Caption\" Category=\"Group\" "
            u"Length=\"0\" Prec=\"0\" Nullable=\"0\" Empty=\"0\" Default=\"\" Unit=\"0\">\r\n"
            u"<CFGValue ObjectID=\"0\" UserChangedID=\"0\" UserCreatedID=\"0\" "
            u"changed=\"00.00.0000-00:00:00\" created=\"00.00.0000-00:00:00\" TransID=\"0\" "
            u"Value=\"1\" ColID=\"0\" RowID=\"0\" Data=\"0\"/>\r\n"
            u"</CFGCol>");
}

TEST(Cells, ColumnReadsBackWhatIsWrittenAndKeepsTheRest) {
  const CFGCol written = fullColumn();
  CMarkup document = documentWith(written);
  CFGCol column;
  column.LockState = 99;
  ASSERT_EQ(column.loadByXML(&document), 1);

  expectWrittenHeader(column, written);
  EXPECT_EQ(column.LockState, 99);
  EXPECT_EQ(column.ClassID, 31);
  EXPECT_EQ(column.Type, ColumnType::real);
  EXPECT_EQ(column.Name, u"Tol");
  EXPECT_EQ(column.Caption, u"Toleranz");
  EXPECT_EQ(column.Category, awkward);
  EXPECT_EQ(column.Length, 32);
  EXPECT_EQ(column.Prec, 22);
  EXPECT_EQ(column.Nullable, 33);
  EXPECT_EQ(column.Empty, 34);
  EXPECT_EQ(column.Default, awkward);
  EXPECT_EQ(column.Unit, 35);
  EXPECT_EQ(column.Value.Value, u"0.02");
  EXPECT_EQ(column.Value.Data, 37);

  EXPECT_EQ(column.Param1, 1);
  EXPECT_EQ(column.Param2, 1);
  EXPECT_EQ(column.Param3, 0);
  EXPECT_EQ(column.Param6, 1);
  EXPECT_TRUE(column.Ranges.empty());
  EXPECT_TRUE(column.CodedValues.empty());
  EXPECT_TRUE(column.Commands.empty());
}

TEST(Cells, CopiesAreDeepAndHaveEveryField) {
  const CFGCol source = fullColumn();
  CFGCol copy(source);
  CFGCol assigned;
  assigned = source;
  for (const CFGCol* const each : {&copy, &assigned}) {
    expectWrittenHeader(*each, source);
    expectUnwrittenHeader(*each, source);
    EXPECT_EQ(each->Param1, 21);
    EXPECT_EQ(each->Param2, 36);
    EXPECT_EQ(each->Param3, 25);
    EXPECT_EQ(each->Param4, 24);
    EXPECT_EQ(each->Param5, 23);
    EXPECT_EQ(each->Param6, 26);
    EXPECT_EQ(each->Ranges.size(), 2u);
    EXPECT_EQ(each->Commands.size(), 3u);
  }
  copy.CodedValues[0].Value = u"other";
  EXPECT_EQ(source.CodedValues[0].Value, u"code");
}

template <class Object>
class EveryCell : public testing::Test {};
using CellTypes = testing::Types<CFGValue, CFGCodedValue, CFGRange, CFGCommand, CFGCol>;
TYPED_TEST_SUITE(EveryCell, CellTypes);

TYPED_TEST(EveryCell, WritesTheSameAgainAfterReading) {
  TypeParam written;
  fillHeader(written);
  if constexpr (requires { written.Value = CString(); }) written.Value = awkward;
  if constexpr (requires { written.Caption; }) written.Caption = awkward;
  if constexpr (requires { written.RangeFrom; }) written.RangeFrom = written.RangeTo = awkward;
  if constexpr (requires { written.Data; }) written.Data = -1;
  if constexpr (requires { written.Pos; }) written.Pos = written.Command = -2147483647 - 1;
  CMarkup document = documentWith(written);
  TypeParam read;
  ASSERT_EQ(read.loadByXML(&document), 1);
  EXPECT_EQ(documentWith(read).GetDoc(), document.GetDoc());
  EXPECT_EQ(document.GetChildTagName(), written.GetElementName()) << "the position moved";
}

TYPED_TEST(EveryCell, RefusesAnotherElementAndNoDocument) {
  TypeParam object;
  fillHeader(object);
  for (const char16_t* const text :
       {u"<root><Other ObjectID=\"1\"/></root>", u"<root/>", u"",
        u"<root><cfgvalue ObjectID=\"1\"/><cfgcol ObjectID=\"1\"/></root>"}) {
    CMarkup document;
    document.SetDoc(text);
    document.FindElem();
    document.FindChildElem();
    EXPECT_EQ(object.loadByXML(&document), 0);
    EXPECT_EQ(object.ObjectID, 11);
  }
  const ErrorCounts before = errorCounts();
  EXPECT_EQ(object.loadByXML(nullptr), 0);
  EXPECT_EQ(object.serializeXML(nullptr), 0);
  EXPECT_EQ(errorCounts().reported, before.reported);
}

TYPED_TEST(EveryCell, KeepsFieldsWhoseAttributesAreAbsent) {
  TypeParam object;
  fillHeader(object);
  TypeParam expected(object);
  CString text = u"<root><";
  text += object.GetElementName().view();
  text += u" TransID='7' Unknown=\"1\"/></root>";
  CMarkup document;
  document.SetDoc(text);
  document.FindElem();
  document.FindChildElem();
  ASSERT_EQ(object.loadByXML(&document), 1);
  expected.TransID = 7;
  expectWrittenHeader(object, expected);
}

TEST(Cells, ReadsAttributesInAnyOrderAndWithReferences) {
  CMarkup document;
  document.SetDoc(
      u"<root><CFGValue Data=\"&#45;5\" Value=\"&lt;&#228;&gt;\" created=\"2021-03-05\" "
      u"ObjectID=\" 42x\" ColID=\"99999999999\"/></root>");
  document.FindElem();
  document.FindChildElem();
  CFGValue value;
  ASSERT_EQ(value.loadByXML(&document), 1);
  EXPECT_EQ(value.Data, -5);
  EXPECT_EQ(value.Value, u"<ä>");
  EXPECT_EQ(value.created, 20210305000000.0);
  EXPECT_EQ(value.ObjectID, 42);
  EXPECT_EQ(value.ColID, 2147483647);
}

}  // namespace
}  // namespace kpx
