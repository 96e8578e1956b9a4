#include <gtest/gtest.h>

#include <string>

#include "kpx/domain/NasObjectKinds.h"
#include "kpx/domain/PointLocationMap.h"
#include "kpx/report/Error.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(NasObjectKinds, EachIsFoundBothWaysAndNothingNearIt) {
  for (const NasObjectKind& kind : nasObjectKinds()) {
    EXPECT_EQ(GetNASObjektart(kind.name), kind.code);
    EXPECT_EQ(nasObjectKindName(kind.code), kind.name);
    for (std::size_t at = 0; at < kind.name.size(); ++at) {
      std::u16string other(kind.name);
      other[at] = static_cast<char16_t>(other[at] + 0x100);
      EXPECT_EQ(GetNASObjektart(other), 0);
    }
    EXPECT_EQ(GetNASObjektart(std::u16string(kind.name) + u'\0'), 0);
  }
  int named = 0;
  for (std::int32_t code = -100000; code <= 100000; ++code) {
    named += nasObjectKindName(code).empty() ? 0 : 1;
  }
  EXPECT_EQ(named, 91);
}

TEST(NasObjectKinds, OddOnesAreRightAndUnknownOnesAreZero) {
  EXPECT_EQ(GetNASObjektart(u"SD_Hilfspunkt"), 13999);
  EXPECT_EQ(GetNASObjektart(u"AX_Gelaendekante"), 62040);
  EXPECT_EQ(GetNASObjektart(u"ax_flurstueck"), 0);
  EXPECT_EQ(GetNASObjektart(u""), 0);
  EXPECT_EQ(GetNASObjektart(CString(u'A', 1000000)), 0);
  for (const std::int32_t code : {0, -11001, 2147483647, -2147483647 - 1}) {
    EXPECT_TRUE(nasObjectKindName(code).empty()) << code;
  }
}

TEST(PointLocation, TextFormGoesBothWays) {
  const CString text = u"01234567-89AB-CDEF-FEDC-BA9876543210";
  const CAaaPunktortUUID expected(0x0123456789ABCDEFu, 0xFEDCBA9876543210u);
  for (const char16_t* const form :
       {u"01234567-89AB-CDEF-FEDC-BA9876543210", u"01234567-89ab-cdef-fedc-ba9876543210",
        u"{01234567-89AB-CDEF-FEDC-BA9876543210}"}) {
    CAaaPunktortUUID uuid;
    EXPECT_TRUE(CAaaPunktortUUID::fromText(form, uuid)) << CString(form).utf8();
    EXPECT_EQ(uuid.text(), text);
    EXPECT_TRUE(uuid == expected);
  }
  for (const char16_t* const wrong :
       {u"", u"0123456789ABCDEFFEDCBA9876543210", u"01234567-89AB-CDEF-FEDC-BA987654321",
        u"01234567-89AB-CDEF-FEDC-BA98765432100", u"01234567-89AB-CDEF-FEDC-BA987654321G",
        u"01234567-89AB-CDEF-FEDC0BA9876543210", u"{01234567-89AB-CDEF-FEDC-BA9876543210 ",
        u"0123456-789AB-CDEF-FEDC-BA9876543210", u"01234567-89AB-CDEF-FEDC-BA987654321\u0130"}) {
    CAaaPunktortUUID uuid = expected;
    EXPECT_FALSE(CAaaPunktortUUID::fromText(wrong, uuid)) << CString(wrong).utf8();
    EXPECT_TRUE(uuid == expected) << "a wrong text changed the identifier";
  }
  EXPECT_TRUE(CAaaPunktortUUID().isNull());
  EXPECT_FALSE(CAaaPunktortUUID(0, 1).isNull());
  EXPECT_FALSE(CAaaPunktortUUID(1, 0).isNull());
}

TEST(PointLocation, MapStoresReplacesAndForgets) {
  kpxCoordAndHeightIDs2POIDsRemoveAll();
  EXPECT_EQ(kpxCoordAndHeightIDs2POIDsHasData(), 0);
  CAaaPunktortUUID found(7, 7);
  EXPECT_EQ(kpxCoordAndHeightIDs2POIDsLookup(0, found), 0);
  EXPECT_EQ(found.high(), 7u);
  for (const std::int32_t id : {0, -1, 2147483647, -2147483647 - 1}) {
    EXPECT_EQ(kpxCoordAndHeightIDs2POIDsSetAt(id, CAaaPunktortUUID(1, 1)), 1);
    EXPECT_EQ(kpxCoordAndHeightIDs2POIDsSetAt(id, CAaaPunktortUUID(2, 3)), 1);
    EXPECT_NE(kpxCoordAndHeightIDs2POIDsLookup(id, found), 0);
    EXPECT_TRUE(found == CAaaPunktortUUID(2, 3));
  }
  EXPECT_NE(kpxCoordAndHeightIDs2POIDsHasData(), 0);
  {
    const ErrorCounts before = errorCounts();
    const FailingAllocations all(0);
    EXPECT_EQ(kpxCoordAndHeightIDs2POIDsSetAt(5, CAaaPunktortUUID(5, 5)), 0);
    EXPECT_EQ(errorCounts().reported, before.reported + 1);
  }
  EXPECT_EQ(kpxCoordAndHeightIDs2POIDsLookup(5, found), 0);
  kpxCoordAndHeightIDs2POIDsRemoveAll();
  EXPECT_EQ(kpxCoordAndHeightIDs2POIDsHasData(), 0);
}

}  // namespace
}  // namespace kpx
