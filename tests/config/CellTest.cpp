#include <gtest/gtest.h>

#include <limits>
#include <type_traits>
#include <utility>

#include "kpx/config/PersistentFields.h"
#include "kpx/report/Error.h"
#include "kpx/text/NumberText.h"
#include "kpx/xml/CMarkup.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

/// Gives every field a value of its own, also those that no file has.
template <class Object>
void fill(Object& object, int number) {
  const auto fillOne = [&]<class Owner, class Value>(const Field<Owner, Value>& field) {
    Value& value = object.*field.member;
    ++number;
    if constexpr (std::is_same_v<Value, CString>) {
      value = u"a<b> & \"c\" 'd' ä€\U0001F600\tend " + utlLongAsText(number);
    } else if constexpr (std::is_same_v<Value, double>) {
      value = 20210305083300.0 + number;
    } else {
      value = number % 2 == 0 ? number : std::numeric_limits<std::int32_t>::min() + number;
    }
  };
  forEachField<CDBObject>(fillOne);
  forEachField<Object>(fillOne);
  object.LockState = ++number;
  object.Reserved1 = ++number;
  object.Reserved2 = ++number;
}

template <class Object>
void expectSame(const Object& object, const Object& expected) {
  const auto compare = [&](const auto& field) {
    EXPECT_EQ(object.*field.member, expected.*field.member) << CString(field.name()).utf8();
  };
  forEachField<CDBObject>(compare);
  forEachField<Object>(compare);
}

/// A document at the first element in its root.
CMarkup inRoot(const CString& markup) {
  CMarkup document;
  document.SetDoc(u"<root>" + markup + u"</root>");
  document.FindElem();
  document.FindChildElem();
  return document;
}

template <class Object>
CString written(const Object& object) {
  CMarkup document;
  EXPECT_EQ(object.serializeXML(&document), 1);
  EXPECT_TRUE(document.IsWellFormed()) << document.GetError().utf8();
  return document.GetDoc();
}

template <class Object>
class EveryObject : public testing::Test {};
using ObjectTypes = testing::Types<CFGValue, CFGCodedValue, CFGRange, CFGCommand, CFGCol, CFGClass,
                                   CFGConfig, CFGRow, CFGTable, CJob, CProject, CUser>;
TYPED_TEST_SUITE(EveryObject, ObjectTypes);

TYPED_TEST(EveryObject, ComesBackWithAllThatIsWritten) {
  TypeParam object;
  fill(object, 10);
  CMarkup document = inRoot(written(object));
  TypeParam read;
  read.LockState = 99;
  ASSERT_EQ(read.loadByXML(&document), 1);
  expectSame(read, object);
  EXPECT_EQ(read.LockState, 99);
  EXPECT_EQ(read.Reserved1, 0);
  EXPECT_EQ(read.Reserved2, 0);
  EXPECT_EQ(written(read), written(object));
  EXPECT_EQ(document.GetChildTagName(), object.GetElementName()) << "the position moved";
}

TYPED_TEST(EveryObject, CopiesHaveEveryField) {
  TypeParam object;
  fill(object, 20);
  const TypeParam copy(object);
  TypeParam assigned;
  assigned = object;
  for (const TypeParam* const each : {&copy, &std::as_const(assigned)}) {
    expectSame(*each, object);
    EXPECT_EQ(each->LockState, object.LockState);
    EXPECT_EQ(each->Reserved1, object.Reserved1);
    EXPECT_EQ(each->Reserved2, object.Reserved2);
  }
}

TYPED_TEST(EveryObject, IsLeftAloneByAnotherElementAndByNoDocument) {
  TypeParam object;
  fill(object, 30);
  const TypeParam before(object);
  const ErrorCounts counts = errorCounts();
  for (const char16_t* const text :
       {u"<Other ObjectID=\"1\"/>", u"", u"<cfgvalue ObjectID=\"1\"/><cuser ObjectID=\"1\"/>"}) {
    CMarkup document = inRoot(text);
    EXPECT_EQ(object.loadByXML(&document), 0);
  }
  EXPECT_EQ(object.loadByXML(nullptr), 0);
  EXPECT_EQ(object.serializeXML(nullptr), 0);
  expectSame(object, before);
  EXPECT_EQ(errorCounts().reported, counts.reported);
}

TYPED_TEST(EveryObject, KeepsFieldsWhoseAttributesAreAbsent) {
  TypeParam object;
  fill(object, 40);
  TypeParam expected(object);
  CMarkup document = inRoot(u"<" + object.GetElementName() + u" TransID='7' Unknown=\"1\"/>");
  ASSERT_EQ(object.loadByXML(&document), 1);
  expected.TransID = 7;
  expectSame(object, expected);
}

TEST(Cells, AttributesStandInTheOrderThatStoredFilesHave) {
  CFGValue value(u"1");
  value.changed = 20210305083334.0;
  EXPECT_EQ(written(value),
            u"<CFGValue ObjectID=\"0\" UserChangedID=\"0\" UserCreatedID=\"0\" "
            u"changed=\"05.03.2021-08:33:34\" created=\"00.00.0000-00:00:00\" TransID=\"0\" "
            u"Value=\"1\" ColID=\"0\" RowID=\"0\" Data=\"0\"/>\r\n");
  const auto ownOf = [](const CDBObject& object) {
    const CString text = written(object);
    return text.Mid(text.Find(u" TransID=\"0\"") + 12);
  };
  EXPECT_EQ(ownOf(CFGCodedValue()), u" ColID=\"0\" Value=\"\" Data=\"0\"/>\r\n");
  EXPECT_EQ(ownOf(CFGRange()), u" ColID=\"0\" RangeFrom=\"\" RangeTo=\"\"/>\r\n");
  EXPECT_EQ(ownOf(CFGCommand()), u" Pos=\"0\" Caption=\"\" Command=\"0\"/>\r\n");
}

TEST(Cells, ReadsAttributesInAnyOrderAndWithReferences) {
  CMarkup document = inRoot(
      u"<CFGValue Data=\"&#45;5\" Value=\"&lt;&#228;&gt;\" created=\"2021-03-05\" "
      u"ObjectID=\" 42x\" ColID=\"99999999999\"/>");
  CFGValue value;
  ASSERT_EQ(value.loadByXML(&document), 1);
  EXPECT_EQ(value.Data, -5);
  EXPECT_EQ(value.Value, u"<ä>");
  EXPECT_EQ(value.created, 20210305000000.0);
  EXPECT_EQ(value.ObjectID, 42);
  EXPECT_EQ(value.ColID, 2147483647);
}

int lastReport = 0;

template <class Record>
int reportOfCopyWithoutMemory() {
  Record record;
  record.ObjectID = 1;
  record.Name = CString(u'x', 100);
  const ErrorSink before = setErrorSink([](int number) noexcept { lastReport = number; });
  {
    const FailingAllocations failing(0);
    const Record copy(record);
    EXPECT_TRUE(copy.Name.IsEmpty());
    EXPECT_EQ(copy.ObjectID, 0);
  }
  setErrorSink(before);
  return lastReport;
}

TEST(Records, CopyThatRunsOutOfMemoryIsEmptyAndReported) {
  EXPECT_EQ(reportOfCopyWithoutMemory<CJob>(), 43091);
  EXPECT_EQ(reportOfCopyWithoutMemory<CProject>(), 43210);
  EXPECT_EQ(reportOfCopyWithoutMemory<CUser>(), 43331);
}

}  // namespace
}  // namespace kpx
