#include "kpx/platform/FileSystem.h"

#include <gtest/gtest.h>

#include <cstring>
#include <stdexcept>
#include <tuple>

#include "kpx/platform/EncodingConverter.h"
#include "kpx/platform/Memory.h"
#include "tests/common/FaultyFileSystem.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

namespace fs = std::filesystem;
using Step = FaultyFileSystem::Step;

TEST(FileSystem, ReplacedFileReadsBackWhateverItsSize) {
  const TemporaryFolder folder;
  const CString path = folder / "Straße 7.xml";
  // Around the size where memory comes from the system, and none at all.
  for (const std::size_t size :
       {std::size_t{0}, std::size_t{1}, largePage - 1, largePage, 3 * largePage + 5}) {
    std::string content(size, 'x');
    if (size != 0) content.back() = '\0';
    ASSERT_TRUE(fileSystem().replaceFile(path, content));
    FileBytes bytes;
    ASSERT_TRUE(fileSystem().read(path, bytes));
    EXPECT_TRUE(bytes.view() == content) << size;
  }
  EXPECT_EQ(folder.names().size(), 1u);
}

TEST(FileSystem, ReadingTellsWhyItFailed) {
  const TemporaryFolder folder;
  folder.write("ten.txt", "0123456789");
  struct Case {
    CString path;
    std::uint64_t limit;
    FileStatus status;
  };
  const Case cases[] = {
      {folder / "missing.txt", 100, FileStatus::notFound},
      {folder / "missing/ten.txt", 100, FileStatus::notFound},
      {folder / "ten.txt/more", 100, FileStatus::notFolder},
      {folder / ".", 100, FileStatus::isFolder},
      {CString(u"a\0b", 3), 100, FileStatus::badName},
      {u"", 100, FileStatus::badName},
      {folder / "ten.txt", 9, FileStatus::tooLarge},
      {folder / "ten.txt", 10, FileStatus::ok},
  };
  for (const Case& each : cases) {
    FileBytes bytes;
    const FileResult result = fileSystem().read(each.path, bytes, each.limit);
    EXPECT_EQ(static_cast<int>(result.status), static_cast<int>(each.status))
        << testing::PrintToString(each.path);
    EXPECT_EQ(result.message().IsEmpty(), result.ok());
  }
}

TEST(FileSystem, OpenedInputReadsAnywhere) {
  const TemporaryFolder folder;
  folder.write("ten.txt", "0123456789");
  std::unique_ptr<InputFile> file;
  ASSERT_TRUE(fileSystem().openInput(folder / "ten.txt", file));
  EXPECT_EQ(file->size(), 10u);
  const std::tuple<std::uint64_t, std::size_t, std::string_view> cases[] = {
      {7, 2, "78"},
      {0, 10, "0123456789"},
      {8, 5, "89"},
      {10, 1, ""},
      {~std::uint64_t{0} - 1, 5, ""}};
  for (const auto& [offset, count, expected] : cases) {
    char bytes[16];
    std::size_t done = 99;
    EXPECT_TRUE(file->readAt(offset, bytes, count, done));
    EXPECT_EQ(std::string_view(bytes, done), expected);
  }
  EXPECT_EQ(fileSystem().openInput(folder / "missing", file).status, FileStatus::notFound);
  EXPECT_EQ(fileSystem().openInput(folder / ".", file).status, FileStatus::isFolder);
}

TEST(FileSystem, FailureAtAnyStepLeavesTheOldFileAndNothingElse) {
  const TemporaryFolder folder;
  const CString path = folder / "job.xml";
  for (const bool replacing : {true, false}) {
    for (const Step step : {Step::open, Step::write, Step::flush, Step::close, Step::takeAttributes,
                            Step::putInPlace}) {
      if (step == Step::takeAttributes && !replacing) continue;
      fs::remove(folder.path() / "job.xml");
      if (replacing) folder.write("job.xml", "old");
      FaultyFileSystem files;
      files.failOnce(step);
      const FileResult result = files.replaceFile(path, "new content");
      EXPECT_TRUE(files.hasFailed()) << static_cast<int>(step);
      EXPECT_EQ(result.status, FileStatus::noSpace) << static_cast<int>(step);
      EXPECT_EQ(folder.read("job.xml"), replacing ? "old" : "") << static_cast<int>(step);
      EXPECT_EQ(folder.names().size(), replacing ? 1u : 0u) << static_cast<int>(step);
    }
  }
}

TEST(FileSystem, AWriterThatThrowsAndANameThatIsTakenLeaveTheOldFile) {
  const TemporaryFolder folder;
  folder.write("job.xml", "old");
  EXPECT_THROW(fileSystem().replaceFile(
                   folder / "job.xml",
                   [](OutputFile&) -> FileResult { throw std::runtime_error("no more"); }),
               std::runtime_error);
  EXPECT_EQ(folder.read("job.xml"), "old");
  EXPECT_EQ(folder.names().size(), 1u);

  ReplaceOptions options;
  options.onlyNew = true;
  EXPECT_EQ(fileSystem().replaceFile(folder / "job.xml", "new", options).status,
            FileStatus::exists);
  EXPECT_EQ(folder.read("job.xml"), "old");
  EXPECT_TRUE(fileSystem().replaceFile(folder / "new.xml", "new", options));
  EXPECT_EQ(folder.names().size(), 2u);
}

TEST(FileSystem, AFileThatAnotherProgramChangedIsNotReplaced) {
  const TemporaryFolder folder;
  const CString path = folder / "job.xml";
  const auto write = [](OutputFile& file) { return file.write("mine"); };
  FileVersion version;
  FileBytes bytes;
  const auto isRefused = [&] {
    return fileSystem().replaceUnchanged(path, write, version).status == FileStatus::changed;
  };

  ASSERT_TRUE(fileSystem().version(path, version));
  EXPECT_FALSE(version.exists);
  folder.write("job.xml", "theirs");
  EXPECT_TRUE(isRefused()) << "it was not there";

  ASSERT_TRUE(fileSystem().read(path, bytes, FileSystem::maxReadBytes, &version));
  EXPECT_TRUE(fileSystem().replaceUnchanged(path, write, version));
  EXPECT_TRUE(fileSystem().replaceUnchanged(path, write, version)) << "by this program itself";
  const fs::file_time_type time = fs::last_write_time(folder.path() / "job.xml");
  folder.write("job.xml", "dein");
  fs::last_write_time(folder.path() / "job.xml", time);
  EXPECT_TRUE(isRefused()) << "in place, at the same time and of the same size";
  EXPECT_EQ(folder.read("job.xml"), "dein");
  ASSERT_TRUE(fileSystem().read(path, bytes, FileSystem::maxReadBytes, &version));
  fs::remove(folder.path() / "job.xml");
  EXPECT_TRUE(isRefused()) << "it is gone";
  EXPECT_TRUE(folder.names().empty());
}

TEST(FileLock, IsForOneAtATimeAndLeavesNothing) {
  const TemporaryFolder folder;
  const CString path = folder / "job.ini";
  constexpr std::chrono::milliseconds soon(5);
  std::unique_ptr<FileLock> first;
  std::unique_ptr<FileLock> second;
  ASSERT_TRUE(fileSystem().lock(path, first, soon));
  EXPECT_EQ(fileSystem().lock(path, second, soon).status, FileStatus::locked);
  EXPECT_TRUE(fileSystem().lock(folder / "other.ini", second, soon));
  second.reset();
  ASSERT_TRUE(fileSystem().replaceFile(path, "under the lock"));
  EXPECT_EQ(fileSystem().lock(path, second, soon).status, FileStatus::locked);

  std::thread waiting([&] { EXPECT_TRUE(fileSystem().lock(path, second)); });
  first.reset();
  waiting.join();
  second.reset();
  EXPECT_EQ(folder.names(), std::vector<std::string>{"job.ini"});
  EXPECT_FALSE(fileSystem().lock(folder / "missing/job.ini", first, soon));
}

TEST(FileSystem, WriteProtectedFileIsNotReplaced) {
  const TemporaryFolder folder;
  folder.write("job.xml", "old");
  fs::permissions(folder.path() / "job.xml", fs::perms::owner_read);
  FileInfo info;
  ASSERT_TRUE(fileSystem().info(folder / "job.xml", info));
  if (info.writable) GTEST_SKIP() << "this user may write everything";
  EXPECT_EQ(fileSystem().replaceFile(folder / "job.xml", "new").status, FileStatus::noPermission);
  EXPECT_EQ(folder.read("job.xml"), "old");
}

TEST(FileSystem, CreatesAllFoldersOfAPathButNotThroughAFile) {
  const TemporaryFolder folder;
  FileSystem& files = fileSystem();
  EXPECT_TRUE(files.createFolders(folder / "a/b//c/"));
  EXPECT_TRUE(files.createFolders(folder / "a/b/c"));
  EXPECT_TRUE(fs::is_directory(folder.path() / "a/b/c"));
  folder.write("a/file", "x");
  EXPECT_EQ(files.createFolders(folder / "a/file").status, FileStatus::notFolder);
  EXPECT_EQ(files.createFolders(folder / "a/file/d").status, FileStatus::notFolder);

  std::vector<CString> names;
  EXPECT_TRUE(files.list(folder / "a", names));
  EXPECT_EQ(names, (std::vector<CString>{u"b", u"file"}));
  EXPECT_EQ(files.remove(folder / "a").status, FileStatus::notFolder);
  EXPECT_TRUE(files.exists(folder / "a/file"));
  EXPECT_TRUE(files.remove(folder / "a/file"));
  EXPECT_FALSE(files.exists(folder / "a/file"));
}

TEST(FileSystem, AppendedTextFollows) {
  const TemporaryFolder folder;
  for (int i = 0; i < 3; ++i) {
    std::unique_ptr<OutputFile> file;
    ASSERT_TRUE(fileSystem().openAppend(folder / "log.txt", file));
    EXPECT_TRUE(file->write("line\n"));
    EXPECT_TRUE(file->close());
  }
  EXPECT_EQ(folder.read("log.txt"), "line\nline\nline\n");
}

TEST(Memory, PagesAreAlignedZeroAndWritable) {
  for (const std::size_t bytes : {std::size_t{1}, std::size_t{5000}, largePage, largePage + 1}) {
    auto* const block = static_cast<unsigned char*>(allocatePages(bytes));
    EXPECT_EQ(reinterpret_cast<std::uintptr_t>(block) % largePage, 0u);
    EXPECT_EQ(block[0] + block[bytes - 1], 0);
    std::memset(block, 0xFF, bytes);
    releasePages(block, bytes);
  }
  EXPECT_THROW(allocatePages(~std::size_t{0}), std::bad_alloc);
}

TEST(EncodingConverter, TellsWhatCannotBeDecodedAndStopsAtWhatCannotBeEncoded) {
  std::u16string text;
  DecodingLoss loss;
  // Shift JIS: KA, a lead byte without its second, a letter, a lead byte at the end.
  EXPECT_TRUE(decodeCodePage(932, "\x83\x4A\x83\xFFz\x83", text, loss));
  EXPECT_EQ(CString(text).Left(1), u"\x30AB");
  EXPECT_EQ(CString(text).Right(2), u"z\xFFFD");
  EXPECT_EQ(loss.firstByte, 2u);
  EXPECT_GE(loss.count, 2u);

  std::string bytes;
  CodePageEncoder encoder(28592);
  EXPECT_EQ(encoder.encode(u"\x0151\x20AC", bytes), 1u);
  EXPECT_EQ(bytes, "\xF5");
  // A long text crosses the pieces that are converted at once.
  const std::u16string longText(10001, u'\x0151');
  EXPECT_EQ(encoder.encode(longText, bytes), longText.size());
  EXPECT_EQ(bytes.size(), longText.size() + 1);

  EXPECT_FALSE(decodeCodePage(4711, "x", text, loss));
  EXPECT_FALSE(CodePageEncoder(4711).usable());
}

}  // namespace
}  // namespace kpx
