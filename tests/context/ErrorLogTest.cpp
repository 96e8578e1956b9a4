#include "kpx/context/ErrorLog.h"

#include <gtest/gtest.h>

#include <chrono>
#include <string>

#include "kpx/support/texts/TextStore.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

using Kind = ErrorLogEntry::Kind;

std::vector<ErrorLogEntry> readAll(std::string_view bytes) {
  std::vector<ErrorLogEntry> entries;
  ErrorLogReader().readAll(bytes, true,
                           [&](ErrorLogEntry&& entry) { entries.push_back(std::move(entry)); });
  return entries;
}

TEST(ErrorLog, WhatIsReportedIsRead) {
  ContextScope scope;
  StoppedClock clock;
  const char16_t* names[] = {u"Aue",   u"",         u"A    Job: x", u"05.03.2021 / 08:03:04",
                             u"a (b)", u"Fehler: 5"};
  for (const char16_t* name : names) {
    CProject project = kpxGetCurrentProject();
    project.Name = name;
    kpxSetCurrentProject(project);
    CUser user;
    user.Name = name;
    kpxSetCurrentSysUser(user);
    kpxError(-42);
    kpxErrorText(u"weg  Info: da");
  }
  const auto entries = readAll(scope.folder.read("system/Error.log"));
  ASSERT_EQ(entries.size(), 2 * std::size(names));
  for (std::size_t i = 0; i < entries.size(); ++i) {
    const ErrorLogEntry& entry = entries[i];
    EXPECT_EQ(entry.line, i + 1);
    EXPECT_EQ(entry.kind, i % 2 == 0 ? Kind::number : Kind::text);
    EXPECT_EQ(entry.number, i % 2 == 0 ? -42 : 0);
    EXPECT_EQ(entry.text, i % 2 == 0 ? u"" : u"weg  Info: da");
    EXPECT_EQ(entry.user, names[i / 2]);
    EXPECT_TRUE(entry.machine.EndsWith(u" MB")) << entry.machine.utf8();
    EXPECT_EQ(entry.time, (TIME{20210305, 80304}));
    // A name that holds the beginning of the next field ends there.
    EXPECT_EQ(entry.project, i / 2 == 2 ? u"A" : names[i / 2]);
  }
}

TEST(ErrorLog, BrokenLinesAreKeptAsTheyStand) {
  const std::string good =
      "Projekt: a    Job: b    Fehler: 7     Datum / Zeit: 01.02.2020 / 03:04:05    User: c";
  const struct {
    std::string line;
    Kind kind;
  } cases[] = {
      {good, Kind::number},
      {good.substr(0, 60), Kind::broken},
      {good.substr(9), Kind::broken},
      {"Projekt: a    Job: b    Fehler: x     Datum / Zeit: 01.02.2020 / 03:04:05    User: c",
       Kind::broken},
      {"Projekt: a    Job: b    Fehler: 7     Datum / Zeit: 31.02.2020 / 03:04:05    User: c",
       Kind::broken},
      {"Projekt: a    Job: b    Fehler: 99999999999     Datum / Zeit: 01.02.2020 / 03:04:05    "
       "User: ",
       Kind::number},
      {"Projekt: Stra\xDF"
       "e    Job: b    Fehler: 7     Datum / Zeit: 01.02.2020 / 03:04:05    "
       "User: M\xF6ller",
       Kind::number},
      {std::string("\0\1\2", 3), Kind::broken},
  };
  std::string bytes = "\n\r\n";
  for (const auto& each : cases) bytes += each.line + "\r\n";
  const auto entries = readAll(bytes);
  ASSERT_EQ(entries.size(), std::size(cases));
  for (std::size_t i = 0; i < entries.size(); ++i) {
    EXPECT_EQ(entries[i].kind, cases[i].kind) << cases[i].line;
    EXPECT_EQ(entries[i].line, i + 3);
    if (entries[i].kind == Kind::broken) {
      EXPECT_EQ(entries[i].text.utf8(), cases[i].line);
    }
  }
  EXPECT_EQ(entries[6].user, u"Möller");
}

TEST(ErrorLog, LinesOfAnotherLanguage) {
  AddMLT(542, u"Project: %s, Job: %s, Error: %d, 100%% at %s %s by %s\n");
  const auto entries = readAll(
      "Project: a, Job: b, Error: 7, 100% at 01.02.2020 03:04:05 by c (d, 1 MB)\n"
      "Projekt: a    Job: b    Fehler: 8     Datum / Zeit: 01.02.2020 / 03:04:05    User: c\n");
  AddMLT(542, CString());
  ASSERT_EQ(entries.size(), 2u);
  EXPECT_EQ(entries[0].number, 7);
  EXPECT_EQ(entries[0].job, u"b");
  EXPECT_EQ(entries[0].user, u"c");
  EXPECT_EQ(entries[1].number, 8);
}

TEST(ErrorLog, UnfinishedLineIsLeftForTheNextTime) {
  const std::string line =
      "Projekt: a    Job: b    Fehler: 7     Datum / Zeit: 01.02.2020 / 03:04:05    User: c\n";
  ErrorLogReader reader;
  std::vector<std::size_t> lines;
  const auto take = [&](ErrorLogEntry&& entry) { lines.push_back(entry.line); };
  EXPECT_EQ(reader.readAll(line + line.substr(0, 30), false, take), line.size());
  EXPECT_EQ(reader.readAll(line, false, take), line.size());
  EXPECT_EQ(lines, (std::vector<std::size_t>{1, 2}));
}

TEST(ErrorLog, HostileLineCostsLinearTime) {
  std::string line = "Projekt: ";
  while (line.size() < 4'000'000) line += "    Fehler: 7     Datum / Zeit: ";
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(readAll(line)[0].kind, Kind::broken);
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds(5));
}

TEST(ErrorLog, Filter) {
  ErrorLogEntry entry;
  entry.kind = Kind::number;
  entry.number = 7;
  entry.user = u"Möller";
  entry.project = u"Aue";
  entry.time = {20210305, 80304};
  const struct {
    ErrorLogFilter filter;
    bool wanted;
  } cases[] = {
      {{{}, {}, {}, 0, 0}, true},
      {{{8, 7}, {}, {}, 0, 0}, true},
      {{{8}, {}, {}, 0, 0}, false},
      {{{}, u"mÖL*", u"?UE", 0, 0}, true},
      {{{}, u"mÖL", {}, 0, 0}, false},
      {{{}, {}, {}, 20210305080304.0, 20210305080304.0}, true},
      {{{}, {}, {}, 20210305080305.0, 0}, false},
      {{{}, {}, {}, 0, 20210305080303.0}, false},
  };
  for (const auto& each : cases) EXPECT_EQ(each.filter.wants(entry), each.wanted);
  entry.kind = Kind::broken;
  EXPECT_TRUE(cases[0].filter.wants(entry));
  EXPECT_FALSE(cases[1].filter.wants(entry));
}

}  // namespace
}  // namespace kpx
