// Reports, logs, lists and the other files of the suite.

#include <gtest/gtest.h>

#include <fstream>
#include <iterator>
#include <string>
#include <vector>

#include "kpx/platform/ExclusiveFile.h"
#include "kpx/support/registry/RegistryText.h"
#include "kpx/support/texts/LanguageFile.h"
#include "kpx/support/texts/TextTable.h"
#include "kpx/support/timers/CTimerFactory.h"
#include "kpx/support/zip/MemZip.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"
#include "tests/golden/Golden.h"

namespace kpx {
namespace {

TEST(ReportGolden, Timers) {
  StoppedClock clock;
  const TemporaryFolder folder;
  CTimerFactory factory;
  for (int run = 1; run <= 1'234; ++run) {
    const CTimerProxy proxy(factory.getTimer(u"Höhe, oft"));
    clock.count += static_cast<std::uint64_t>(run % 7);
  }
  for (int run = 1; run <= 12; ++run) {
    const CTimerProxy proxy(factory.getTimer(u"lang"));
    clock.count += static_cast<std::uint64_t>(run * 97);
  }
  factory.getTimer(u"läuft\nnoch")->startTimer();
  EXPECT_EQ(factory.dump(folder / "t.txt"), 1);
  EXPECT_EQ(factory.dump(folder / "t.txt", ordersort, timerFileMode::append), 1);
  EXPECT_EQ(factory.dumpSamples(u"lang", folder / "t.txt", timerFileMode::append), 1);
  expectGolden("timers.txt", folder.read("t.txt"));
  EXPECT_EQ(factory.dumpCsv(folder / "t.csv"), 1);
  EXPECT_EQ(factory.dumpCsv(folder / "t.csv", ordersort, timerFileMode::append), 1);
  expectGolden("timers.csv", folder.read("t.csv"));
  EXPECT_EQ(factory.dumpSamplesCsv(u"lang", folder / "s.csv"), 1);
  expectGolden("samples.csv", folder.read("s.csv"));
}

void replaceAll(std::string& text, std::string_view from, std::string_view to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
}

TEST(ReportGolden, ErrorLog) {
  ContextScope scope;
  StoppedClock clock;
  kpxError(42905);
  kpxError(INT32_MIN);
  kpxErrorText(u"Größe\r\n\xD83D €\U0001F600");
  std::string log = scope.folder.read("project/Error.log");
  EXPECT_EQ(scope.folder.read("system/Error.log"), log);
  // The log is a text file of its system, and tells of the machine; all else is the same.
  replaceAll(log, systemLineEnd, "\n");
  EXPECT_EQ(log.find('\r'), std::string::npos);
  const std::string memory = std::to_string(kpxGetMemSizeMB()) + " MB";
  replaceAll(log, kpxGetComputerName().utf8() + ", " + memory, "COMPUTER, 1024 MB");
  expectGolden("error.log", log);
}

TEST(ReportGolden, RegistryText) {
  const auto write = [](const CString& name, RegistryValue value) {
    RegistryStep step;
    step.change = {RegistryChange::Kind::write, u"Software\\KPX\\Größe", name, std::move(value)};
    return step;
  };
  std::string bytes;
  for (int byte = 0; byte < 256; ++byte) bytes += static_cast<char>(byte);
  std::vector<RegistryStep> steps = {
      write(u"", RegistryValue::ofText(u"Standard")),
      write(u"a\\\"b", RegistryValue::ofText(u"D:\\data \"€\" \U0001F600\xD83D")),
      write(u"Zeilen", RegistryValue::ofText(u"a\r\nb")),
      write(u"Zahl", RegistryValue::ofNumber(0xFEDCBA98)),
      write(u"Bytes", RegistryValue::ofBytes(bytes)),
      write(u"andere", {static_cast<RegistryType>(0x11), "abc"})};
  steps.push_back(write(u"weg", {}));
  steps.back().change.kind = RegistryChange::Kind::removeValue;
  steps.push_back(steps.back());
  steps.back().root = RegistryRoot::localMachine;
  steps.back().change = {RegistryChange::Kind::removeTree, u"Software\\KPX\\Alt", {}, {}};
  CString text;
  ASSERT_TRUE(writeRegistryText(steps, text));
  expectGolden("registry.reg", registryTextBytes(text));
}

TEST(ReportGolden, LanguageFiles) {
  std::ifstream english(KPX_TEXT_LISTS "/eng.tsv", std::ios::binary);
  TextList list;
  EXPECT_TRUE(
      readTextTable(std::string{std::istreambuf_iterator<char>(english), {}}, list).empty());
  ASSERT_FALSE(list.entries.empty());
  expectGolden("ENG.LNG", languageFileBytes(list));

  list = {.header = 0xFEDCBA98, .title = u"Prüfung", .entries = {}};
  for (const int length : {0, 1, 254, 255, 256, 700}) {
    list.entries.push_back({length, CString(u'ä', length)});
    list.entries.push_back({-length - 1, CString(u'漢', length) + u"\U0001F600\n\xD83D"});
  }
  expectGolden("lengths.LNG", languageFileBytes(list));
  expectGolden("lengths.tsv", textTableBytes(list));
}

// Case is the library's own, so it depends on nobody's locale.
TEST(ReportGolden, CaseOfEveryUnit) {
  GoldenLines lines;
  GoldenSum upper;
  GoldenSum lower;
  for (int code = 1; code < 0x10000; ++code) {
    upper.add(CString(static_cast<char16_t>(code), 1).MakeUpper());
    lower.add(CString(static_cast<char16_t>(code), 1).MakeLower());
  }
  lines.add(u"upper case %08X, lower case %08X", upper.crc(), lower.crc());
  expectGolden("case.txt", lines.bytes());
}

// Versions of zlib may compress in another way; what counts is that each reads what another wrote.
TEST(ReportGolden, CompressedBlocks) {
  std::string content;
  for (int line = 0; line < 500; ++line) content += std::to_string(line * line) + " Größe\r\n";
  const auto* const source = reinterpret_cast<const unsigned char*>(content.data());
  const auto size = static_cast<unsigned long>(content.size());
  std::ifstream golden(KPX_TEST_DATA "/block.zlib", std::ios::binary);
  const std::string stored{std::istreambuf_iterator<char>(golden), {}};
  std::vector<unsigned char> packed(stored.begin(), stored.end());
  auto packedSize = static_cast<unsigned long>(packed.size());
  if (packed.empty()) {
    packed.resize(memZipBound(size));
    packedSize = static_cast<unsigned long>(packed.size());
    ASSERT_EQ(KpxMemZip(packed.data(), &packedSize, source, size), MemZipCode::success);
    expectGolden("block.zlib", {reinterpret_cast<const char*>(packed.data()), packedSize});
  }
  std::vector<unsigned char> unpacked(size);
  auto unpackedSize = size;
  EXPECT_EQ(KpxMemUnZip(unpacked.data(), &unpackedSize, packed.data(), packedSize),
            MemZipCode::success);
  EXPECT_EQ(std::string(unpacked.begin(), unpacked.end()), content);
}

}  // namespace
}  // namespace kpx
