#include "kpx/context/TextStart.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <thread>

#include "kpx/context/Diagnosis.h"
#include "kpx/settings/CFGProjectSettingsIntern.h"
#include "kpx/support/texts/internal/BuiltInTexts.h"
#include "kpx/support/texts/LanguageFile.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/support/texts/TextTemplate.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

/// A program folder with an English file for the texts 1 and 12 and a Danish one for 12.
class TextStart : public testing::Test {
 protected:
  TextStart() {
    detail::clearTexts();
    kpxSetProgPath(scope.folder / "programs");
    std::filesystem::create_directories(scope.folder.path() / "programs" / "MLT");
    write("MLT/ENG.LNG", {{1, u"Alignments"}, {12, u"editing"}});
    write("MLT/DAN.LNG", {{12, u"redigeres"}, {231, CString()}});
    write("OUT.LNG", {{1, u"outside"}});
  }
  ~TextStart() override { detail::clearTexts(); }

  void write(const std::string& name, std::vector<TextEntry> entries, std::size_t cut = 0) const {
    const std::string bytes = languageFileBytes({0, CString(), std::move(entries)});
    scope.folder.write("programs/" + name, bytes.substr(0, bytes.size() - cut));
  }
  static void setLanguage(RegistryRoot root, const CString& language) {
    ContextScope::store(root, u"Software\\KPX\\Settings", u"Language",
                        RegistryValue::ofText(language));
  }

  ContextScope scope;
};

TEST_F(TextStart, LanguagesLieOverEachOther) {
  const struct {
    std::u16string_view language;
    std::u16string_view one;
    std::u16string_view twelve;
  } cases[] = {
      {u"", u"Trassen", u"Tabelle wird bearbeitet!\nWarte auf Zugriff."},
      {u" Deutsch [Default]\t", u"Trassen", u"Tabelle wird bearbeitet!\nWarte auf Zugriff."},
      {u"English [ENG.LNG]", u"Alignments", u"editing"},
      {u" Dansk [DAN.LNG] ", u"Alignments", u"redigeres"},
      {u"Dansk [DAN].LNG]", u"Alignments", u"redigeres"},
      {u"Suomi [FIN.LNG]", u"Alignments", u"editing"},
      {u"Suomi", u"Alignments", u"editing"},
      {u"Out [../OUT.LNG]", u"Alignments", u"editing"},
  };
  for (const auto& each : cases) {
    setLanguage(RegistryRoot::currentUser, CString(each.language));
    EXPECT_EQ(InitMLT(), 1);
    EXPECT_EQ(GetMLT(1), each.one) << CString(each.language).utf8();
    EXPECT_EQ(GetMLT(12), each.twelve) << CString(each.language).utf8();
    EXPECT_EQ(GetMLT(231), u"LG");
  }
}

TEST_F(TextStart, TheDiagnosisTellsOfTheFilesInForce) {
  write("MLT/CUT.LNG", {{1, u"cut"}}, 1);
  const struct {
    const char16_t* language;
    std::vector<CString> files;    // their names
    std::vector<bool> areInOrder;  // of the language itself, and of each file
  } cases[] = {
      {u"Deutsch [Default]", {}, {true}},
      {u"English [eng.lng]", {u"ENG.LNG"}, {true, true}},
      {u"Dansk [DAN.LNG]", {u"ENG.LNG", u"DAN.LNG"}, {true, true, true}},
      {u"Suomi [FIN.LNG]", {u"ENG.LNG", u"FIN.LNG"}, {true, true, false}},
      {u"Cut [CUT.LNG]", {u"ENG.LNG", u"CUT.LNG"}, {true, true, false}},
      {u"Out [../OUT.LNG]", {u"ENG.LNG"}, {false, true}},
  };
  for (const auto& each : cases) {
    setLanguage(RegistryRoot::currentUser, CString(each.language));
    std::vector<CString> files;
    std::vector<bool> areInOrder;
    for (const DiagnosisLine& line : diagnose()) {
      if (line.topic != u"texts") continue;
      areInOrder.push_back(line.problem.IsEmpty());
      if (line.name == u"language file") files.push_back(line.value.Right(7));
    }
    EXPECT_EQ(files, each.files) << CString(each.language).utf8();
    EXPECT_EQ(areInOrder, each.areInOrder) << CString(each.language).utf8();
  }
}

TEST_F(TextStart, FilesAreFoundWhateverTheirCase) {
  const auto mlt = scope.folder.path() / "programs" / "MLT";
  std::filesystem::rename(mlt / "ENG.LNG", mlt / "eng.lng");
  for (const char16_t* const language : {u"Dansk [dan.lng]", u"Dansk [Dan.Lng]"}) {
    ASSERT_EQ(initTexts(language), 1);
    EXPECT_EQ(GetMLT(1), u"Alignments");
    EXPECT_EQ(GetMLT(12), u"redigeres");
  }
  for (const char16_t* const language : {u"English [ENG.LNG]", u"English [eng.lng]"}) {
    ASSERT_EQ(initTexts(language), 1);
    EXPECT_EQ(GetMLT(12), u"editing");
  }
  EXPECT_TRUE(languageFilePath(u"fin.lng").EndsWith(u"fin.lng"));
  EXPECT_EQ(languageFilePath(u""), u"");

  // Where both can be there, each is a file of its own.
  write("MLT/ENG.LNG", {{1, u"Base"}, {12, u"base"}});
  if (!std::filesystem::equivalent(mlt / "ENG.LNG", mlt / "eng.lng")) {
    write("MLT/eng.lng", {{12, u"second"}});
    ASSERT_EQ(initTexts(u"English [eng.lng]"), 1);
    EXPECT_EQ(GetMLT(1), u"Base");
    EXPECT_EQ(GetMLT(12), u"second");
  }
}

TEST_F(TextStart, FailureOfAnyStepIsAnswered) {
  setLanguage(RegistryRoot::currentUser, u"Dansk [DAN.LNG]");
  int failures = 0;
  for (int done = 0; done == 0; ++failures) {
    detail::clearTexts();
    kpxSetProgPath(scope.folder / "programs");
    FailingAllocations failing(failures);
    done = InitMLT();
    EXPECT_EQ(done == 1, !failing.hasFailed());
  }
  EXPECT_GT(failures, 20);
  EXPECT_EQ(GetMLT(12), u"redigeres");
}

TEST_F(TextStart, TheUsersLanguageComesBeforeTheMachines) {
  setLanguage(RegistryRoot::localMachine, u"Dansk [DAN.LNG]");
  EXPECT_EQ(InitMLT(), 1);
  EXPECT_EQ(GetMLT(12), u"redigeres");
  setLanguage(RegistryRoot::currentUser, u"Deutsch [Default]");
  EXPECT_EQ(InitMLT(), 1);
  EXPECT_EQ(GetMLT(1), u"Trassen");
}

TEST_F(TextStart, FileNamesStayInTheirFolder) {
  for (const char16_t* const name :
       {u"../OUT.LNG", u"..\\OUT.LNG", u"..", u".", u"", u" ", u"/etc/passwd", u"C:OUT.LNG",
        u"D:\\OUT.LNG", u"a/b.LNG", u"NUL", u"con.LNG", u"com1", u"\\\\host\\share", u"a\nb"}) {
    EXPECT_TRUE(languageFileName(CString(u"x [") + CString(name) + u']').IsEmpty())
        << CString(name).utf8();
  }
  EXPECT_EQ(languageFileName(u"x [a..b.LNG]"), u"a..b.LNG");
}

TEST_F(TextStart, AnEarlyEndIsReportedAndKeepsWhatWasRead) {
  write("MLT/ENG.LNG", {{1, u"Alignments"}, {12, u"editing"}}, 1);
  setLanguage(RegistryRoot::currentUser, u"Dansk [DAN.LNG]");
  EXPECT_EQ(InitMLT(), 0);
  ASSERT_EQ(scope.log("system").size(), 1U);
  EXPECT_NE(scope.log("system")[0].find("71472"), std::string::npos);
  EXPECT_EQ(GetMLT(1), u"Alignments");
  EXPECT_TRUE(GetMLT(12).StartsWith(u"Tabelle"));
}

TEST_F(TextStart, ProjectsHaveTheWordingOfTheirKind) {
  addBuiltInTexts();
  useProjectWording(false);
  EXPECT_EQ(GetMLT(639), u"Helmerttransf. ohne Maßstab");
  useProjectWording(true);
  EXPECT_EQ(GetMLT(231), u"GST(L)");
  EXPECT_EQ(GetMLT(639), u"3 Parametertransformation");
}

TEST_F(TextStart, WordingFollowsTheCurrentProject) {
  CFGProjectSettingsIntern settings;
  settings.setIsAlkis(1);
  kpxSetCurrentPrjSettingsIntern(&settings);
  ASSERT_EQ(initTexts(u""), 1);
  EXPECT_EQ(GetMLT(231), u"GST(L)");
  settings.setIsAlkis(0);
  ASSERT_EQ(initTexts(u""), 1);
  EXPECT_EQ(GetMLT(231), u"LG");
  kpxSetCurrentPrjSettingsIntern(nullptr);
}

TEST_F(TextStart, ManyReadersAfterTheStart) {
  ASSERT_EQ(initTexts(u"Dansk [DAN.LNG]"), 1);
  std::vector<std::thread> readers;
  readers.reserve(4);
  for (int i = 0; i < 4; ++i) {
    readers.emplace_back([] {
      for (int round = 0; round < 500; ++round) {
        EXPECT_EQ(GetMLT(12), u"redigeres");
        EXPECT_EQ(GetMLT(70000 + round), u"");
        EXPECT_EQ(CString(templateText(614)), u"Fehler");
        EXPECT_EQ(textFolder().IsEmpty(), false);
      }
    });
  }
  for (std::thread& reader : readers) reader.join();
}

}  // namespace
}  // namespace kpx
