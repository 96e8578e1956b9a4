#include "kpx/context/ErrorReport.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <set>
#include <stdexcept>

#include "kpx/config/Operations.h"
#include "kpx/support/texts/TextStore.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

std::string lineOf(const std::string& number, const std::string& project = "Aue") {
  return "Projekt: " + project + "    Job: Tag 1    Fehler: " + number +
         "     Datum / Zeit: 05.03.2021 / 08:03:04    User: " + ContextScope::userField();
}

std::vector<MessageBoxRequest> shown;
int rememberBox(const MessageBoxRequest& request) {
  shown.push_back(request);
  return MessageBoxAnswer::no;
}

TEST(ErrorReport, OneLineInEachLogAndNoBoxWithoutTheSwitch) {
  ContextScope scope;
  StoppedClock clock;
  shown.clear();
  setMessageBoxHandler(&rememberBox);
  Guarded("CFGCol::serializeXML"_config, [] { throw std::runtime_error("no"); });
  kpxErrorText(u"Verbindung weg");
  const std::string text =
      "Projekt: Aue    Job: Tag 1                      Datum / Zeit: 05.03.2021 / 08:03:04    "
      "User: " +
      ContextScope::userField() + "  Info: Verbindung weg";
  for (const char* place : {"system", "project"}) {
    EXPECT_EQ(scope.log(place), (std::vector<std::string>{lineOf("42905"), text})) << place;
  }
  EXPECT_TRUE(shown.empty());
}

TEST(ErrorReport, BoxNamesApplicationAndNumberWhenTheSwitchIsOn) {
  ContextScope scope;
  shown.clear();
  setMessageBoxHandler(&rememberBox);
  scope.switchOn(u"ErrorMessage");
  kpxError(4711);
  ASSERT_EQ(shown.size(), 1u);
  EXPECT_EQ(shown[0].text,
            u"In Kiebitz ist ein Fehler aufgetreten.\n\nFehler 4711\n\n"
            u"Bitte wenden Sie sich an die Kiebitz-Hotline.");
  EXPECT_EQ(shown[0].caption, u"Kiebitz");
  EXPECT_EQ(shown[0].style, 16);
  EXPECT_EQ(scope.log("system").size(), 1u);
}

TEST(ErrorReport, BoxThatFailsLosesNoLineAndReportsInsideAreDropped) {
  ContextScope scope;
  scope.switchOn(u"ErrorMessage");
  setMessageBoxHandler([](const MessageBoxRequest&) -> int {
    kpxError(2);
    kpxErrorText(u"3");
    throw std::runtime_error("no box");
  });
  const ErrorCounts before = errorCounts();
  kpxError(1);
  EXPECT_EQ(scope.log("system").size(), 1u);
  // The two of the handler, and the box's own failure.
  EXPECT_EQ(errorCounts().dropped - before.dropped, 3u);
}

TEST(ErrorReport, MessageBoxesOfModules) {
  ContextScope scope;
  shown.clear();
  setMessageBoxHandler(&rememberBox);
  EXPECT_EQ(utlMessageBox(64, L"%d %s in %s", 3, L"Punkte", CString(u"Aue")), MessageBoxAnswer::no);
  utlMessageBox(64, L"%d %s", 3);
  kpxShowSoccetErrorMessage(L"Empfang", 2L);
  kpxShowSystemErrorMessage(u"Platte");
  ASSERT_EQ(shown.size(), 4u);
  EXPECT_EQ(shown[0].text, u"3 Punkte in Aue");
  EXPECT_EQ(shown[1].text, u"%d %s") << "a format without its values is shown as it is";
  EXPECT_EQ(shown[2].text, u"Empfang (Fehler:2)\n\n" + systemMessage(2));
  EXPECT_EQ(shown[2].style, 64);
  EXPECT_EQ(shown[3].text, u"Platte");
  EXPECT_EQ(shown[3].style, 16);
}

TEST(ErrorReport, OneReportIsOneLineWhateverTheNamesHold) {
  ContextScope scope;
  StoppedClock clock;
  CProject project = kpxGetCurrentProject();
  project.Name = CString(u"A\r\nProjekt: B\t\x1b\x85\x2028%s%n") + char16_t(0xD800);
  kpxSetCurrentProject(project);
  kpxError(7);
  kpxErrorText(u"a\nb\n");
  const auto lines = scope.log("project");
  ASSERT_EQ(lines.size(), 2u);
  EXPECT_EQ(lines[0], lineOf("7", "A  Projekt: B    %s%n\xEF\xBF\xBD"));
  EXPECT_TRUE(lines[1].ends_with("Info: a b")) << lines[1];
}

TEST(ErrorReport, TranslatedTemplateCountsOnlyWithThePlaceholdersOfTheGermanOne) {
  ContextScope scope;
  StoppedClock clock;
  struct RestoreText {
    ~RestoreText() { AddMLT(542, CString()); }
  } restore;
  const struct {
    const char16_t* text;
    bool isUsed;
  } cases[] = {
      {u"Project: %s Job: %s Error: %ld Time: %s/%s 100%% User: %s\n", true},
      {u"Error: %d Project: %s Job: %s Time: %s/%s User: %s\n", false},  // another order
      {u"Project: %s\n", false},
      {u"%s %s %d %s %s %s %s", false},
      {u"%s %s %*d %s %s %s", false},
      {u"%s %s %d %s %s %", false},
      {u"%s %s %999999d %s %s %s", false},  // too wide to be printed
      {u"", false},
  };
  for (const auto& each : cases) {
    std::filesystem::remove(scope.folder.path() / "system" / "Error.log");
    AddMLT(542, each.text);
    kpxError(7);
    const auto lines = scope.log("system");
    ASSERT_EQ(lines.size(), 1u);
    if (each.isUsed) {
      EXPECT_EQ(lines[0], "Project: Aue Job: Tag 1 Error: 7 Time: 05.03.2021/08:03:04 100% User: " +
                              ContextScope::userField());
    } else {
      EXPECT_EQ(lines[0], lineOf("7")) << CString(each.text).utf8();
    }
  }
}

// --- logs that cannot be written ----------------------------------------------------------------

TEST(ErrorReport, LogThatCannotBeWrittenLosesOnlyItself) {
  const struct {
    const char* what;
    void (*spoil)(const std::filesystem::path& folder);
  } cases[] = {
      {"missing folder", [](const auto& folder) { std::filesystem::remove(folder); }},
      {"folder of that name",
       [](const auto& folder) { std::filesystem::create_directory(folder / "Error.log"); }},
  };
  for (const auto& each : cases) {
    ContextScope scope;
    each.spoil(scope.folder.path() / "system");
    kpxError(7);
    EXPECT_EQ(scope.log("project").size(), 1u) << each.what;
  }
}

TEST(ErrorReport, RunsOutOfMemoryAtEveryPlaceAndStillLogs) {
  ContextScope scope;
  StoppedClock clock;
  CProject project = kpxGetCurrentProject();
  project.Name = CString(u'ä', 5000);
  kpxSetCurrentProject(project);
  std::set<std::size_t> lengths;
  for (int count = 0; count < 60; ++count) {
    const std::size_t before = scope.log("system").size();
    {
      FailingAllocations failing(count);
      kpxError(7);
      kpxErrorText(u"voll");
    }
    const auto lines = scope.log("system");
    ASSERT_EQ(lines.size() - before, 2u) << count;
    EXPECT_NE(lines[before].find("Fehler: 7 "), std::string::npos) << count;
    EXPECT_TRUE(lines[before + 1].ends_with("Info: voll")) << count;
    lengths.insert(lines[before].size());
  }
  EXPECT_EQ(lengths.size(), 2u) << "the short line, and the whole one once there is memory";
  EXPECT_EQ(scope.log("project"), scope.log("system"));
}

}  // namespace
}  // namespace kpx
