#include "kpx/domain/CFCFieldInfos.h"

#include <gtest/gtest.h>

#include "kpx/report/Error.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

int reported = 0;

class FieldInfosTest : public testing::Test {
 protected:
  void SetUp() override {
    reported = 0;
    before_ = setErrorSink([](int number) noexcept { reported = number; });
  }
  void TearDown() override { setErrorSink(before_); }

  void add(const CString& kind, const CString& name) {
    CFCFieldInfo info;
    info.Name = name;
    info.Aliases.emplace_back().AliasText = name + u"'";
    infos.Add(kind, info);
  }

  CFCFieldInfos infos;

 private:
  ErrorSink before_ = nullptr;
};

TEST_F(FieldInfosTest, FiltersByKindWithCase) {
  add(u"Flur", u"1");
  add(u"flur", u"2");
  add(u"Flur", u"3");
  EXPECT_EQ(infos.GetCountArt(u"Flur"), 2);
  EXPECT_EQ(infos.GetCountArt(u"FLUR"), 0);
  CFCFieldInfos found = infos;
  EXPECT_TRUE(infos.GetAllByArt(u"Flur", found));
  ASSERT_EQ(found.GetCount(), 2);
  EXPECT_EQ(found.Infos[1].Name, u"3");
  EXPECT_EQ(found.Infos[1].Aliases.at(0).AliasText, u"3'");
  EXPECT_EQ(found.Arts[1], u"Flur");
  EXPECT_FALSE(infos.GetAllByArt(u"FLUR", found));
  EXPECT_EQ(found.GetCount(), 0);
  // The list itself as the target, and the kind one of its texts.
  EXPECT_TRUE(infos.GetAllByArt(infos.Arts[1], infos));
  ASSERT_EQ(infos.GetCount(), 1);
  EXPECT_EQ(infos.Infos[0].Name, u"2");
}

TEST_F(FieldInfosTest, IndicesOutsideTheList) {
  add(u"a", u"1");
  CFCFieldInfo info;
  info.Name = u"kept";
  EXPECT_FALSE(infos.GetAt(1, info));
  EXPECT_EQ(reported, 0);
  EXPECT_FALSE(infos.GetAt(-1, info));
  EXPECT_EQ(reported, 56922);
  EXPECT_EQ(info.Name, u"kept");
  EXPECT_TRUE(infos.GetAt(0, info));
  EXPECT_EQ(info.Name, u"1");
  info.Slot7 = 5;
  info.Empty();
  EXPECT_EQ(info.Slot7, -1);
  EXPECT_TRUE(info.Name.IsEmpty());
  EXPECT_TRUE(info.Aliases.empty());
  EXPECT_EQ(infos.Infos[0].Name, u"1");
}

TEST_F(FieldInfosTest, ArraysOfDifferentLengths) {
  add(u"a", u"1");
  infos.Arts.clear();
  CFCFieldInfos found;
  found.Add(u"kept", {});
  EXPECT_FALSE(infos.GetAllByArt(u"a", found));
  EXPECT_EQ(found.GetCount(), 1);
  EXPECT_EQ(infos.GetCountArt(u"a"), 0);
  EXPECT_EQ(reported, 80033);
  infos.RemoveAll();
  EXPECT_EQ(infos.GetCount(), 0);
}

}  // namespace
}  // namespace kpx
