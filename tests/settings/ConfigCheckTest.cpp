#include "kpx/settings/document/ConfigCheck.h"

#include <gtest/gtest.h>

#include <algorithm>

#include "kpx/settings/CFGGeneralSettings.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

/// The text of a new object, with replacements made in it.
CString fileText(const std::vector<std::pair<CString, CString>>& replacements = {}) {
  CMarkup document;
  EXPECT_EQ(CFGGeneralSettings().serializeXML(&document), 1);
  CString text = document.GetDoc();
  for (const auto& [from, to] : replacements) {
    EXPECT_EQ(text.Replace(from, to), 1) << from.utf8();
  }
  return text;
}

/// A column as it stands in a file.
CString columnText(const CString& key, const CString& value) {
  return u"<CFGCol Name=\"" + key + u"\"><CFGValue Value=\"" + value + u"\"/></CFGCol>";
}

CString minimalText(const CString& columns) {
  return u"<CFGConfigCFGGeneralSettings><CFGClass>" + columns +
         u"</CFGClass></CFGConfigCFGGeneralSettings>";
}

TEST(ConfigCheck, ManyEmptyConfigurationsDoNotGiveEndlessFindings) {
  CString text = u"<r>";
  for (int i = 0; i < 20'000; ++i) text += u"<CFGConfigCFGGeneralSettings/>";
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(text + CString(u"</r>")));
  const Problems<ConfigFinding> findings =
      validateConfigurations(ConfigView(document), {.limit = 10});
  EXPECT_EQ(findings.first.size(), 10u);
  EXPECT_EQ(findings.count, 20'000u);
}

TEST(ConfigCheck, NewFileHasNoFindings) {
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(fileText()));
  EXPECT_TRUE(validateConfigurations(ConfigView(document)).empty());
}

TEST(ConfigCheck, FindsEachFaultAtItsPlace) {
  using enum FindingKind;
  const struct {
    const char16_t* columns;
    FindingKind kind;
    const char16_t* key;
    const char16_t* at;
  } cases[] = {
      {u"<CFGCol Name='KT_New'><CFGValue Value='1'/></CFGCol>", unknownKey, u"KT_New", u"<CFGCol"},
      {u"<CFGCol><CFGValue Value='1'/></CFGCol>", unknownKey, u"", u"<CFGCol"},
      {u"<CFGCol Name='FB_HG'/>", missingValue, u"FB_HG", u"<CFGCol"},
      {u"<CFGCol Name='FB_HG'><CFGValue/></CFGCol>", missingValue, u"FB_HG", u"<CFGCol"},
      {u"<CFGCol Name='FB_HG'><CFGValue Value='acht'/></CFGCol>", badValue, u"FB_HG", u"acht"},
      {u"<CFGCol Name='FB_HG'><CFGValue Value=''/></CFGCol>", badValue, u"FB_HG", u"'/></CFGCol>"},
      {u"<CFGCol Name='FB_Message'><CFGValue Value='ja'/></CFGCol>", badValue, u"FB_Message",
       u"ja"},
      {u"<CFGCol Name='FB_Tol_Z'><CFGValue Value='1.234,56'/></CFGCol>", thousandsMark, u"FB_Tol_Z",
       u"1.234,56"},
  };
  for (const auto& each : cases) {
    CMarkup document;
    ASSERT_TRUE(document.SetDoc(minimalText(each.columns)));
    auto findings = validateConfigurations(ConfigView(document)).first;
    std::erase_if(findings, [](const auto& finding) { return finding.kind == missingKey; });
    ASSERT_EQ(findings.size(), 1u) << CString(each.columns).utf8();
    EXPECT_EQ(findings[0].kind, each.kind) << describe(findings[0]).utf8();
    EXPECT_EQ(findings[0].key, each.key);
    EXPECT_EQ(findings[0].className, u"CFGGeneralSettings");
    EXPECT_TRUE(document.GetDoc().Mid(findings[0].offset).StartsWith(each.at));
  }
}

TEST(ConfigCheck, FindsWhatSavingWouldLose) {
  using enum FindingKind;
  const auto with = [](CString text, const CString& from, const CString& to) {
    // The first of them only.
    const int at = text.Find(from);
    EXPECT_GE(at, 0) << from.utf8();
    return text.Left(at) + to + text.Mid(at + from.GetLength());
  };
  const CString good = fileText();
  const struct {
    const char16_t* from;
    const char16_t* to;
    FindingKind kind;
  } cases[] = {
      {u" Name=\"CFGGeneralSettings\"", u" Name=\"CFGConfigPoly\"", renamingClass},
      {u" Name=\"CFGGeneralSettings\"", u" Name=\"\"", renamingClass},
      {u"Type=\"1\" Name=\"FB_HG\"", u"Type=\"4\" Name=\"FB_HG\"", wrongType},
      {u"Type=\"1\" Name=\"FB_HG\"", u"Type=\"x\" Name=\"FB_HG\"", badAttribute},
      {u"ObjectID=\"0\"", u"ObjectID=\"abc\"", badAttribute},
      {u"changed=\"00.00.0000-00:00:00\"", u"changed=\"gestern\"", badAttribute},
      {u"ObjectID=\"0\"", u"ObjectID=\"0\" Colour=\"1\"", foreignAttribute},
      {u"ObjectID=\"0\"", u"ObjectID=\"0\" ObjectID=\"0\"", repeatedAttribute},
      {u"<CFGCol", u"<!-- x --><CFGCol", foreignMarkup},
      {u"<CFGCol", u"<Other/><CFGCol", foreignMarkup},
  };
  for (const auto& each : cases) {
    CMarkup document;
    ASSERT_TRUE(document.SetDoc(with(good, each.from, each.to)));
    const auto findings = validateConfigurations(ConfigView(document)).first;
    ASSERT_EQ(findings.size(), 1u) << CString(each.to).utf8();
    EXPECT_EQ(findings[0].kind, each.kind) << describe(findings[0]).utf8();
  }
  CMarkup classless;
  ASSERT_TRUE(classless.SetDoc(u"<CFGConfigCFGGeneralSettings>" + columnText(u"FB_HG", u"1") +
                               u"</CFGConfigCFGGeneralSettings>"));
  const auto findings = validateConfigurations(ConfigView(classless)).first;
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].kind, missingClass);
}

TEST(ConfigCheck, SaysWhatProgramsRead) {
  const struct {
    const char16_t* key;
    const char16_t* value;
    const char16_t* sentence;
  } cases[] = {
      {u"FB_HG", u"4.5", u"has a value that is not a whole number: \"4.5\" is read as 4"},
      {u"FB_HG", u"", u"has a value that is empty: \"\" is read as 0"},
      {u"FB_HG", u"99999999999",
       u"has a value that is too large: \"99999999999\" is read as 2147483647"},
      {u"FB_Tol_Z", u"0,0355",
       u"has a value that is not as the suite writes it: \"0,0355\" is read as 0.0355 and written "
       u"as 0.036"},
      {u"FB_Tol_Z", u"---",
       u"has a value that is not as the suite writes it: \"---\" is read as 8888.88888 and written "
       u"as 8888.889"},
      {u"FB_Tol_Z", u"1.234,56",
       u"has a thousands mark in its value: \"1.234,56\" is read as 1.234"},
  };
  for (const auto& each : cases) {
    CMarkup document;
    ASSERT_TRUE(document.SetDoc(minimalText(columnText(each.key, each.value))));
    auto findings = validateConfigurations(ConfigView(document)).first;
    std::erase_if(findings, [](const auto& f) { return f.kind == FindingKind::missingKey; });
    ASSERT_EQ(findings.size(), 1u) << CString(each.value).utf8();
    EXPECT_EQ(describe(findings[0]), each.sentence);
  }
}

TEST(ConfigCheck, FindsWhatIsMissingAndDoubleAndBroken) {
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(fileText({{u"Name=\"KT_Message\"", u"Name=\"KT_LZ\""}})));
  const auto findings = validateConfigurations(ConfigView(document)).first;
  ASSERT_EQ(findings.size(), 2u);
  EXPECT_EQ(findings[0].kind, FindingKind::missingKey);
  EXPECT_EQ(findings[0].key, u"KT_Message");
  EXPECT_EQ(findings[1].kind, FindingKind::duplicateKey);
  EXPECT_EQ(findings[1].key, u"KT_LZ");

  ASSERT_TRUE(document.SetDoc(u"<CFGConfigCFGClassHeader><CFGClass>" +
                              columnText(u"Class", u"one\ntwo") + columnText(u"Description", u"") +
                              u"</CFGClass></CFGConfigCFGClassHeader>"));
  const auto broken = validateConfigurations(ConfigView(document)).first;
  ASSERT_EQ(broken.size(), 1u);
  EXPECT_EQ(broken[0].kind, FindingKind::lineBreak);

  ASSERT_TRUE(document.SetDoc(u"<r><CFGConfigX><CFGClass/></CFGConfigX></r>"));
  const auto unknown = validateConfigurations(ConfigView(document)).first;
  ASSERT_EQ(unknown.size(), 1u);
  EXPECT_EQ(unknown[0].kind, FindingKind::unknownClass);
  EXPECT_EQ(unknown[0].className, u"CFGConfigX");
  EXPECT_EQ(unknown[0].offset, 3);
}

}  // namespace
}  // namespace kpx
