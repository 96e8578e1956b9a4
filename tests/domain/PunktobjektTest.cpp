#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <random>
#include <utility>
#include <vector>

#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"
#include "tests/domain/PunktobjektFields.h"

namespace kpx {
namespace {

std::vector<CString> properties(const CNAS_Punktobjekt& point) {
  std::vector<CString> list;
  list.reserve(static_cast<std::size_t>(point.sonstigeEigenschaftenGetSize()));
  for (int i = 0; i < point.sonstigeEigenschaftenGetSize(); ++i) {
    list.push_back(point.sonstigeEigenschaftenGetAt(i));
  }
  return list;
}

// --- comparing and copying ------------------------------------------------------------------

TEST(Punktobjekt, OnlyWhatIdentifiesAPointIsCompared) {
  const CNAS_Punktobjekt point = fullPoint();
  for (const PointText& text : pointTexts) {
    CNAS_Punktobjekt other(point);
    (other.*text.field).MakeReverse();
    EXPECT_EQ(point.IsEqual(other), text.isCompared ? 0 : 1) << text.name;
    EXPECT_EQ(other.IsEqual(point), text.isCompared ? 0 : 1) << text.name;
  }
  using Change = std::function<void(CNAS_Punktobjekt&)>;
  const std::pair<Change, int> changes[] = {
      {[](CNAS_Punktobjekt&) {}, 1},
      {[](CNAS_Punktobjekt& p) { ++p.ObjArt; }, 0},
      {[](CNAS_Punktobjekt& p) { ++p.LockState, ++p.ObjectID; }, 1},
      {[](CNAS_Punktobjekt& p) { p.Punktorte.clear(); }, 1},
      {[](CNAS_Punktobjekt& p) { p.sonstigeEigenschaftenAdd(u"one more"); }, 0},
      {[](CNAS_Punktobjekt& p) { p.sonstigeEigenschaftenSetAt(2, u"other"); }, 0},
      {[](CNAS_Punktobjekt& p) { std::swap(p.Sicherungspunkte[0], p.Sicherungspunkte[2]); }, 0},
      {[](CNAS_Punktobjekt& p) { p.Sicherungspunkte.pop_back(); }, 0},
      {[](CNAS_Punktobjekt& p) { p.ZeigtAufExternes.pop_back(); }, 0},
      {[](CNAS_Punktobjekt& p) { p.ZeigtAufExternes[1].Art = u"x"; }, 0},
      {[](CNAS_Punktobjekt& p) { p.ZeigtAufExternes[1].Typ = u"x"; }, 0},
      {[](CNAS_Punktobjekt& p) { p.ZeigtAufExternes[1].Fachdaten = u"x"; }, 0},
      {[](CNAS_Punktobjekt& p) { p.ZeigtAufExternes[1].FachdatenUrl = u"x"; }, 1},
      {[](CNAS_Punktobjekt& p) { p.ZeigtAufExternes[1].Reserved = u"x"; }, 1},
      {[](CNAS_Punktobjekt& p) { p.ZeigtAufExternes[0].Fachdaten.MakeUpper(); }, 1},
      {[](CNAS_Punktobjekt& p) { p.Abmarkung.MakeUpper(); }, 0},
      {[](CNAS_Punktobjekt& p) { p.Sicherungspunkte[0].MakeUpper(); }, 0},
  };
  for (std::size_t i = 0; i < std::size(changes); ++i) {
    CNAS_Punktobjekt other(point);
    changes[i].first(other);
    EXPECT_EQ(point.IsEqual(other), changes[i].second) << "change " << i;
  }
}

TEST(Punktobjekt, CopiesAreDeepAndEmptyKeepsOnlyThePointLocations) {
  const CNAS_Punktobjekt source = fullPoint();
  CNAS_Punktobjekt copy(source);
  CNAS_Punktobjekt assigned;
  assigned.Sicherungspunkte = {u"gone"};
  assigned = source;
  for (const CNAS_Punktobjekt* const each : {&copy, &assigned}) {
    for (const PointText& text : pointTexts) {
      EXPECT_EQ(each->*text.field, source.*text.field) << text.name;
    }
    EXPECT_EQ(each->IsEqual(source), 1);
    EXPECT_EQ(each->Reserved1, 3);
    EXPECT_EQ(each->Reserved2, 7);
    EXPECT_EQ(each->created, source.created);
    EXPECT_EQ(each->ZeigtAufExternes[0].Reserved, u"kept by its owner");
    EXPECT_TRUE(each->Punktorte == source.Punktorte);
  }
  copy.sonstigeEigenschaftenSetAt(0, u"changed");
  copy.Punktorte.clear();
  EXPECT_EQ(assigned.IsEqual(source), 1);
  EXPECT_EQ(source.Punktorte.size(), 1u);

  assigned.Empty();
  EXPECT_EQ(assigned.IsEqual(CNAS_Punktobjekt()), 1);
  for (const PointText& text : pointTexts) EXPECT_EQ(assigned.*text.field, u"") << text.name;
  EXPECT_EQ(assigned.ObjectID, 0);
  EXPECT_EQ(assigned.LockState, 0);
  EXPECT_EQ(assigned.Reserved2, 0);
  EXPECT_EQ(assigned.changed, 0.0);
  EXPECT_TRUE(assigned.Punktorte == source.Punktorte);
}

// --- other properties -----------------------------------------------------------------------

TEST(Punktobjekt, PropertiesAreTrimmedAndKeptOnce) {
  CNAS_Punktobjekt point;
  const std::pair<const char16_t*, int> added[] = {
      {u"  Passpunkt \t\r\n", 1},
      {u"passpunkt", 1},
      {u"", 0},
      {u" \t\n ", 0},
      {u"Ähre", 1},
      {u"äHRE ", 1},
      {u"a  b", 1},
  };
  for (const auto& [text, answer] : added) {
    EXPECT_EQ(point.sonstigeEigenschaftenAdd(text), answer) << CString(text).utf8();
  }
  EXPECT_EQ(properties(point), (std::vector<CString>{u"Passpunkt", u"Ähre", u"a  b"}));
}

/// What is added is compared with all that is there, however it came there.
TEST(Punktobjekt, PropertiesOfLongListsAreKeptOnceWhateverElseChangesTheList) {
  std::mt19937 random(8);
  CNAS_Punktobjekt point;
  std::vector<CString> expected;
  const auto anyText = [&] {
    CString text;
    text.Format(u"Größe %u", random() % 500);
    return random() % 2 == 0 ? text : text.MakeUpper();
  };
  for (int step = 0; step < 20'000; ++step) {
    const CString text = anyText();
    const unsigned choice = random() % 1000;
    if (choice < 700) {
      EXPECT_EQ(point.sonstigeEigenschaftenAdd(u" " + text), 1);
      const bool isThere = std::ranges::any_of(
          expected, [&](const CString& each) { return each.CompareNoCase(text) == 0; });
      if (!isThere) expected.push_back(text);
    } else if (choice < 990 && !expected.empty()) {
      const std::size_t at = random() % expected.size();
      point.sonstigeEigenschaftenSetAt(static_cast<int>(at), text);
      expected[at] = text;
    } else if (choice < 994) {
      point.sonstigeEigenschaftenGetAsText();
      std::ranges::sort(expected);
    } else if (choice < 998) {
      CNAS_Punktobjekt copy;
      for (int i = 0; i < 40; ++i) copy.sonstigeEigenschaftenAdd(anyText() + u"x");
      if (choice == 994) copy = point;
      if (choice == 995) copy = CNAS_Punktobjekt(point);
      if (choice > 995) copy.sonstigeEigenschaftenCopy(&point);
      point = std::move(copy);
    } else if (choice == 998) {
      point.sonstigeEigenschaftenRemoveAll();
      expected.clear();
    }
    if (choice >= 700 || step % 97 == 0) {
      ASSERT_EQ(properties(point), expected) << step;
    }
  }
}

TEST(Punktobjekt, PropertiesAsTextAreSortedWithIgFirst) {
  using List = std::vector<CString>;
  const std::pair<List, const char16_t*> cases[] = {
      {{u"b", u"Passpunkt", u"IG"}, u"IG, PP, b"},
      {{u"z", u"Za", u"ä", u"iG", u"a"}, u"iG, Za, a, z, ä"},
      {{u"iGx", u"Passpunkte und Passpunkt", u"h"}, u"PPe und PP, h, iGx"},
      {{}, u""},
  };
  for (const auto& [list, expected] : cases) {
    CNAS_Punktobjekt point;
    for (const CString& text : list) point.sonstigeEigenschaftenAdd(text);
    EXPECT_EQ(point.sonstigeEigenschaftenGetAsText(), expected);
  }
  // Lists from files may hold what adding would not have taken: the order stays well defined.
  CNAS_Punktobjekt point;
  for (const CString& text : List{u"1", u"2", u"3", u"4"}) point.sonstigeEigenschaftenAdd(text);
  int index = 0;
  for (const CString& text : List{u"ig", u"", u"IG", u"iG"}) {
    point.sonstigeEigenschaftenSetAt(index++, text);
  }
  EXPECT_EQ(point.sonstigeEigenschaftenGetAsText(), u"IG, iG, ig, ");
  EXPECT_EQ(properties(point), (List{u"IG", u"iG", u"ig", u""})) << "the list stays sorted";
}

TEST(Punktobjekt, PropertyIndexesOutsideRaise) {
  CNAS_Punktobjekt point;
  for (const int index : {0, -1}) {
    EXPECT_THROW(point.sonstigeEigenschaftenGetAt(index), InvalidArgException);
    EXPECT_THROW(point.sonstigeEigenschaftenSetAt(index, u"x"), InvalidArgException);
  }
  point.sonstigeEigenschaftenAdd(u"a");
  EXPECT_EQ(point.sonstigeEigenschaftenSetAt(0, point.sonstigeEigenschaftenGetAt(0) + u'b'), 1);
  EXPECT_EQ(properties(point), std::vector<CString>{u"ab"});
  EXPECT_THROW(point.sonstigeEigenschaftenGetAt(1), InvalidArgException);
}

TEST(Punktobjekt, PropertiesAreTakenOverWhole) {
  CNAS_Punktobjekt point = fullPoint();
  EXPECT_EQ(point.sonstigeEigenschaftenCopy(&point), 1);
  EXPECT_EQ(point.sonstigeEigenschaftenGetSize(), 3);
  EXPECT_EQ(point.sonstigeEigenschaftenCopy(nullptr), 0);
  EXPECT_EQ(point.sonstigeEigenschaftenGetSize(), 3);
  CNAS_Punktobjekt other;
  other.sonstigeEigenschaftenAdd(u"replaced");
  EXPECT_EQ(other.sonstigeEigenschaftenCopy(&point), 1);
  EXPECT_EQ(properties(other), properties(point));
  other.sonstigeEigenschaftenRemoveAll();
  EXPECT_EQ(other.sonstigeEigenschaftenGetSize(), 0);
  EXPECT_EQ(point.sonstigeEigenschaftenGetSize(), 3);
}

TEST(Punktobjekt, LackOfMemoryIsReportedAndChangesNoProperty) {
  const CNAS_Punktobjekt source = fullPoint();
  const CString longText(u'x', 100);
  using Operation = std::function<bool(CNAS_Punktobjekt&)>;
  const Operation operations[] = {
      [&](CNAS_Punktobjekt& p) { return p.sonstigeEigenschaftenAdd(longText) != 0; },
      [&](CNAS_Punktobjekt& p) { return p.sonstigeEigenschaftenSetAt(0, longText) != 0; },
      [&](CNAS_Punktobjekt& p) { return p.sonstigeEigenschaftenCopy(&source) != 0; },
      [&](CNAS_Punktobjekt& p) { return !p.sonstigeEigenschaftenGetAsText().IsEmpty(); },
      [&](CNAS_Punktobjekt& p) { return !p.getClassName().IsEmpty(); },
  };
  for (const Operation& operation : operations) {
    int failures = 0;
    for (bool done = false; !done; ++failures) {
      CNAS_Punktobjekt point;
      point.sonstigeEigenschaftenAdd(u"a property that is long enough for memory of its own");
      const CNAS_Punktobjekt before(point);
      const ErrorCounts counts = errorCounts();
      {
        const FailingAllocations failing(failures);
        done = operation(point);
      }
      EXPECT_EQ(errorCounts().reported, counts.reported + (done ? 0 : 1));
      EXPECT_TRUE(done || point.IsEqual(before) == 1);
      ASSERT_LT(failures, 50);
    }
    EXPECT_GT(failures, 1);
  }
}

}  // namespace
}  // namespace kpx
