#include <fcntl.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <sqlite3.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <iterator>
#include <new>

#include "kpx/platform/Registry.h"
#include "tests/common/posix/ChildProcess.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TestEnvironment.h"
#include "tests/common/TextPrinter.h"

namespace kpx {
namespace {

constexpr auto user = RegistryRoot::currentUser;
using Key = std::unique_ptr<RegistryKey>;

// What the file that keeps the registry may meet: other processes, missing rights, a full volume
// and contents that nobody here has written.
class RegistryStoreTest : public testing::Test {
 protected:
  RegistryStoreTest() {
    setVariable("KPX_USER_REGISTRY", folder_ / "user.sqlite");
    setVariable("KPX_MACHINE_REGISTRY", folder_ / "machine.sqlite");
  }
  ~RegistryStoreTest() override {
    removeVariable("KPX_USER_REGISTRY");
    removeVariable("KPX_MACHINE_REGISTRY");
  }

  static Key created(const CString& path) {
    Key key;
    EXPECT_TRUE(registry().create(user, path, RegistryAccess::readWrite, key));
    return key;
  }

  static RegistryStatus readValue(std::uint32_t& number) {
    Key key;
    RegistryValue value;
    RegistryResult result = registry().open(user, u"A", RegistryAccess::read, key);
    if (result) result = key->read(u"x", value);
    if (result && !value.asNumber(number)) return RegistryStatus::wrongType;
    return result.status;
  }

  void execute(const char* sql) const {
    sqlite3* database = nullptr;
    ASSERT_EQ(sqlite3_open(userFile().c_str(), &database), SQLITE_OK);
    EXPECT_EQ(sqlite3_exec(database, sql, nullptr, nullptr, nullptr), SQLITE_OK) << sql;
    sqlite3_close(database);
  }

  std::string userFile() const { return (folder_.path() / "user.sqlite").string(); }

  TemporaryFolder folder_;
};

TEST_F(RegistryStoreTest, ReadingCreatesNoFile) {
  Key key;
  EXPECT_EQ(registry().open(user, u"Software", RegistryAccess::readWrite, key).status,
            RegistryStatus::notFound);
  EXPECT_EQ(registry().remove(user, u"Software").status, RegistryStatus::notFound);
  EXPECT_TRUE(registry().open(user, u"", RegistryAccess::read, key));
  EXPECT_TRUE(folder_.names().empty());
}

TEST_F(RegistryStoreTest, ProcessesShareIt) {
  constexpr int processes = 4;
  constexpr int rounds = 12;
  std::vector<pid_t> children;
  children.reserve(processes);
  // All of them find no file and create it at the same moment.
  for (int process = 0; process < processes; ++process) {
    children.push_back(inChild([&] {
      for (int round = 0; round < rounds; ++round) {
        CString name;
        name.Format(u"%d-%d", process, round);
        Key key;
        if (!registry().create(user, u"Shared\\" + name, RegistryAccess::readWrite, key)) return 1;
        if (!key->write(name, RegistryValue::ofText(name))) return 2;
        if (!registry().open(user, u"Shared", RegistryAccess::readWrite, key)) return 3;
        if (!key->write(name, RegistryValue::ofNumber(1))) return 4;
        if (round % 2 == 1 && !registry().remove(user, u"Shared\\" + name)) return 5;
      }
      return 0;
    }));
  }
  for (const pid_t child : children) EXPECT_EQ(exitOf(child), 0);
  Key key;
  std::vector<CString> names;
  ASSERT_TRUE(registry().open(user, u"Shared", RegistryAccess::read, key));
  ASSERT_TRUE(key->valueNames(names));
  EXPECT_EQ(names.size(), static_cast<std::size_t>(processes * rounds));
  ASSERT_TRUE(key->keyNames(names));
  EXPECT_EQ(names.size(), static_cast<std::size_t>(processes * rounds / 2));
}

TEST_F(RegistryStoreTest, WriterThatIsKilledLeavesNoHalfChange) {
  for (int round = 0; round < 3; ++round) {
    const pid_t child = inChild([] {
      for (std::uint32_t number = 0;; ++number) {
        const RegistryValue value = RegistryValue::ofNumber(number);
        const RegistryChange steps[] = {{RegistryChange::Kind::write, u"A", u"x", value},
                                        {RegistryChange::Kind::write, u"A", u"y", value}};
        std::size_t reached = 0;
        if (!registry().change(user, steps, reached)) return 1;
      }
    });
    std::uint32_t number = 0;
    while (readValue(number) != RegistryStatus::ok) ::usleep(1000);
    ::usleep(15000);
    ::kill(child, SIGKILL);
    EXPECT_EQ(exitOf(child), -1);
    Key key;
    RegistryValue x;
    RegistryValue y;
    ASSERT_TRUE(registry().open(user, u"A", RegistryAccess::read, key));
    ASSERT_TRUE(key->read(u"x", x) && key->read(u"y", y));
    EXPECT_EQ(x, y);
  }
}

TEST_F(RegistryStoreTest, KeyOfTheParentIsRefused) {
  const Key key = created(u"A");
  const pid_t child = inChild([&] {
    RegistryValue value;
    std::vector<CString> names;
    if (key->read(u"x", value).status != RegistryStatus::failed) return 1;
    if (key->valueNames(names).status != RegistryStatus::failed) return 2;
    if (key->write(u"x", value).status != RegistryStatus::failed) return 3;
    Key own;
    return registry().open(user, u"A", RegistryAccess::read, own) ? 0 : 4;
  });
  EXPECT_EQ(exitOf(child), 0);
}

TEST_F(RegistryStoreTest, MissingRightsAreTold) {
  ASSERT_TRUE(created(u"A")->write(u"x", RegistryValue::ofNumber(5)));
  struct stat status;
  ASSERT_EQ(::stat(userFile().c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600u);
  std::filesystem::permissions(folder_.path(), std::filesystem::perms(0755));
  const auto asOther = [&](unsigned permissions, const std::function<int()>& body) {
    std::filesystem::permissions(userFile(), std::filesystem::perms(permissions));
    return exitOf(inChild([&] {
      // Rights do not bind the administrator, who may run the tests.
      if (::geteuid() == 0 && ::setuid(65534) != 0) return 99;
      return body();
    }));
  };
  EXPECT_EQ(asOther(0444,
                    [] {
                      Key key;
                      std::uint32_t number = 0;
                      if (readValue(number) != RegistryStatus::ok || number != 5) return 1;
                      const auto opened =
                          registry().open(user, u"A", RegistryAccess::readWrite, key);
                      if (opened.status != RegistryStatus::noPermission) return 2;
                      const auto removed = registry().remove(user, u"A");
                      return removed.status == RegistryStatus::noPermission ? 0 : 3;
                    }),
            0);
  EXPECT_EQ(asOther(0000,
                    [] {
                      std::uint32_t number = 0;
                      return readValue(number) == RegistryStatus::noPermission ? 0 : 1;
                    }),
            0);
}

TEST_F(RegistryStoreTest, FullVolumeKeepsWhatWasThere) {
  const Key key = created(u"A");
  ASSERT_TRUE(key->write(u"x", RegistryValue::ofNumber(5)));
  const pid_t child = inChild([] {
    ::signal(SIGXFSZ, SIG_IGN);
    const rlimit limit{65536, 65536};
    ::setrlimit(RLIMIT_FSIZE, &limit);
    Key own;
    if (!registry().open(user, u"A", RegistryAccess::readWrite, own)) return 1;
    const RegistryValue large = RegistryValue::ofBytes(std::string(300000, 'x'));
    return own->write(u"x", large) ? 2 : 0;
  });
  EXPECT_EQ(exitOf(child), 0);
  std::uint32_t number = 0;
  EXPECT_EQ(readValue(number), RegistryStatus::ok);
  EXPECT_EQ(number, 5u);
}

TEST_F(RegistryStoreTest, FilesThatAreNoneAreLeftAlone) {
  ASSERT_TRUE(created(u"A")->write(u"x", RegistryValue::ofNumber(5)));
  const std::string good = folder_.read("user.sqlite");
  std::string bent = good;
  for (std::size_t i = 100; i < bent.size(); i += 3) bent[i] = static_cast<char>(bent[i] ^ 0x5A);
  const std::string contents[] = {"no database at all, but longer than a header would be",
                                  good.substr(0, good.size() / 2), good.substr(0, 50), bent};
  for (const std::string& content : contents) {
    folder_.write("user.sqlite", content);
    std::uint32_t number = 0;
    Key key;
    EXPECT_EQ(readValue(number), RegistryStatus::damaged) << content.size();
    EXPECT_EQ(registry().create(user, u"B", RegistryAccess::readWrite, key).status,
              RegistryStatus::damaged);
    EXPECT_EQ(folder_.read("user.sqlite"), content);
  }
  std::filesystem::remove(userFile());
  ASSERT_EQ(::mkfifo(userFile().c_str(), 0600), 0);
  std::uint32_t number = 0;
  EXPECT_EQ(readValue(number), RegistryStatus::damaged);
}

TEST_F(RegistryStoreTest, ContentsAreCheckedWhenTheyAreRead) {
  const struct {
    const char* sql;
    RegistryStatus expected;
  } cases[] = {
      {"UPDATE entries SET type='text'", RegistryStatus::damaged},
      {"UPDATE entries SET type=-1", RegistryStatus::damaged},
      {"UPDATE entries SET content='five'", RegistryStatus::damaged},
      {"UPDATE entries SET content=4294967296", RegistryStatus::damaged},
      {"UPDATE entries SET content=1.5", RegistryStatus::damaged},
      {"UPDATE entries SET type=1, content=CAST(x'C328' AS TEXT)", RegistryStatus::damaged},
      {"UPDATE entries SET content=zeroblob(17000000)", RegistryStatus::tooLarge},
      {"UPDATE entries SET content=zeroblob(100000000)", RegistryStatus::tooLarge},
      {"DROP TABLE entries", RegistryStatus::damaged},
      {"DROP TABLE entries; CREATE VIEW entries AS SELECT 1 AS key, 'x' AS folded, 4 AS type,"
       " 5 AS content",
       RegistryStatus::damaged},
      {"PRAGMA user_version=2", RegistryStatus::damaged},
      {"PRAGMA application_id=0; PRAGMA user_version=0", RegistryStatus::damaged},
      {"UPDATE keys SET parent=id", RegistryStatus::notFound},
  };
  for (const auto& [sql, expected] : cases) {
    std::filesystem::remove(userFile());
    ASSERT_TRUE(created(u"A")->write(u"x", RegistryValue::ofNumber(5)));
    execute(sql);
    std::uint32_t number = 0;
    EXPECT_EQ(readValue(number), expected) << sql;
  }
  for (const char* name : {"x'00'", "5", "''", "'a\\b'", "zeroblob(600)"}) {
    std::filesystem::remove(userFile());
    created(u"A");
    execute((std::string("UPDATE keys SET name=") + name).c_str());
    Key key;
    std::vector<CString> names{u"before"};
    ASSERT_TRUE(registry().open(user, u"", RegistryAccess::read, key));
    EXPECT_EQ(key->keyNames(names).status, RegistryStatus::damaged) << name;
    EXPECT_EQ(names.size(), 1u);
  }
}

// Memory of the store's own, which fails in the order in which it is asked for.
int allocationsLeft = -1;
sqlite3_mem_methods methods;

void* allocate(int size) {
  if (allocationsLeft == 0) return nullptr;
  if (allocationsLeft > 0) --allocationsLeft;
  return methods.xMalloc(size);
}
void* reallocate(void* memory, int size) {
  if (allocationsLeft == 0) return nullptr;
  if (allocationsLeft > 0) --allocationsLeft;
  return methods.xRealloc(memory, size);
}

/// Whatever step fails, no transaction stays open that other programs would wait for.
TEST_F(RegistryStoreTest, LackOfMemoryLeavesNoTransactionOpen) {
  sqlite3_shutdown();
  ASSERT_EQ(sqlite3_config(SQLITE_CONFIG_GETMALLOC, &methods), SQLITE_OK);
  sqlite3_mem_methods failing = methods;
  failing.xMalloc = allocate;
  failing.xRealloc = reallocate;
  ASSERT_EQ(sqlite3_config(SQLITE_CONFIG_MALLOC, &failing), SQLITE_OK);
  const RegistryValue value = RegistryValue::ofBytes(std::string(5000, 'x'));
  int failures = 0;
  for (const bool creates : {false, true}) {
    const Key key = created(u"A");
    for (int count = 0; count < 2000; ++count) {
      if (creates) std::filesystem::remove(userFile());
      bool done = false;
      Key made;
      allocationsLeft = count;
      try {
        done = creates ? registry().create(user, u"B", RegistryAccess::readWrite, made).ok()
                       : key->write(u"x", value).ok();
      } catch (const std::bad_alloc&) {
        ++failures;
      }
      allocationsLeft = -1;
      execute("BEGIN IMMEDIATE; ROLLBACK");  // another program, which does not even wait
      ASSERT_FALSE(HasFailure()) << count;
      if (done) break;
    }
    EXPECT_TRUE(creates || key->write(u"x", value)) << "the handle is good afterwards";
  }
  EXPECT_GT(failures, 50);
  sqlite3_shutdown();
  sqlite3_config(SQLITE_CONFIG_MALLOC, &methods);
}

TEST_F(RegistryStoreTest, TriggersOfTheFileDoNotRun) {
  ASSERT_TRUE(created(u"A")->write(u"x", RegistryValue::ofNumber(5)));
  execute("CREATE TRIGGER t AFTER INSERT ON entries BEGIN DELETE FROM entries; END");
  ASSERT_TRUE(created(u"A")->write(u"y", RegistryValue::ofNumber(6)));
  std::uint32_t number = 0;
  EXPECT_EQ(readValue(number), RegistryStatus::ok);
}

TEST_F(RegistryStoreTest, DescriptorsAreGivenBack) {
  const auto openDescriptors = [] {
    const std::filesystem::directory_iterator folder("/proc/self/fd");
    return std::distance(begin(folder), end(folder));
  };
  const auto before = openDescriptors();
  for (int round = 0; round < 20; ++round) {
    Key key = created(u"A");
    RegistryValue value;
    EXPECT_EQ(key->read(u"missing", value).status, RegistryStatus::notFound);
    EXPECT_FALSE(registry().open(user, u"Missing", RegistryAccess::readWrite, key));
  }
  folder_.write("user.sqlite", std::string(5000, 'x'));
  for (int round = 0; round < 20; ++round) {
    std::uint32_t number = 0;
    EXPECT_EQ(readValue(number), RegistryStatus::damaged);
  }
  EXPECT_EQ(openDescriptors(), before);
}

}  // namespace
}  // namespace kpx
