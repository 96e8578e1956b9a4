#include "kpx/support/zip/Unzip.h"

#include <gtest/gtest.h>

#include <stdexcept>

#include "kpx/report/Error.h"
#include "tests/common/FaultyFileSystem.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"
#include "tests/support/zip/ZipBuilder.h"

namespace kpx {

void PrintTo(ZipStatus status, std::ostream* out) { PrintTo(CString(zipStatusName(status)), out); }

namespace {

namespace fs = std::filesystem;
using Step = FaultyFileSystem::Step;

/// An archive beside the folder that it is unpacked to, so that what leads out of it is seen.
class UnzipTest : public testing::Test {
 protected:
  UnzipResult unpack(const std::string& archive, const UnzipOptions& options = {}) {
    folder_.write("archive.zip", archive);
    return unzip(folder_ / "archive.zip", folder_ / "out", options);
  }
  /// The status of the only entry.
  ZipStatus unpackOne(const ZipPart& part, const UnzipOptions& options = {}) {
    const UnzipResult result = unpack(zipOf({part}), options);
    return result.entries.size() == 1 ? result.entries[0].status : result.archive;
  }
  std::string out(const std::string& name) { return folder_.read("out/" + name); }
  /// How many files and folders there are below the destination.
  std::size_t count() const {
    const auto all = fs::recursive_directory_iterator(folder_.path() / "out");
    return static_cast<std::size_t>(std::distance(begin(all), end(all)));
  }

  TemporaryFolder folder_;
};

std::string mixedBytes(std::size_t size) {
  std::string bytes(size, '\0');
  std::uint32_t state = 7;
  for (char& byte : bytes) {
    state = state * 1664525 + 1013904223;
    byte = static_cast<char>(state >> 28);
  }
  return bytes;
}

ZipPart damaged(ZipPart part) {
  part.checksum = 1;
  return part;
}

TEST_F(UnzipTest, EveryShapeOfArchiveGivesItsContent) {
  // Around the sizes of the buffers.
  std::vector<ZipPart> parts{{"deep/er/", ""}};
  for (const std::size_t size : {0, 1, 65535, 65536, 65537, 262143, 262144, 262145, 1000000}) {
    for (const std::uint16_t method : {0, 8}) {
      parts.push_back({"deep/" + std::to_string(method) + "-" + std::to_string(size),
                       mixedBytes(size), method});
    }
  }
  parts[3].localExtra = 9;  // only the entry itself tells
  for (const bool sizes64 : {false, true}) {
    for (const bool descriptor : {false, true}) {
      for (const bool surrounded : {false, true}) {
        fs::remove_all(folder_.path() / "out");
        ZipShape shape{sizes64, descriptor, {}, {}};
        if (surrounded) {
          shape.prefix = "MZ" + std::string(100000, 'x');
          shape.comment = "PK\5\6 and so on" + std::string(60000, 'c');
        }
        const UnzipResult result = unpack(zipOf(parts, shape));
        EXPECT_TRUE(result.complete()) << result.message().utf8();
        ASSERT_EQ(result.entries.size(), parts.size());
        EXPECT_TRUE(fs::is_directory(folder_.path() / "out/deep/er"));
        for (std::size_t i = 1; i < parts.size(); ++i) {
          EXPECT_TRUE(out(parts[i].name) == parts[i].content) << parts[i].name;
          EXPECT_EQ(result.entries[i].bytes, parts[i].content.size());
        }
        EXPECT_EQ(count(), parts.size() + 1);
      }
    }
  }
}

TEST_F(UnzipTest, NamesThatLeadOutOrNowhereAreRefusedAndTheOthersUnpacked) {
  const std::pair<const char*, ZipStatus> cases[] = {
      {"good.txt", ZipStatus::done},
      {"a\\b.txt", ZipStatus::done},
      {"./x//y", ZipStatus::done},
      {"./", ZipStatus::done},
      {"...x", ZipStatus::done},
      {"console.txt", ZipStatus::done},
      {"COM0", ZipStatus::done},
      {"", ZipStatus::emptyName},
      {".", ZipStatus::emptyName},
      {"/etc/x", ZipStatus::absoluteName},
      {"\\\\server\\x", ZipStatus::absoluteName},
      {"C:\\x", ZipStatus::driveName},
      {"c:x", ZipStatus::driveName},
      {"..", ZipStatus::parentStep},
      {"../x", ZipStatus::parentStep},
      {"a/..\\../x", ZipStatus::parentStep},
      {"a/../", ZipStatus::parentStep},
      {"stream.txt:hidden", ZipStatus::badCharacter},
      {"what?", ZipStatus::badCharacter},
      {"tab\tbed", ZipStatus::badCharacter},
      {".. /x", ZipStatus::trailingUnit},
      {".../x", ZipStatus::trailingUnit},
      {"x.", ZipStatus::trailingUnit},
      {"NUL", ZipStatus::reservedName},
      {"a/com7.tar.gz", ZipStatus::reservedName},
      {"Aux .txt", ZipStatus::reservedName},
      {"lpt\xFC", ZipStatus::done},  // in code page 437 no digit
      {"lpt\xFD", ZipStatus::reservedName},
      {"GOOD.TXT", ZipStatus::sameFile},
      {"good.txt/x", ZipStatus::fileAndFolder},
      {"A", ZipStatus::fileAndFolder},
      {"A/c.txt", ZipStatus::done},
      {"A/b.txt", ZipStatus::sameFile},
      {"a//b.txt", ZipStatus::done},  // the very same name
  };
  std::vector<ZipPart> parts;
  for (const auto& [name, status] : cases) parts.push_back({name, "x"});
  parts[3].content.clear();
  parts[16].content.clear();
  const UnzipResult result = unpack(zipOf(parts));
  ASSERT_EQ(result.entries.size(), parts.size());
  EXPECT_FALSE(result.complete());
  for (std::size_t i = 0; i < parts.size(); ++i) {
    EXPECT_EQ(result.entries[i].status, cases[i].second) << parts[i].name;
  }
  EXPECT_EQ(out("a/b.txt"), "x");
  EXPECT_EQ(folder_.names().size(), 2u);  // the archive and the destination

  EXPECT_EQ(unpackOne({std::string(1025, 'n'), ""}), ZipStatus::nameTooLong);
  std::string deep;
  for (int i = 0; i < 129; ++i) deep += "d/";
  EXPECT_EQ(unpackOne({deep, ""}), ZipStatus::nameTooLong);
  EXPECT_EQ(unpackOne({std::string("a\0b", 3), ""}), ZipStatus::badCharacter);
}

TEST_F(UnzipTest, NamesAreReadInTheirEncoding) {
  const std::string stored = "h\x94he.txt";
  const auto unicodeName = [](std::uint32_t checksum, const std::string& name) {
    std::string extra("\x75\x70", 2);
    detail::put(extra, name.size() + 5, 2);
    extra += '\1';
    detail::put(extra, checksum, 4);
    return extra + name;
  };
  const auto checksum = static_cast<std::uint32_t>(
      crc32_z(0, reinterpret_cast<const Bytef*>(stored.data()), stored.size()));
  const std::string other = "Straße.txt";
  const std::tuple<ZipPart, std::string> cases[] = {
      {{stored, "x"}, "höhe.txt"},
      {{"Größe €.txt", "x", 8, 0x800}, "Größe €.txt"},
      {{stored, "x", 8, 0x800}, "höhe.txt"},  // flagged, but no UTF-8
      {{stored, "x", 8, 0, unicodeName(checksum, other)}, other},
      {{stored, "x", 8, 0, unicodeName(checksum + 1, other)}, "höhe.txt"},  // of an older name
      {{stored, "x", 8, 0, unicodeName(checksum, "\xFF")}, "höhe.txt"},
      {{stored, "x", 8, 0, unicodeName(checksum, "../x")}, ""},
  };
  for (const auto& [part, name] : cases) {
    fs::remove_all(folder_.path() / "out");
    EXPECT_EQ(unpackOne(part), name.empty() ? ZipStatus::parentStep : ZipStatus::done);
    EXPECT_EQ(count(), name.empty() ? 0u : 1u);
    EXPECT_EQ(name.empty() ? "x" : out(name), "x") << name;
  }
}

TEST_F(UnzipTest, LiesAndDamageAreNamedAndLeaveTheOldFile) {
  const std::string text = mixedBytes(300000);
  const std::string packed = detail::deflated(text);
  ZipPart part{"f", text};
  const auto lying = [&](auto change) {
    ZipPart changed = part;
    change(changed);
    return changed;
  };
  const std::pair<ZipPart, ZipStatus> cases[] = {
      {lying([](ZipPart& p) { p.checksum = 1; }), ZipStatus::checksumWrong},
      {lying([](ZipPart& p) { p.size = 299999; }), ZipStatus::sizeWrong},
      {lying([](ZipPart& p) { p.size = 300001; }), ZipStatus::sizeWrong},
      {lying([](ZipPart& p) { p.size = 10; }), ZipStatus::sizeWrong},
      {lying([&](ZipPart& p) { p.packed = packed + "more"; }), ZipStatus::sizeWrong},
      {lying([&](ZipPart& p) { p.packed = packed.substr(0, 5000); }), ZipStatus::contentDamaged},
      {lying([&](ZipPart& p) { p.packed = "\xFF" + packed; }), ZipStatus::contentDamaged},
      {lying([](ZipPart& p) { p.packed = std::string(); }), ZipStatus::contentDamaged},
      {lying([](ZipPart& p) { p.packedSize = 0xFFFFFFF0; }), ZipStatus::headerDamaged},
      {lying([](ZipPart& p) { p.packedSize = 0xFFFFFFFF; }), ZipStatus::headerDamaged},
      {lying([](ZipPart& p) { p.offset = 0xFFFFFFF0; }), ZipStatus::headerDamaged},
      {lying([](ZipPart& p) {
         p.offset = 1;
         p.packedSize = 9;
       }),
       ZipStatus::headerDamaged},
      {lying([](ZipPart& p) { p.localName = "g"; }), ZipStatus::headersDiffer},
      {lying([](ZipPart& p) { p.localSize = 299999; }), ZipStatus::headersDiffer},
      {lying([](ZipPart& p) { p.localSize = 0; }), ZipStatus::headersDiffer},
      {lying([](ZipPart& p) { p.localPackedSize = 1; }), ZipStatus::headersDiffer},
      {lying([](ZipPart& p) { p.localPackedSize = 0xFFFFFFFF; }), ZipStatus::headersDiffer},
      {lying([](ZipPart& p) { p.localChecksum = 1; }), ZipStatus::headersDiffer},
      {lying([](ZipPart& p) {
         p.localExtra = 60000;
         p.packedSize = 300000;
       }),
       ZipStatus::headerDamaged},
      {lying([](ZipPart& p) {
         p.method = 0;
         p.size = 5;
       }),
       ZipStatus::sizeWrong},
      {{"f", text, 8, 1}, ZipStatus::encrypted},
      {{"f", text, 9}, ZipStatus::unknownMethod},
      {{"f", "target", 0, 0, {}, 0xA1FF0000, 3 << 8}, ZipStatus::link},
      {{"f", "target", 0, 0, {}, 0x400}, ZipStatus::link},
      {{"f", "", 0, 0, {}, 0x11FF0000, 3 << 8}, ZipStatus::specialFile},
      {{"f/", "text"}, ZipStatus::folderWithContent},
  };
  fs::create_directory(folder_.path() / "out");
  folder_.write("out/f", "old");
  int number = 0;
  for (const auto& [lie, status] : cases) {
    EXPECT_EQ(unpackOne(lie), status) << number;
    EXPECT_EQ(out("f"), "old") << number;
    EXPECT_EQ(count(), 1u) << number++;
  }
}

TEST_F(UnzipTest, LongSizesOfBothHeadersAreCompared) {
  ZipPart part{"f", "text", 0};
  const ZipShape sizes64{true, false, {}, {}};
  EXPECT_TRUE(unpack(zipOf({part}, sizes64)).complete());
  part.localSize = 5;
  EXPECT_EQ(unpack(zipOf({part}, sizes64)).entries[0].status, ZipStatus::headersDiffer);
}

TEST_F(UnzipTest, AttributesOfSystemsTellWhatAnEntryIs) {
  const struct {
    const char* content;
    std::uint32_t attributes;
    bool isUnix;
    ZipStatus status;
    bool isFolder;
  } cases[] = {
      {"from standard input", 0x11B00000, true, ZipStatus::done, false},  // a pipe
      {"", 0x11B00000, true, ZipStatus::specialFile, false},
      {"", 0x81A40010, true, ZipStatus::done, false},  // a file, whatever else is said of it
      {"", 0x41ED0010, true, ZipStatus::done, true},
      {"", 0x00000010, true, ZipStatus::done, true},
      {"", 0x00000010, false, ZipStatus::done, true},
      {"text", 0x00000010, false, ZipStatus::done, false},
      {"", 0x00000400, false, ZipStatus::done, false},
      {"", 0x00000410, false, ZipStatus::done, true},
      {"target", 0x00000400, false, ZipStatus::link, false},
  };
  for (const auto& each : cases) {
    fs::remove_all(folder_.path() / "out");
    const ZipPart part{"f",
                       each.content,
                       0,
                       0,
                       {},
                       each.attributes,
                       static_cast<std::uint16_t>(each.isUnix ? 3 << 8 : 20)};
    EXPECT_EQ(unpackOne(part), each.status) << std::hex << each.attributes;
    if (each.status != ZipStatus::done) continue;
    EXPECT_EQ(fs::is_directory(folder_.path() / "out/f"), each.isFolder) << each.attributes;
    EXPECT_EQ(each.isFolder ? "" : out("f"), each.content);
  }
  // What is too long for the path of a target is a file that its system keeps elsewhere.
  const ZipPart cloud{"f", mixedBytes(200000), 0, 0, {}, 0x400};
  EXPECT_EQ(unpackOne(cloud), ZipStatus::done);
}

TEST_F(UnzipTest, OfEntriesWithTheSameNameTheLastStands) {
  const std::string archive = zipOf({{"d/f", "first"}, {"other", "x"}, {"d/f", "last"}});
  EXPECT_TRUE(unpack(archive).complete());
  EXPECT_EQ(out("d/f"), "last");
  EXPECT_EQ(unpack(zipOf({{"d/f", "good"}, damaged({"d/f", "bad"})})).entries[0].status,
            ZipStatus::done);
  EXPECT_EQ(out("d/f"), "good") << "as with any file that exists";

  UnzipOptions never;
  never.overwrite = UnzipOverwrite::never;
  UnzipResult result = unpack(archive, never);
  EXPECT_EQ(result.entries[2].status, ZipStatus::kept);
  EXPECT_EQ(out("d/f"), "good") << "a file of the user's";
  fs::remove_all(folder_.path() / "out");
  result = unpack(archive, never);
  EXPECT_EQ(result.entries[2].status, ZipStatus::done);
  EXPECT_EQ(out("d/f"), "last");
}

TEST_F(UnzipTest, OverlappingEntriesGiveOnlyOneOfThem) {
  ZipPart first{"first", mixedBytes(1000), 0};
  ZipPart quoted{"quoted", "x", 0};
  quoted.offset = 0;
  UnzipResult result = unpack(zipOf({first, quoted}));
  EXPECT_EQ(result.entries[0].status, ZipStatus::overlapping);
  EXPECT_EQ(result.entries[1].status, ZipStatus::headersDiffer);

  // An entry inside another's content.
  ZipPart outer{"outer", zipOf({quoted}), 0};
  ZipPart inner = quoted;
  inner.offset = 30 + outer.name.size();
  result = unpack(zipOf({outer, inner}));
  EXPECT_EQ(result.entries[0].status, ZipStatus::overlapping);
  EXPECT_EQ(result.entries[1].status, ZipStatus::done);
  // One that only its own header makes too long.
  first.localExtra = 5;
  ZipPart second{"second", "x"};
  second.offset = 30 + 5 + 1000 + 1;
  EXPECT_EQ(unpack(zipOf({first, second})).entries[0].status, ZipStatus::overlapping);
}

TEST_F(UnzipTest, LimitsHoldForTheStatedSizes) {
  const std::string zeros(1 << 20, '\0');
  const std::string archive = zipOf({{"a", zeros}, {"b", zeros}, {"c", "x"}});
  UnzipOptions options;
  options.limits.totalBytes = zeros.size() + 1;
  UnzipResult result = unpack(archive, options);
  EXPECT_EQ(result.entries[0].status, ZipStatus::done);
  EXPECT_EQ(result.entries[1].status, ZipStatus::totalTooLarge);
  EXPECT_EQ(result.entries[2].status, ZipStatus::done);

  options = {};
  options.limits.ratioFromBytes = zeros.size();
  EXPECT_EQ(unpack(archive, options).entries[0].status, ZipStatus::ratioTooHigh);
  options.limits.ratioFromBytes = zeros.size() + 1;
  EXPECT_TRUE(unpack(archive, options).complete());

  fs::remove_all(folder_.path() / "out");
  options.limits.entries = 2;
  result = unpack(archive, options);
  EXPECT_EQ(result.archive, ZipStatus::tooManyEntries);
  EXPECT_FALSE(fs::exists(folder_.path() / "out"));
  options.limits.entries = 3;
  EXPECT_TRUE(unpack(archive, options).complete());
}

TEST_F(UnzipTest, WhatIsInTheDestinationDecides) {
  const std::string archive = zipOf({{"file", "new"}, {"folder", "new"}, {"file2/x", "n"}});
  fs::create_directories(folder_.path() / "out/folder");
  folder_.write("out/file", "old");
  folder_.write("out/file2", "old");

  UnzipOptions never;
  never.overwrite = UnzipOverwrite::never;
  EXPECT_EQ(unpack(archive, never).entries[0].status, ZipStatus::kept);
  EXPECT_EQ(out("file"), "old");

  const UnzipResult result = unpack(archive);
  EXPECT_EQ(result.entries[0].status, ZipStatus::done);
  EXPECT_EQ(result.entries[1].file.status, FileStatus::isFolder);
  EXPECT_EQ(result.entries[2].file.status, FileStatus::notFolder);
  EXPECT_EQ(out("file"), "new");
}

TEST_F(UnzipTest, LinksInTheDestinationLeadNowhere) {
  fs::create_directory(folder_.path() / "out");
  fs::create_directory(folder_.path() / "elsewhere");
  folder_.write("elsewhere/target", "old");
  std::error_code refused;
  fs::create_symlink("../elsewhere/target", folder_.path() / "out/link", refused);
  if (refused) GTEST_SKIP() << "this user may make no links";
  fs::create_directory_symlink("../elsewhere", folder_.path() / "out/sub");
  const std::string archive = zipOf({{"link", "new"}, {"sub/x", "new"}, {"file", "new"}});
  const UnzipResult result = unpack(archive);
  EXPECT_EQ(result.entries[0].status, ZipStatus::throughLink);
  EXPECT_EQ(result.entries[1].status, ZipStatus::throughLink);
  EXPECT_EQ(folder_.read("elsewhere/target"), "old");
  EXPECT_FALSE(fs::exists(folder_.path() / "elsewhere/x"));
  // The destination itself may be a link: the user chose it.
  fs::create_directory_symlink("elsewhere", folder_.path() / "chosen");
  EXPECT_EQ(unzip(folder_ / "archive.zip", folder_ / "chosen/").entries[2].status, ZipStatus::done);
  EXPECT_EQ(folder_.read("elsewhere/file"), "new");
}

TEST_F(UnzipTest, FailureOfAnyStepLeavesTheOldFileAndTheOtherEntries) {
  const std::string content = mixedBytes(300000);
  const std::string archive = zipOf({{"a", content}, {"b", content, 0}, {"c", "small"}});
  for (const bool replacing : {true, false}) {
    for (const Step step : {Step::readAt, Step::open, Step::write, Step::close,
                            Step::takeAttributes, Step::putInPlace}) {
      for (int passing = 0;; ++passing) {
        fs::remove_all(folder_.path() / "out");
        fs::create_directory(folder_.path() / "out");
        for (const char* const name : {"out/a", "out/b", "out/c"}) {
          if (replacing) folder_.write(name, "old");
        }
        FaultyFileSystem files;
        files.failOnce(step, passing);
        const UnzipResult result = unpack(archive);
        if (!files.hasFailed()) {
          EXPECT_TRUE(result.complete());
          break;
        }
        EXPECT_FALSE(result.complete());
        const std::string old = replacing ? "old" : "";
        int failed = 0;
        for (const UnzipReceipt& receipt : result.entries) {
          const std::string name = receipt.name.utf8();
          const bool done = receipt.status == ZipStatus::done;
          failed += done ? 0 : 1;
          EXPECT_TRUE(out(name) == (!done         ? old
                                    : name == "c" ? "small"
                                                  : content))
              << name << " step " << static_cast<int>(step) << " after " << passing;
          EXPECT_EQ(receipt.file.status, done ? FileStatus::ok : FileStatus::noSpace);
        }
        EXPECT_EQ(failed, result.entries.empty() ? 0 : 1);
        EXPECT_EQ(count(), result.entries.empty() && !replacing ? 0u : replacing ? 3u : 2u);
      }
    }
  }
}

TEST_F(UnzipTest, ProgressRisesToTheTotalAndCanCancel) {
  const std::string content = mixedBytes(600000);
  const std::string archive =
      zipOf({{"a", content}, {"../b", content}, damaged({"c", content}), {"d", content}});
  Progress last;
  UnzipOptions options;
  options.progress = [&](const Progress& progress) {
    EXPECT_GE(progress.done, last.done);
    EXPECT_LE(progress.done, progress.total);
    last = progress;
    return true;
  };
  unpack(archive, options);
  EXPECT_EQ(last.done, 1800000u);
  EXPECT_EQ(last.total, 1800000u);

  fs::remove_all(folder_.path() / "out");
  options.progress = [&](const Progress& progress) { return progress.done <= 1200000; };
  const UnzipResult result = unpack(archive, options);
  EXPECT_EQ(result.entries[0].status, ZipStatus::done);
  EXPECT_EQ(result.entries[3].status, ZipStatus::cancelled);
  EXPECT_EQ(count(), 1u);

  options.progress = [](const Progress&) -> bool { throw std::runtime_error("no more"); };
  EXPECT_THROW(unpack(archive, options), std::runtime_error);
  EXPECT_EQ(count(), 1u);
}

TEST_F(UnzipTest, TestingWritesNothing) {
  UnzipOptions options;
  options.testOnly = true;
  const UnzipResult result = unpack(zipOf({{"a", "x"}, damaged({"b", "x"})}), options);
  EXPECT_EQ(result.entries[0].status, ZipStatus::done);
  EXPECT_EQ(result.entries[1].status, ZipStatus::checksumWrong);
  EXPECT_FALSE(fs::exists(folder_.path() / "out"));
}

TEST_F(UnzipTest, CutArchivesAreNoneAndAShortenedDirectoryKeepsItsFront) {
  const std::string archive = zipOf({{"a", "first"}, {"b", "second"}}, {true, true, {}, {}});
  for (std::size_t length = 0; length < archive.size(); ++length) {
    const UnzipResult result = unpack(archive.substr(0, length));
    EXPECT_EQ(result.archive, ZipStatus::noArchive) << length;
  }
  EXPECT_FALSE(fs::exists(folder_.path() / "out"));
  std::string damaged = zipOf({{"a", "first"}, {"b", "second"}});
  damaged[damaged.rfind("PK\1\2")] = 'X';
  const UnzipResult result = unpack(damaged);
  EXPECT_EQ(result.archive, ZipStatus::directoryDamaged);
  EXPECT_EQ(result.entries.size(), 1u);
  EXPECT_EQ(out("a"), "first");
}

TEST_F(UnzipTest, ExportedFunctionReportsOnceWhatIsMissing) {
  const auto reports = [&](const std::string& archive) {
    folder_.write("archive.zip", archive);
    const auto before = errorCounts().reported;
    kpxUnzip((folder_ / "archive.zip").GetString(), (folder_ / "out").GetString());
    return errorCounts().reported - before;
  };
  EXPECT_EQ(reports("no archive"), 1u);
  EXPECT_FALSE(fs::exists(folder_.path() / "out"));
  EXPECT_EQ(reports(zipOf({{"a", "x"}, {"../b", "x"}, {"../c", "x"}})), 1u);
  EXPECT_EQ(out("a"), "x");
  EXPECT_EQ(reports(zipOf({{"a", "new"}})), 0u);
  EXPECT_EQ(out("a"), "new");
}

}  // namespace
}  // namespace kpx
