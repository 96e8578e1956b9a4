#include "kpx/context/ErrorReport.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sqlite3.h>
#include <sys/file.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <set>
#include <stdexcept>

#include "kpx/support/TextStore.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

using std::chrono::milliseconds;

std::string userField() {
  return "Möller (" + kpxGetComputerName().utf8() + ", " + std::to_string(kpxGetMemSizeMB()) +
         " MB)";
}

std::string lineOf(const std::string& number, const std::string& project = "Aue") {
  return "Projekt: " + project + "    Job: Tag 1    Fehler: " + number +
         "     Datum / Zeit: 05.03.2021 / 08:03:04    User: " + userField();
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
  Guarded("CFGCol::serializeXML", [] { throw std::runtime_error("no"); });
  kpxErrorText(u"Verbindung weg");
  const std::string text =
      "Projekt: Aue    Job: Tag 1                      Datum / Zeit: 05.03.2021 / 08:03:04    "
      "User: " +
      userField() + "  Info: Verbindung weg";
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
  EXPECT_EQ(utlMessageBox(64, u"%d Punkte in %s", 3, CString(u"Aue")), MessageBoxAnswer::no);
  utlMessageBox(64, u"%d %s", 3);
  kpxShowSoccetErrorMessage(u"Empfang", 2UL);
  kpxShowSystemErrorMessage(u"Platte");
  ASSERT_EQ(shown.size(), 4u);
  EXPECT_EQ(shown[0].text, u"3 Punkte in Aue");
  EXPECT_EQ(shown[1].text, u"%d %s") << "a format without its values is shown as it is";
  EXPECT_EQ(shown[2].text, u"Empfang (Fehler:2)\n\n" + systemMessage(2));
  EXPECT_EQ(shown[2].style, 64);
  EXPECT_EQ(shown[3].text, u"Platte");
  EXPECT_EQ(shown[3].style, 16);
}

TEST(ErrorReport, DefaultAnswerOfABoxThatNobodySeesChangesNothing) {
  const struct {
    std::int32_t style;
    int answer;
  } boxes[] = {{16, 1}, {64 + 1, 2}, {2, 3}, {32 + 3, 2}, {4, 7}, {5, 2}};
  for (const auto& box : boxes) {
    MessageBoxRequest request;
    request.style = box.style;
    testing::internal::CaptureStderr();
    EXPECT_EQ(showMessageBox(request), box.answer) << box.style;
    testing::internal::GetCapturedStderr();
  }
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
                              userField());
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
      {"full volume",
       [](const auto& folder) {
         std::filesystem::create_symlink("/dev/full", folder / "Error.log");
       }},
      {"pipe that nobody reads",
       [](const auto& folder) {
         ASSERT_EQ(std::system(("mkfifo " + (folder / "Error.log").string()).c_str()), 0);
       }},
  };
  for (const auto& each : cases) {
    ContextScope scope;
    each.spoil(scope.folder.path() / "system");
    kpxError(7);
    EXPECT_EQ(scope.log("project").size(), 1u) << each.what;
  }
}

TEST(ErrorReport, WriteProtectedLogIsSkipped) {
  ContextScope scope;
  const auto log = scope.folder.path() / "system" / "Error.log";
  scope.folder.write("system/Error.log", "old\n");
  std::filesystem::permissions(log, std::filesystem::perms::owner_read);
  std::filesystem::permissions(scope.folder.path(), std::filesystem::perms::all);
  std::filesystem::permissions(scope.folder.path() / "project", std::filesystem::perms::all);
  const pid_t child = ::fork();
  if (child == 0) {
    // The administrator may write everything.
    constexpr uid_t nobody = 65534;
    if (::geteuid() == 0 && ::setuid(nobody) != 0) ::_exit(2);
    kpxError(7);
    ::_exit(0);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(scope.log("system"), std::vector<std::string>{"old"});
  EXPECT_EQ(scope.log("project").size(), 1u);
}

TEST(ErrorReport, LineThatFitsOnlyHalfIsTakenBack) {
  ContextScope scope;
  scope.folder.write("system/Error.log", "old\n");
  const pid_t child = ::fork();
  if (child == 0) {
    std::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{40, 40};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) ::_exit(2);
    kpxError(7);
    ::_exit(0);
  }
  int status = -1;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(scope.log("system"), std::vector<std::string>{"old"});
  EXPECT_TRUE(scope.log("project").empty());
}

TEST(ErrorReport, LockedLogIsSkippedAfterTheTimeThatWasSet) {
  ContextScope scope;
  setLogPatience(milliseconds(50));
  scope.folder.write("system/Error.log", "");
  const int other =
      ::open((scope.folder.path() / "system" / "Error.log").c_str(), O_WRONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(other, LOCK_EX), 0);
  const auto begin = std::chrono::steady_clock::now();
  kpxError(7);
  const auto waited = std::chrono::steady_clock::now() - begin;
  EXPECT_GE(waited, milliseconds(50));
  EXPECT_LT(waited, milliseconds(1000));
  EXPECT_TRUE(scope.log("system").empty());
  EXPECT_EQ(scope.log("project").size(), 1u);
  ::close(other);
  kpxError(7);
  EXPECT_EQ(scope.log("system").size(), 1u);
}

TEST(ErrorReport, LockedRegistryHoldsNobodyUp) {
  ContextScope scope;
  scope.switchOn(u"ErrorMessage");
  setLogPatience(milliseconds(50));
  setMessageBoxHandler(&rememberBox);
  shown.clear();
  sqlite3* other = nullptr;
  ASSERT_EQ(sqlite3_open((scope.folder.path() / "user.db").c_str(), &other), SQLITE_OK);
  ASSERT_EQ(sqlite3_exec(other, "BEGIN EXCLUSIVE", nullptr, nullptr, nullptr), SQLITE_OK);
  const auto begin = std::chrono::steady_clock::now();
  kpxError(7);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, milliseconds(1000));
  sqlite3_close(other);
  EXPECT_TRUE(shown.empty());
  EXPECT_EQ(scope.log("system").size(), 1u);
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

// --- several processes --------------------------------------------------------------------------

TEST(ErrorReport, EightProcessesLoseAndMixUpNoLine) {
  ContextScope scope;
  setLogPatience(std::chrono::minutes(2));
  constexpr int processes = 8;
  constexpr int reports = 1000;
  std::vector<pid_t> children;
  for (int process = 0; process < processes; ++process) {
    const pid_t child = ::fork();
    if (child == 0) {
      for (int i = 0; i < reports; ++i) kpxError(100000 * (process + 1) + i);
      ::_exit(0);
    }
    children.push_back(child);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  for (const char* place : {"system", "project"}) {
    std::set<int> numbers;
    const auto lines = scope.log(place);
    for (const std::string& line : lines) {
      const std::string head = "Projekt: Aue    Job: Tag 1    Fehler: ";
      ASSERT_TRUE(line.starts_with(head) && line.ends_with(userField())) << line;
      numbers.insert(std::stoi(line.substr(head.size())));
    }
    EXPECT_EQ(lines.size(), std::size_t{processes * reports}) << place;
    EXPECT_EQ(numbers.size(), lines.size()) << place;
  }
}

}  // namespace
}  // namespace kpx
