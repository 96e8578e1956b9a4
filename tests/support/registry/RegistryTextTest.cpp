#include "kpx/support/registry/RegistryText.h"

#include <gtest/gtest.h>

#include "kpx/support/registry/RegistrySnapshot.h"
#include "tests/common/TestEnvironment.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

using Kind = RegistryChange::Kind;
const std::string header = "Windows Registry Editor Version 5.00\r\n";

RegistryStep write(const CString& name, RegistryValue value) {
  RegistryStep step;
  step.change = {Kind::write, u"A", name, std::move(value)};
  return step;
}

TEST(RegistryTextTest, WhatIsWrittenIsReadBack) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  std::vector<RegistryStep> steps;
  for (const std::u16string_view text :
       {std::u16string_view(u""), std::u16string_view(u"a\\b \"c\" ä\t;\xD800"),
        std::u16string_view(u"two\r\nlines"), std::u16string_view(u"\n"),
        std::u16string_view(u"a\0b\0", 4)}) {
    steps.push_back(write(u"t\"\\" + CString(u'x', static_cast<int>(steps.size())),
                          RegistryValue::ofText(text)));
    RegistryValue expanding = steps.back().change.value;
    expanding.type = RegistryType::expandString;
    steps.push_back(write(u"e" + CString(u'x', static_cast<int>(steps.size())), expanding));
  }
  steps.push_back(write(u"", RegistryValue::ofNumber(0xFEDCBA98)));
  steps.push_back(write(u"b", RegistryValue::ofBytes(all)));
  steps.push_back(write(u"none", RegistryValue::ofBytes({})));
  steps.push_back(write(u"odd", {RegistryType::string, std::string("\0\0\0", 3)}));
  steps.push_back(write(u"short", {RegistryType::dword, "ab"}));
  steps.push_back(write(u"large", {static_cast<RegistryType>(0xFFFF0011), all}));
  RegistryStep gone = write(u"gone", {});
  gone.change.kind = Kind::removeValue;
  steps.push_back(gone);
  RegistryStep tree;
  tree.root = RegistryRoot::localMachine;
  tree.change = {Kind::removeTree, u"Old]x", {}, {}};
  steps.push_back(tree);
  CString text;
  ASSERT_TRUE(writeRegistryText(steps, text));
  // The editor's own lines end at 80 characters.
  int start = 0;
  for (int end = text.Find(u"\\\r\n"); end >= 0; end = text.Find(u"\\\r\n", start)) {
    start = end + 3;
    EXPECT_LE(text.Left(end).GetLength() - text.Left(end).ReverseFind(u'\n'), 80);
  }
  std::vector<RegistryStep> read;
  RegistryTextProblem problem;
  ASSERT_TRUE(readRegistryText(registryTextBytes(text), read, problem))
      << problem.line << problem.message.utf8();
  ASSERT_EQ(read.size(), steps.size() + 1);  // and the key in brackets
  for (std::size_t i = 0; i < steps.size(); ++i) {
    EXPECT_EQ(read[i + 1].root, steps[i].root);
    EXPECT_EQ(read[i + 1].change.kind, steps[i].change.kind);
    EXPECT_EQ(read[i + 1].change.name, steps[i].change.name);
    EXPECT_EQ(read[i + 1].change.value, steps[i].change.value) << steps[i].change.name.utf8();
  }
  tree.change.key = u"line\nbreak";
  EXPECT_FALSE(writeRegistryText({&tree, 1}, text));
}

TEST(RegistryTextTest, WhatPeopleWriteByHandIsTaken) {
  const std::string text =
      header +
      "; comment\n\n [hkcu\\A]  ; comment\r\"x\" = DWORD:1f ; comment\n@=hex(2):41,0, \\\n"
      "   00,00\n\"y\"=hex:\\\n  1,\\\n\n\"z\"=\"a\nb\"\n[-HKLM\\B]";
  std::vector<RegistryStep> steps;
  RegistryTextProblem problem;
  ASSERT_FALSE(readRegistryText(text, steps, problem));
  EXPECT_EQ(problem.line, 10);
  std::string better = text;
  better.replace(better.find("1,\\\n"), 4, "1");
  ASSERT_TRUE(readRegistryText(better, steps, problem)) << problem.message.utf8();
  ASSERT_EQ(steps.size(), 6u);
  const int lines[] = {4, 5, 6, 8, 10, 12};
  for (std::size_t i = 0; i < steps.size(); ++i) EXPECT_EQ(steps[i].line, lines[i]) << i;
  CString expanding;
  EXPECT_TRUE(steps[2].change.value.asText(expanding));
  EXPECT_EQ(expanding, u"A");
  EXPECT_EQ(steps[3].change.value, RegistryValue::ofBytes("\x01"));
}

TEST(RegistryTextTest, WrongLinesAreNamed) {
  const std::string key = "\r\n[HKEY_CURRENT_USER\\A]\r\n";
  const struct {
    std::string text;
    int line;
  } cases[] = {
      {"", 1},
      {"REGEDIT4\r\n", 1},
      {header + "\"x\"=\"y\"", 2},
      {header + key + "x=1", 4},
      {header + key + "\"x\"=1", 4},
      {header + key + "\"x\"", 4},
      {header + key + "\"x=\"y\"\r\n", 4},
      {header + key + "\"x\"=\"y\r\nz", 4},
      {header + key + "\"x\"=\"y\" z", 4},
      {header + key + "\"x\"=\"a\\n\"", 4},
      {header + key + "\"x\"=dword:123456789", 4},
      {header + key + "\"x\"=dword:", 4},
      {header + key + "\"x\"=hex:1,zz", 4},
      {header + key + "\"x\"=hex:123", 4},
      {header + key + "\"x\"=hex:01,\\\r\n  02,\r\n", 5},
      {header + key + "\"x\"=hex(:01", 4},
      {header + key + "\"x\"=hex(g):01", 4},
      {header + key + "\"" + std::string(16384, 'n') + "\"=-", 4},
      {header + "[HKEY_USERS\\A]", 2},
      {header + "[HKCU\\A", 2},
      {header + "[HKCU\\A] x", 2},
      {header + "[HKCU\\A\\\\B]", 2},
      {header + "[-HKCU]", 2},
      {header + "[-HKCU\\A]\r\n@=-", 3},
      {header + key + "\"\xE4\"=-", 0},
      {"\xFF\xFEW", 0},
  };
  for (const auto& [text, line] : cases) {
    std::vector<RegistryStep> steps(1);
    RegistryTextProblem problem;
    EXPECT_FALSE(readRegistryText(text, steps, problem)) << text;
    EXPECT_EQ(problem.line, line) << text;
    EXPECT_FALSE(problem.message.IsEmpty());
    EXPECT_TRUE(steps.empty());
  }
}

TEST(RegistrySnapshotTest, DifferenceMakesOneIntoTheOther) {
  const auto snapshotOf = [](const std::string& lines) {
    std::vector<RegistryStep> steps;
    RegistryTextProblem problem;
    EXPECT_TRUE(readRegistryText(header + lines, steps, problem)) << problem.message.utf8();
    RegistrySnapshot snapshot;
    for (const RegistryStep& step : steps) snapshot.apply(step);
    return snapshot;
  };
  const std::string texts[] = {
      "[HKCU\\A]\n\"x\"=dword:1\n\"y\"=\"t\"\n[HKCU\\A\\B]\n@=\"b\"\n[HKCU\\A B]\n",
      "[HKCU\\a]\n\"X\"=dword:2\n[HKCU\\A\\C\\D]\n\"n\"=hex:01\n[HKLM\\A]\n",
      "[HKCU\\A\\B]\n@=\"b\"\n[HKCU\\A\\B\\C]\n[-HKCU\\A\\B\\C]\n",
      "",
  };
  for (const std::string& from : texts) {
    for (const std::string& to : texts) {
      const TemporaryRegistry temporary;
      RegistryTextProblem problem;
      ASSERT_TRUE(importRegistryText(header + from, problem)) << problem.message.utf8();
      RegistrySnapshot before;
      ASSERT_TRUE(before.add(RegistryRoot::currentUser, u""));
      ASSERT_TRUE(before.add(RegistryRoot::localMachine, u""));
      const RegistrySnapshot after = snapshotOf(to);
      CString difference;
      ASSERT_TRUE(writeRegistryText(snapshotOf(from).stepsTo(after), difference));
      ASSERT_TRUE(importRegistryText(registryTextBytes(difference), problem));
      for (const RegistryStep& step : after.steps()) {
        if (step.change.kind != Kind::write) continue;
        std::unique_ptr<RegistryKey> key;
        RegistryValue value;
        ASSERT_TRUE(registry().open(step.root, step.change.key, RegistryAccess::read, key));
        ASSERT_TRUE(key->read(step.change.name, value));
        EXPECT_EQ(value, step.change.value);
      }
      EXPECT_EQ(snapshotOf(from).stepsTo(after).empty(), from == to);
    }
  }
}

TEST(RegistryTextTest, RefusedStepHasItsLine) {
  class Refusing final : public Registry {
   public:
    RegistryResult open(RegistryRoot, const CString&, RegistryAccess,
                        std::unique_ptr<RegistryKey>&) override {
      return refused;
    }
    RegistryResult create(RegistryRoot, const CString&, RegistryAccess,
                          std::unique_ptr<RegistryKey>&) override {
      return refused;
    }
    RegistryResult remove(RegistryRoot, const CString&) override { return refused; }
    RegistryResult removeTree(RegistryRoot, const CString&) override { return refused; }
    RegistryResult change(RegistryRoot root, std::span<const RegistryChange>,
                          std::size_t& reached) override {
      reached = 1;
      return root == RegistryRoot::localMachine ? refused : RegistryResult{};
    }
    const RegistryResult refused{RegistryStatus::noPermission};
  };
  Refusing refusing;
  setRegistry(&refusing);
  RegistryTextProblem problem;
  EXPECT_FALSE(importRegistryText(header + "[HKCU\\A]\n[HKLM\\B]\n\n\"x\"=-\n", problem));
  EXPECT_EQ(problem.line, 5);
  EXPECT_TRUE(problem.changed) << "of several steps, those before the refused one stay";
  EXPECT_TRUE(importRegistryText(header + "[HKCU\\A]\n", problem));
  setRegistry(nullptr);
}

}  // namespace
}  // namespace kpx
