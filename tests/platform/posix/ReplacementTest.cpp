#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <sys/xattr.h>

#include <cerrno>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <thread>

#include "kpx/platform/FileSystem.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/posix/ChildProcess.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

namespace fs = std::filesystem;

constexpr uid_t stranger = 12345;

/// The new file while it is written.
fs::path temporaryIn(const TemporaryFolder& folder) {
  for (const std::string& name : folder.names()) {
    if (name.starts_with(".kpx-") && name.ends_with(".tmp")) return folder.path() / name;
  }
  return {};
}

struct stat statusOf(const fs::path& path) {
  struct stat status = {};
  ::lstat(path.c_str(), &status);
  return status;
}

TEST(Replacement, NobodyElsesFileIsTouchedThroughALinkInTheNewFilesPlace) {
  const TemporaryFolder folder;
  folder.write("secret", "private");
  folder.write("job.xml", "old");
  fs::permissions(folder.path() / "secret", fs::perms(0600));
  fs::permissions(folder.path() / "job.xml", fs::perms(0666));
  const FileResult result = fileSystem().replaceFile(folder / "job.xml", [&](OutputFile& file) {
    const fs::path temporary = temporaryIn(folder);
    fs::rename(temporary, folder.path() / "stolen");
    fs::create_symlink(folder.path() / "secret", temporary);
    return file.write("new");
  });
  EXPECT_EQ(result.status, FileStatus::displaced);
  EXPECT_EQ(statusOf(folder.path() / "secret").st_mode & 07777, 0600u);
  EXPECT_EQ(folder.read("job.xml"), "old");
}

TEST(Replacement, FilesOfOthersAreNotUsedWhereEverybodyMayWrite) {
  if (::geteuid() != 0) GTEST_SKIP() << "only the administrator can make files of others";
  const TemporaryFolder folder;
  fs::permissions(folder.path(), fs::perms(01777));
  folder.write("job.xml", "old");
  folder.write("own.xml", "old");
  fs::create_symlink("own.xml", folder.path() / "link");
  for (const char* name : {"job.xml", "link"}) {
    ASSERT_EQ(::lchown((folder.path() / name).c_str(), stranger, stranger), 0);
    EXPECT_EQ(fileSystem().replaceFile(folder / name, "new").status, FileStatus::noPermission);
  }
  EXPECT_EQ(folder.read("own.xml"), "old");
  fs::permissions(folder.path(), fs::perms(0777));
  EXPECT_TRUE(fileSystem().replaceFile(folder / "job.xml", "new"));
  EXPECT_EQ(statusOf(folder.path() / "job.xml").st_uid, stranger);
}

TEST(Replacement, AccessListsAndAttributesAreKept) {
  const TemporaryFolder folder;
  folder.write("job.xml", "old");
  folder.write("plain.xml", "old");
  const std::string path = (folder.path() / "job.xml").string();
  // Owner rw, user 12345 rw, group none, mask rw, others none.
  constexpr unsigned char list[] = {2,   0,   0,   0,   1,   0,   6,  0,   255, 255, 255,
                                    255, 2,   0,   6,   0,   57,  48, 0,   0,   4,   0,
                                    0,   0,   255, 255, 255, 255, 16, 0,   6,   0,   255,
                                    255, 255, 255, 32,  0,   0,   0,  255, 255, 255, 255};
  constexpr char access[] = "system.posix_acl_access";
  constexpr char handedOn[] = "system.posix_acl_default";
  if (::setxattr(path.c_str(), access, list, sizeof list, 0) != 0 ||
      ::setxattr(path.c_str(), "user.origin", "field", 5, 0) != 0) {
    GTEST_SKIP() << "this volume has no access lists or no attributes";
  }
  ASSERT_TRUE(fileSystem().replaceFile(folder / "job.xml", "new"));
  unsigned char kept[sizeof list + 1];
  EXPECT_EQ(::getxattr(path.c_str(), access, kept, sizeof kept), ssize_t{sizeof list});
  EXPECT_TRUE(std::equal(std::begin(list), std::end(list), kept));
  EXPECT_EQ(statusOf(path).st_mode & 07777, 0660u) << "the mask stands for the group";
  EXPECT_EQ(::getxattr(path.c_str(), "user.origin", kept, sizeof kept), 5);

  // A file that the folder's list was taken from does not get it back.
  ASSERT_EQ(::setxattr(folder.path().c_str(), handedOn, list, sizeof list, 0), 0);
  fs::permissions(folder.path() / "plain.xml", fs::perms(0640));
  ASSERT_TRUE(fileSystem().replaceFile(folder / "plain.xml", "new"));
  const std::string plain = (folder.path() / "plain.xml").string();
  EXPECT_EQ(::getxattr(plain.c_str(), access, kept, sizeof kept), -1);
  EXPECT_EQ(statusOf(plain).st_mode & 07777, 0640u);
}

TEST(Replacement, WhatKilledProgramsLeftIsRemovedAndWhatLivingOnesWriteIsKept) {
  const TemporaryFolder folder;
  const auto writeUntil = [&](auto end) {
    return inChild([&] {
      fileSystem().replaceFile(folder / "job.xml", [&](OutputFile& file) {
        const FileResult result = file.write("half");
        folder.write("ready", "");
        end();
        return result;
      });
      return 0;
    });
  };
  const pid_t killed = writeUntil([] { ::raise(SIGKILL); });
  EXPECT_EQ(exitOf(killed), -1);
  EXPECT_FALSE(temporaryIn(folder).empty());
  EXPECT_TRUE(fileSystem().replaceFile(folder / "other.xml", "new"));
  EXPECT_TRUE(temporaryIn(folder).empty());

  fs::remove(folder.path() / "ready");
  const pid_t living = writeUntil([] { ::pause(); });
  while (!fs::exists(folder.path() / "ready")) std::this_thread::yield();
  EXPECT_TRUE(fileSystem().replaceFile(folder / "other.xml", "new"));
  EXPECT_FALSE(temporaryIn(folder).empty());
  ::kill(living, SIGKILL);
  exitOf(living);
  EXPECT_TRUE(fileSystem().replaceFile(folder / "other.xml", "new"));
  EXPECT_TRUE(temporaryIn(folder).empty());
}

TEST(Replacement, ALimitOnTheSizeOfFilesAndMissingMemoryLeaveNothing) {
  const TemporaryFolder folder;
  folder.write("job.xml", "old");
  const pid_t limited = inChild([&] {
    const rlimit limit{1000, 1000};
    if (::setrlimit(RLIMIT_FSIZE, &limit) != 0) return 2;
    const std::string bytes(10000, 'x');
    return fileSystem().replaceFile(folder / "job.xml", bytes).status == FileStatus::tooLarge ? 0
                                                                                              : 1;
  });
  EXPECT_EQ(exitOf(limited), 0);

  const CString path = folder / "job.xml";
  for (int count = 0;; ++count) {
    bool failed = false;
    {
      const FailingAllocations failing(count);
      try {
        failed = !fileSystem().replaceFile(path, "new");
      } catch (const std::bad_alloc&) {
        failed = true;
      }
    }
    EXPECT_EQ(folder.names(), std::vector<std::string>{"job.xml"});
    if (!failed) break;
  }
  EXPECT_EQ(folder.read("job.xml"), "new");
}

TEST(FileLock, ProgramsThatCountTogetherLoseNothing) {
  const TemporaryFolder folder;
  constexpr int programs = 4;
  constexpr int rounds = 50;
  std::vector<pid_t> children;
  for (int i = 0; i < programs; ++i) {
    children.push_back(inChild([&] {
      for (int round = 0; round < rounds; ++round) {
        std::unique_ptr<FileLock> lock;
        if (!fileSystem().lock(folder / "count", lock)) return 1;
        const int number = std::atoi(folder.read("count").c_str());
        if (!fileSystem().replaceFile(folder / "count", std::to_string(number + 1))) return 2;
      }
      return 0;
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(exitOf(child), 0);
  EXPECT_EQ(folder.read("count"), std::to_string(programs * rounds));
  EXPECT_EQ(folder.names(), std::vector<std::string>{"count"});
}

}  // namespace
}  // namespace kpx
