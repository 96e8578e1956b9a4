#include <gtest/gtest.h>

#include <filesystem>

#include "kpx/platform/FileSystem.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

namespace fs = std::filesystem;

TEST(Links, ReplacingKeepsPermissionsAndFollowsLinksToTheirEnd) {
  const TemporaryFolder folder;
  fs::create_directory(folder.path() / "sub");
  folder.write("sub/real.xml", "old");
  const fs::perms kept = fs::perms::owner_read | fs::perms::owner_write | fs::perms::group_read;
  fs::permissions(folder.path() / "sub/real.xml", kept);
  fs::create_symlink("sub/real.xml", folder.path() / "second");
  fs::create_symlink("second", folder.path() / "first");
  fs::create_symlink("sub/later.xml", folder.path() / "dangling");

  EXPECT_TRUE(fileSystem().replaceFile(folder / "first", "new"));
  EXPECT_TRUE(fs::is_symlink(folder.path() / "first"));
  EXPECT_EQ(folder.read("sub/real.xml"), "new");
  EXPECT_EQ(fs::status(folder.path() / "sub/real.xml").permissions(), kept);

  EXPECT_TRUE(fileSystem().replaceFile(folder / "dangling", "came"));
  EXPECT_EQ(folder.read("sub/later.xml"), "came");

  fs::create_symlink("circle", folder.path() / "circle");
  EXPECT_EQ(fileSystem().replaceFile(folder / "circle", "x").status, FileStatus::badName);
  EXPECT_EQ(fileSystem().replaceFile(folder / "sub", "x").status, FileStatus::isFolder);
  EXPECT_FALSE(fileSystem().createFolders(folder / "circle/d"));
}

TEST(Names, MayBeTooLong) {
  const TemporaryFolder folder;
  FileBytes bytes;
  EXPECT_EQ(fileSystem().read(folder / std::string(300, 'n'), bytes).status, FileStatus::badName);
}

TEST(Links, DevicesAreNoFiles) {
  FileBytes bytes;
  EXPECT_EQ(fileSystem().read(u"/dev/zero", bytes, 100000).status, FileStatus::tooLarge)
      << "it tells no size beforehand";
  std::unique_ptr<InputFile> file;
  EXPECT_EQ(fileSystem().openInput(u"/dev/null", file).status, FileStatus::notRegularFile);
  EXPECT_EQ(fileSystem().replaceFile(u"/dev/null", "x").status, FileStatus::notRegularFile);
}

}  // namespace
}  // namespace kpx
