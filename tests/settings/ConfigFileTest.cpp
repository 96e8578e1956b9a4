#include "kpx/settings/ConfigFile.h"

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

TEST(ConfigFile, FindsConfigurationsAtAnyDepth) {
  const CString one = minimalText(columnText(u"FB_HG", u"9"));
  const CString header = u"<CFGConfigCFGClassHeader Name='h'/>";
  const CString unknown = u"<CFGConfigUnheardOf><CFGClass/></CFGConfigUnheardOf>";
  const CString noConfiguration = u"<CFGConfigs><x/></CFGConfigs>";
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(u"<a>" + one + u"<b><c/>" + noConfiguration + header + u"</b><b><c>" +
                              unknown + u"</c></b>" + one + u"</a>"));
  const auto found = findConfigurations(document);
  ASSERT_EQ(found.size(), 4u);
  EXPECT_EQ(found[0].settingsClass->name, u"CFGGeneralSettings");
  EXPECT_EQ(found[1].name, u"h");
  EXPECT_EQ(found[2].elementName, u"CFGConfigUnheardOf");
  EXPECT_EQ(found[2].settingsClass, nullptr);
  EXPECT_EQ(loadConfiguration(document, found[2]), nullptr);
  const auto object = loadConfiguration(document, found[3]);
  ASSERT_NE(object, nullptr);
  const auto& settings = static_cast<const CFGGeneralSettings&>(*object);
  EXPECT_EQ(settings.getFBHG(), 9);
  EXPECT_EQ(settings.getFBLZ(), 2);
  ASSERT_EQ(found[3].settings.size(), 1u);
  const auto valueOffset = static_cast<std::size_t>(found[3].settings[0].valueOffset);
  EXPECT_EQ(document.GetDoc().view().substr(valueOffset, 2), u"9\"");

  CMarkup root;
  ASSERT_TRUE(root.SetDoc(u"<?xml version='1.0'?>" + one));
  const auto inRoot = findConfigurations(root);
  ASSERT_EQ(inRoot.size(), 1u);
  EXPECT_EQ(static_cast<CFGGeneralSettings&>(*loadConfiguration(root, inRoot[0])).getFBHG(), 9);
  CMarkup empty;
  EXPECT_TRUE(findConfigurations(empty).empty());
}

TEST(ConfigFile, ComparesValuesAndNotTheirSpelling) {
  CMarkup a;
  CMarkup b;
  ASSERT_TRUE(a.SetDoc(minimalText(columnText(u"FB_Tol_Z", u"0.020") + columnText(u"FB_HG", u"8") +
                                   columnText(u"only A", u"1") + columnText(u"twice", u"1") +
                                   columnText(u"twice", u"2"))));
  ASSERT_TRUE(
      b.SetDoc(minimalText(columnText(u"twice", u"2") + columnText(u"only B", u"x") +
                           columnText(u"FB_HG", u"9") + columnText(u"FB_Tol_Z", u"2.e-002"))));
  const auto inA = findConfigurations(a);
  const auto inB = findConfigurations(b);
  const ConfigDifference difference = compareConfigurations(inA[0], inB[0]);
  ASSERT_EQ(difference.onlyInA.size(), 1u);
  EXPECT_EQ(difference.onlyInA[0].key, u"only A");
  ASSERT_EQ(difference.onlyInB.size(), 1u);
  EXPECT_EQ(difference.onlyInB[0].value, u"x");
  ASSERT_EQ(difference.changed.size(), 1u);
  EXPECT_EQ(difference.changed[0].key, u"FB_HG");
  EXPECT_EQ(difference.changed[0].valueA, u"8");
  EXPECT_EQ(difference.changed[0].valueB, u"9");
  EXPECT_TRUE(compareConfigurations(inA[0], inA[0]).none());

  CFGGeneralSettings changed;
  changed.setKTLZ(77);
  EXPECT_EQ(compareConfigurations(CFGGeneralSettings(), changed).changed.size(), 1u);
}

TEST(ConfigFile, TellsWhatDiffersFromTheDefaults) {
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(fileText()));
  EXPECT_TRUE(changedFromDefaults(findConfigurations(document)[0]).none());

  EXPECT_EQ(setValueInDocument(document, {}, u"FDS_Tol_Z", u"0,035").outcome, EditOutcome::changed);
  const ConfigDifference difference = changedFromDefaults(findConfigurations(document)[0]);
  ASSERT_EQ(difference.changed.size(), 1u);
  EXPECT_EQ(difference.changed[0].valueA, u"0.020");
  EXPECT_EQ(difference.changed[0].valueB, u"0.035");
}

TEST(ConfigFile, ChangingAValueTouchesNothingElse) {
  const CString text = u"<?xml version='1.0'?>\r\n<!-- <CFGValue Value='1'/> -->\r\n" +
                       fileText({{u"Name=\"KT_Message\"", u"Name=\"KT_FromElsewhere\""}});
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(text));
  const EditResult result =
      setValueInDocument(document, {u"CFGGeneralSettings"}, u"KT_Tol_XY", u"0.5");
  EXPECT_EQ(result.outcome, EditOutcome::changed);
  EXPECT_EQ(result.oldValue, u"0.020");
  EXPECT_EQ(result.newValue, u"0.500");

  const std::u16string_view after = document.GetDoc();
  ASSERT_EQ(after.size(), text.view().size());
  const auto differs = std::ranges::mismatch(text, after);
  const std::size_t at = static_cast<std::size_t>(differs.in1 - text.begin());
  CString expected = text;
  expected.SetAt(static_cast<int>(at), u'5');
  expected.SetAt(static_cast<int>(at) + 1, u'0');
  EXPECT_EQ(document.GetDoc(), expected);
  const auto object = loadConfiguration(document, findConfigurations(document)[0]);
  EXPECT_EQ(static_cast<CFGGeneralSettings&>(*object).getKTTolXY(), 0.5);
}

TEST(ConfigFile, RefusedChangesLeaveTheDocument) {
  const CString two = u"<r>" + minimalText(columnText(u"FB_HG", u"9")) +
                      minimalText(columnText(u"FB_HG", u"9") + columnText(u"FB_LZ", u"1")) +
                      u"<CFGConfigX><CFGClass>" + columnText(u"K", u"1") +
                      u"</CFGClass></CFGConfigX><CFGConfigCFGClassHeader/></r>";
  const struct {
    const char16_t* configuration;
    const char16_t* key;
    const char16_t* value;
    EditOutcome outcome;
  } cases[] = {
      {u"CFGGeneralSettings", u"FB_HG", u"1", EditOutcome::severalCandidates},
      {u"", u"FB_LZ", u"1", EditOutcome::unchanged},
      {u"CFGConfigCFGGeneralSettings", u"FB_LZ", u" 01", EditOutcome::unchanged},
      {u"", u"FB_LZ", u"1.000", EditOutcome::badValue},
      {u"CFGHeader", u"FB_LZ", u"1", EditOutcome::unknownKey},
      {u"CFGHeader", u"Class", u"x", EditOutcome::notInFile},
      {u"", u"fb_lz", u"1", EditOutcome::unknownKey},
      {u"CFGConfigX", u"K", u"1", EditOutcome::unknownClass},
      {u"CFGConfigPolar", u"K", u"1", EditOutcome::noConfiguration},
  };
  for (const auto& each : cases) {
    CMarkup document;
    ASSERT_TRUE(document.SetDoc(two));
    const EditResult result =
        setValueInDocument(document, {each.configuration}, each.key, each.value);
    EXPECT_EQ(result.outcome, each.outcome) << describe(result.outcome);
    EXPECT_EQ(document.GetDoc(), two);
  }
}

TEST(ConfigFile, ManyEmptyConfigurationsDoNotGiveEndlessFindings) {
  CString text = u"<r>";
  for (int i = 0; i < 20'000; ++i) text += u"<CFGConfigCFGGeneralSettings/>";
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(text + CString(u"</r>")));
  const Problems<ConfigFinding> findings = validateConfigurations(document, {.limit = 10});
  EXPECT_EQ(findings.first.size(), 10u);
  EXPECT_EQ(findings.count, 20'000u);
}

TEST(ConfigFile, NewFileHasNoFindings) {
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(fileText()));
  EXPECT_TRUE(validateConfigurations(document).empty());
}

TEST(ConfigFile, ValidationFindsEachFaultAtItsPlace) {
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
    auto findings = validateConfigurations(document).first;
    std::erase_if(findings, [](const auto& finding) { return finding.kind == missingKey; });
    ASSERT_EQ(findings.size(), 1u) << CString(each.columns).utf8();
    EXPECT_EQ(findings[0].kind, each.kind) << describe(findings[0]).utf8();
    EXPECT_EQ(findings[0].key, each.key);
    EXPECT_EQ(findings[0].className, u"CFGGeneralSettings");
    EXPECT_TRUE(document.GetDoc().Mid(findings[0].offset).StartsWith(each.at));
  }
}

TEST(ConfigFile, ValidationFindsWhatSavingWouldLose) {
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
    const auto findings = validateConfigurations(document).first;
    ASSERT_EQ(findings.size(), 1u) << CString(each.to).utf8();
    EXPECT_EQ(findings[0].kind, each.kind) << describe(findings[0]).utf8();
  }
  CMarkup classless;
  ASSERT_TRUE(classless.SetDoc(u"<CFGConfigCFGGeneralSettings>" + columnText(u"FB_HG", u"1") +
                               u"</CFGConfigCFGGeneralSettings>"));
  const auto findings = validateConfigurations(classless).first;
  ASSERT_EQ(findings.size(), 1u);
  EXPECT_EQ(findings[0].kind, missingClass);
}

TEST(ConfigFile, ValidationSaysWhatProgramsRead) {
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
    auto findings = validateConfigurations(document).first;
    std::erase_if(findings, [](const auto& f) { return f.kind == FindingKind::missingKey; });
    ASSERT_EQ(findings.size(), 1u) << CString(each.value).utf8();
    EXPECT_EQ(describe(findings[0]), each.sentence);
  }
}

TEST(ConfigFile, ValidationFindsWhatIsMissingAndDoubleAndBroken) {
  CMarkup document;
  ASSERT_TRUE(document.SetDoc(fileText({{u"Name=\"KT_Message\"", u"Name=\"KT_LZ\""}})));
  const auto findings = validateConfigurations(document).first;
  ASSERT_EQ(findings.size(), 2u);
  EXPECT_EQ(findings[0].kind, FindingKind::missingKey);
  EXPECT_EQ(findings[0].key, u"KT_Message");
  EXPECT_EQ(findings[1].kind, FindingKind::duplicateKey);
  EXPECT_EQ(findings[1].key, u"KT_LZ");

  ASSERT_TRUE(document.SetDoc(u"<CFGConfigCFGClassHeader><CFGClass>" +
                              columnText(u"Class", u"one\ntwo") + columnText(u"Description", u"") +
                              u"</CFGClass></CFGConfigCFGClassHeader>"));
  const auto broken = validateConfigurations(document).first;
  ASSERT_EQ(broken.size(), 1u);
  EXPECT_EQ(broken[0].kind, FindingKind::lineBreak);

  ASSERT_TRUE(document.SetDoc(u"<r><CFGConfigX><CFGClass/></CFGConfigX></r>"));
  const auto unknown = validateConfigurations(document).first;
  ASSERT_EQ(unknown.size(), 1u);
  EXPECT_EQ(unknown[0].kind, FindingKind::unknownClass);
  EXPECT_EQ(unknown[0].className, u"CFGConfigX");
  EXPECT_EQ(unknown[0].offset, 3);
}

}  // namespace
}  // namespace kpx
