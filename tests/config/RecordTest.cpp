#include <gtest/gtest.h>

#include "kpx/config/CJob.h"
#include "kpx/config/CProject.h"
#include "kpx/config/CUser.h"
#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

template <class Record>
Record withHeader() {
  Record record;
  record.ObjectID = 1;
  record.UserChangedID = 2;
  record.UserCreatedID = 3;
  record.changed = 20210305083304.0;
  record.created = 20200101000000.0;
  record.TransID = -4;
  return record;
}

template <class Record>
CMarkup documentOf(const Record& record) {
  CMarkup document;
  document.AddElem(u"Root");
  document.IntoElem();
  EXPECT_EQ(record.serializeXML(&document), 1);
  document.OutOfElem();
  document.ResetPos();
  document.FindElem();
  document.FindChildElem();
  return document;
}

constexpr std::u16string_view header =
    u" ObjectID=\"1\" UserChangedID=\"2\" UserCreatedID=\"3\" changed=\"05.03.2021-08:33:04\""
    u" created=\"01.01.2020-00:00:00\" TransID=\"-4\"";

TEST(Records, AttributesStandInTheirOrderAndComeBack) {
  CProject project = withHeader<CProject>();
  project.Name = u"Aue & Co";
  project.Description = u"\"neu\"";
  project.Status = -1;
  project.Path = u"C:\\Projekte\\Aue";
  project.Text = u"a\nb";
  project.DBName = u"aue.db";
  project.DBType = 2147483647;
  CMarkup document = documentOf(project);
  EXPECT_NE(
      document.GetDoc().Find(u"<CProject" + CString(header) +
                             u" Name=\"Aue &amp; Co\" Description=\"&quot;neu&quot;\" Status=\"-1\""
                             u" Path=\"C:\\Projekte\\Aue\" Text=\"a\nb\" DBName=\"aue.db\""
                             u" DBType=\"2147483647\"/>"),
      -1)
      << document.GetDoc().utf8();
  CProject read;
  EXPECT_EQ(read.loadByXML(&document), 1);
  EXPECT_EQ(read.Text, u"a\nb");
  EXPECT_EQ(read.DBType, 2147483647);
  EXPECT_EQ(documentOf(read).GetDoc(), document.GetDoc());
}

TEST(Records, PasswordIsKeptExactly) {
  for (const char16_t* password : {u"", u" <geheim>\t\"' ", u"ä€𝄞"}) {
    CUser user = withHeader<CUser>();
    user.Type = 3;
    user.Name = u"Möller";
    user.Comment = u"k";
    user.Password = password;
    CMarkup document = documentOf(user);
    CUser read;
    read.Password = u"other";
    EXPECT_EQ(read.loadByXML(&document), 1);
    EXPECT_EQ(read.Password, password);
    EXPECT_EQ(documentOf(read).GetDoc(), document.GetDoc());
  }
}

TEST(Records, AnotherElementAndAbsentAttributesChangeNothing) {
  CJob job = withHeader<CJob>();
  job.Name = u"Tag 1";
  job.Type = 5;
  job.SystemID = 6;
  CMarkup document = documentOf(job);
  CProject project = withHeader<CProject>();
  project.Name = u"Aue";
  const CString before = documentOf(project).GetDoc();
  EXPECT_EQ(project.loadByXML(&document), 0);
  EXPECT_EQ(documentOf(project).GetDoc(), before);
  EXPECT_EQ(project.loadByXML(nullptr), 0);

  CMarkup partial(u"<Root><CJob Type='7'/></Root>");
  partial.FindElem();
  partial.FindChildElem();
  EXPECT_EQ(job.loadByXML(&partial), 1);
  EXPECT_EQ(job.Type, 7);
  EXPECT_EQ(job.SystemID, 6);
  EXPECT_EQ(job.ObjectID, 1);
  EXPECT_EQ(job.Name, u"Tag 1");
}

int lastReport = 0;

TEST(Records, CopyThatRunsOutOfMemoryIsEmptyAndReported) {
  CUser user = withHeader<CUser>();
  user.Name = CString(u'x', 100);
  user.Comment = CString(u'y', 100);
  const ErrorSink before = setErrorSink([](int number) noexcept { lastReport = number; });
  {
    FailingAllocations failing(1);
    const CUser copy(user);
    EXPECT_TRUE(copy.Name.IsEmpty());
    EXPECT_EQ(copy.ObjectID, 0);
  }
  EXPECT_EQ(lastReport, 43331);
  setErrorSink(before);
}

}  // namespace
}  // namespace kpx
