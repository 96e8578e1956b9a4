#include <gtest/gtest.h>
#include <windows.h>

#include <filesystem>

#include "kpx/platform/ExclusiveFile.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/platform/FileTimes.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

TEST(WindowsFiles, PathsMayBeLong) {
  const TemporaryFolder folder;
  CString deep = folder / "a";
  while (deep.GetLength() < 600) deep += u"\\" + CString(u'n', 100);
  FileSystem& files = fileSystem();
  ASSERT_TRUE(files.createFolders(deep));
  const CString path = deep + u"\\Straße.xml";
  ASSERT_TRUE(files.replaceFile(path, "old"));
  ASSERT_TRUE(files.replaceFile(path, "new"));
  FileBytes bytes;
  ASSERT_TRUE(files.read(path, bytes));
  EXPECT_EQ(bytes.view(), "new");
  std::vector<CString> names;
  ASSERT_TRUE(files.list(deep, names));
  EXPECT_EQ(names, std::vector<CString>{u"Straße.xml"});
  FileTimes times;
  EXPECT_TRUE(readFileTimes(path, times));
  ExclusiveFile log;
  EXPECT_TRUE(
      log.open(deep + u"\\Error.log", ExclusiveFile::Mode::append, std::chrono::milliseconds(0)));
  EXPECT_TRUE(log.write("line"));
  log.close();
  for (const char16_t* name : {u"\\Straße.xml", u"\\Error.log"}) {
    EXPECT_TRUE(files.remove(deep + name));
  }
  for (CString place = deep; place != folder / "a"; place = place.Left(place.ReverseFind(u'\\'))) {
    ASSERT_TRUE(::RemoveDirectoryW(CString(u"\\\\?\\") + place)) << place.utf8();
  }
}

TEST(WindowsFiles, FileThatOthersReadIsReplaced) {
  const TemporaryFolder folder;
  folder.write("job.xml", "old");
  const CString path = folder / "job.xml";
  const HANDLE reader =
      ::CreateFileW(path, GENERIC_READ, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                    nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(reader, INVALID_HANDLE_VALUE);
  const FileResult result = fileSystem().replaceFile(path, "new");
  ::CloseHandle(reader);
  EXPECT_EQ(folder.names().size(), 1u);
  EXPECT_EQ(folder.read("job.xml"), result ? "new" : "old");
  if (result.status == FileStatus::noPermission) GTEST_SKIP() << "older systems cannot do that";
  EXPECT_TRUE(result);
}

TEST(WindowsFiles, FileThatAnotherProgramKeepsIsLeftAlone) {
  const TemporaryFolder folder;
  folder.write("job.xml", "old");
  const CString path = folder / "job.xml";
  const HANDLE other =
      ::CreateFileW(path, GENERIC_READ | GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  ASSERT_NE(other, INVALID_HANDLE_VALUE);
  FileBytes bytes;
  EXPECT_EQ(fileSystem().read(path, bytes).status, FileStatus::noPermission);
  EXPECT_EQ(fileSystem().replaceFile(path, "new").status, FileStatus::noPermission);
  EXPECT_EQ(folder.names().size(), 1u);
  ::CloseHandle(other);
  EXPECT_EQ(folder.read("job.xml"), "old");
}

TEST(WindowsFiles, ReadersAndWritersDoNotMind) {
  const TemporaryFolder folder;
  folder.write("Error.log", "12345");
  const CString path = folder / "Error.log";
  ExclusiveFile log;
  ASSERT_TRUE(log.open(path, ExclusiveFile::Mode::append, std::chrono::milliseconds(0)));
  std::unique_ptr<InputFile> reader;
  ASSERT_TRUE(fileSystem().openInput(path, reader));
  EXPECT_EQ(reader->size(), 5u);
  log.close();
  EXPECT_TRUE(log.open(path, ExclusiveFile::Mode::append, std::chrono::milliseconds(0)))
      << "while it is read";
}

TEST(WindowsFiles, NamesThatTheSystemDoesNotTake) {
  const TemporaryFolder folder;
  for (const char* name : {"a?b", "a*b", "a|b", "a\"b", "a<b"}) {
    EXPECT_EQ(fileSystem().replaceFile(folder / name, "x").status, FileStatus::badName) << name;
  }
  EXPECT_TRUE(folder.names().empty());
}

TEST(WindowsFiles, TimesOfAFile) {
  const TemporaryFolder folder;
  folder.write("a", "x");
  const CString path = folder / "a";
  const HANDLE file =
      ::CreateFileW(path, FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
  const SYSTEMTIME leapDay{2000, 2, 0, 29, 0, 0, 0, 0};
  FILETIME time{};
  ASSERT_TRUE(::SystemTimeToFileTime(&leapDay, &time));
  ASSERT_TRUE(::SetFileTime(file, nullptr, nullptr, &time));
  ::CloseHandle(file);
  FileTimes read;
  ASSERT_TRUE(readFileTimes(path, read));
  EXPECT_EQ(read.written, (DateTime{2000, 2, 29, 0, 0, 0}));
  EXPECT_EQ(readFileTimes(folder / "missing", read).status, FileStatus::notFound);
  EXPECT_EQ(readFileTimes(u"", read).status, FileStatus::badName);
}

}  // namespace
}  // namespace kpx
