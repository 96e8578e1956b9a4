#include <gtest/gtest.h>

#include "kpx/config/CFGConfig.h"
#include "kpx/config/CFGTable.h"
#include "kpx/report/Error.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/ObjectXml.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

CFGRow rowWith(const CString& key, const CString& value) {
  CFGRow row;
  row.AddCell(value, key, u"category", ColumnType::text, u"caption");
  return row;
}

CString valueOf(const CFGRow& row, const CString& key) {
  const CFGCol* const cell = row.find(key);
  return cell ? cell->Value.Value : CString(u"<none>");
}

TEST(Table, XmlHoldsTheHeaderOnly) {
  CFGTable table;
  table.AddColDef(u"", u"A", u"64", ColumnType::real, u"1434");
  table.SetCol(u"first", rowWith(u"A", u"1"));
  CFGTable readTable;
  ASSERT_EQ(loadFromXml(readTable, xmlOf(table)), 1);
  EXPECT_TRUE(readTable.Rows.empty());
  EXPECT_TRUE(readTable.Class.Cols.empty());

  CFGRow row = rowWith(u"A", u"1");
  row.RowNo = 7;
  CFGRow readRow = rowWith(u"B", u"kept");
  readRow.RowNo = 8;
  ASSERT_EQ(loadFromXml(readRow, xmlOf(row)), 1);
  EXPECT_EQ(readRow.RowNo, 8);
  EXPECT_EQ(readRow.Cells.size(), 1u);
  EXPECT_EQ(valueOf(readRow, u"B"), u"kept");
}

TEST(Table, AddingCellsAndColumnsReplacesWhatIsThere) {
  CFGRow row = rowWith(u"A", u"1");
  row.ColAt(u"A").CodedValues.resize(2);
  row.AddCell(u"2", u"A", u"group", ColumnType::integer, u"title");
  ASSERT_EQ(row.Cells.size(), 1u);
  const CFGCol& cell = *row.find(u"A");
  EXPECT_EQ(cell.Value.Value, u"2");
  EXPECT_EQ(cell.Category, u"group");
  EXPECT_EQ(cell.Caption, u"title");
  EXPECT_EQ(cell.Type, ColumnType::integer);
  EXPECT_TRUE(cell.CodedValues.empty());

  CFGTable table;
  table.AddColDef(u"1", u"B", u"g", ColumnType::text, u"c");
  table.AddColumn(CFGCol(u"", u"A", u"g", ColumnType::text, u"c"));
  table.AddColDef(u"2", u"B", u"g", ColumnType::text, u"c");
  EXPECT_EQ(table.Class.KeyOrder, (std::vector<CString>{u"B", u"A"}));
  EXPECT_EQ(table.Class.find(u"B")->Value.Value, u"2");
  table.ResetPos();
  EXPECT_EQ(table.Class.KeyOrder.size(), 2u);
}

TEST(Table, KeyedOperations) {
  CFGTable table;
  CFGRow row = rowWith(u"own", u"stays");
  EXPECT_FALSE(table.FindCol(u"x", row));
  EXPECT_EQ(valueOf(row, u"own"), u"stays");
  EXPECT_TRUE(table.ColAt(u"x").Cells.empty());
  EXPECT_EQ(table.Rows.size(), 1u);
  table.SetCol(u"x", rowWith(u"A", u"1"));
  table.SetCol(u"x", rowWith(u"B", u"2"));
  EXPECT_EQ(table.find(u"x")->Cells.size(), 1u) << "an earlier row shows through";
  EXPECT_EQ(table.find(u"X"), nullptr);
  EXPECT_TRUE(table.FindCol(u"x", row));
  EXPECT_EQ(valueOf(row, u"B"), u"2");

  CFGCol cell;
  EXPECT_FALSE(row.FindCol(u"b", cell));
  EXPECT_TRUE(row.FindCol(u"B", cell));
  EXPECT_EQ(cell.Value.Value, u"2");
  EXPECT_EQ(row.ColAt(u"new").Type, 0);
  row.SetCol(u"new", cell);
  EXPECT_EQ(valueOf(row, u"new"), u"2");
}

TEST(Table, CopiesAreDeepAndAssignmentKeepsWhatOnlyTheTargetHas) {
  CFGTable source;
  source.AddColDef(u"", u"A", u"g", ColumnType::text, u"c");
  source.SetCol(u"x", rowWith(u"A", u"1"));
  source.ColAt(u"x").RowName = u"name";
  CFGTable copy(source);
  copy.ColAt(u"x").ColAt(u"A").Value.Value = u"changed";
  copy.Class.ColAt(u"A").Caption = u"changed";
  EXPECT_EQ(valueOf(*source.find(u"x"), u"A"), u"1");
  EXPECT_EQ(source.Class.find(u"A")->Caption, u"c");

  CFGTable target;
  target.SetCol(u"y", rowWith(u"A", u"y"));
  target.SetCol(u"x", rowWith(u"B", u"b"));
  target = source;
  EXPECT_EQ(target.Rows.size(), 2u);
  EXPECT_EQ(target.find(u"x")->RowName, u"name");
  EXPECT_EQ(valueOf(*target.find(u"x"), u"A"), u"1");
  EXPECT_EQ(valueOf(*target.find(u"x"), u"B"), u"b");

  const CFGTable moved(std::move(copy));
  EXPECT_EQ(valueOf(*moved.find(u"x"), u"A"), u"changed");
}

TEST(Table, FailureWhileAddingStoresNothing) {
  const CString longText(u'x', 200);
  const CFGCol column(longText, longText, longText, ColumnType::text, longText);
  for (int after = 0; after < 4; ++after) {
    CFGRow row;
    CFGTable table;
    CFGConfig config;
    const GuardWatch watch;
    {
      const FailingAllocations failing(after);
      row.AddCell(longText, longText, longText, ColumnType::text, longText);
      table.AddColDef(longText, longText, longText, ColumnType::text, longText);
      table.AddColumn(column);
      config.AddColumn(column);
    }
    EXPECT_TRUE(watch.hasCaught());
    EXPECT_TRUE(row.Cells.empty());
    for (const CFGClass* const object : {&table.Class, &config.Class}) {
      EXPECT_TRUE(object->Cols.empty());
      EXPECT_TRUE(object->KeyOrder.empty());
    }
    row.AddCell(u"1", u"A", u"", ColumnType::text, u"");
    EXPECT_EQ(valueOf(row, u"A"), u"1");
  }
}

}  // namespace
}  // namespace kpx
