#include "kpx/platform/posix/RegistryStore.h"

#include <fcntl.h>
#include <sqlite3.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <new>
#include <optional>
#include <string>
#include <utility>

#include "kpx/platform/Environment.h"
#include "kpx/platform/Folders.h"
#include "kpx/text/CaseFold.h"
#include "kpx/text/Utf.h"

namespace kpx::detail {
namespace {

constexpr int applicationId = 0x4B505852;
constexpr int formatVersion = 1;
// Long enough for any writer that is alive; each change takes some milliseconds.
constexpr int busyMilliseconds = 10000;
// UTF-8 takes up to half as much again as UTF-16; the rest is for the row around a value.
constexpr int maxRowBytes = static_cast<int>(Registry::maxValueBytes * 2 + (1 << 17));

RegistryResult resultOfSystem(int code) noexcept {
  switch (code) {
    case EACCES:
    case EPERM:
    case EROFS:
      return {RegistryStatus::noPermission, code};
    case ENOSPC:
    case EDQUOT:
    case EFBIG:
      return {RegistryStatus::noSpace, code};
    default:
      return {RegistryStatus::failed, code};
  }
}

RegistryResult resultOf(sqlite3* connection, int code) {
  switch (code & 0xFF) {
    case SQLITE_OK:
    case SQLITE_ROW:
    case SQLITE_DONE:
      return {};
    case SQLITE_BUSY:
    case SQLITE_LOCKED:
      return {RegistryStatus::busy, code};
    case SQLITE_READONLY:
    case SQLITE_PERM:
    case SQLITE_AUTH:
      return {RegistryStatus::noPermission, code};
    case SQLITE_FULL:
      return {RegistryStatus::noSpace, code};
    case SQLITE_TOOBIG:
      return {RegistryStatus::tooLarge, code};
    case SQLITE_NOMEM:
      throw std::bad_alloc();
    case SQLITE_CANTOPEN:  // the file, or its journal in a folder that cannot be written to
    case SQLITE_IOERR: {
      if (code == SQLITE_IOERR_NOMEM) throw std::bad_alloc();
      const RegistryResult system = resultOfSystem(sqlite3_system_errno(connection));
      return {system.status, code};
    }
    case SQLITE_ERROR:  // a table or column is missing
    case SQLITE_CONSTRAINT:
    case SQLITE_CORRUPT:
    case SQLITE_MISMATCH:
    case SQLITE_NOTADB:
    case SQLITE_SCHEMA:
      return {RegistryStatus::damaged, code};
    default:
      return {RegistryStatus::failed, code};
  }
}

constexpr RegistryResult damaged{RegistryStatus::damaged};

std::u16string folded(std::u16string_view text) {
  std::u16string result(text);
  for (char16_t& unit : result) unit = foldCase(unit);
  return result;
}

std::optional<std::u16string> textOfUtf8(std::string_view bytes) {
  std::u16string text;
  if (appendUtf8(text, bytes) != std::string::npos) return std::nullopt;
  return text;
}

std::optional<std::u16string> textOfUnits(std::string_view bytes) {
  CString text;
  if (bytes.size() % 2 != 0) return std::nullopt;
  std::u16string units;
  units.reserve(bytes.size() / 2);
  for (std::size_t i = 0; i < bytes.size(); i += 2) {
    units += static_cast<char16_t>(static_cast<unsigned char>(bytes[i]) |
                                   static_cast<unsigned char>(bytes[i + 1]) << 8);
  }
  return units;
}

/// Waits a little for the lock of another process. Short, even pauses give everyone a turn: the
/// store's own ones grow long enough for a busy writer to starve its readers.
int waitForLock(void*, int tries) noexcept {
  constexpr int pauseMicroseconds = 2000;
  if (tries >= busyMilliseconds * 1000 / pauseMicroseconds || isRegistryDeadlineOver()) return 0;
  ::usleep(pauseMicroseconds);
  return 1;
}

/// Creates the folders above a file, for this user alone as folders of settings are.
RegistryResult createFoldersAbove(std::string path, mode_t permissions) {
  for (std::size_t end = path.find('/', 1); end != std::string::npos;
       end = path.find('/', end + 1)) {
    path[end] = '\0';
    const bool made = ::mkdir(path.c_str(), permissions) == 0 || errno == EEXIST;
    // A folder that may not be written to can still have the next one in it already.
    const int code = errno;
    struct stat status;
    if (!made && ::stat(path.c_str(), &status) != 0) return resultOfSystem(code);
    path[end] = '/';
  }
  return {};
}

}  // namespace

CString registryStorePath(RegistryRoot root) {
  const bool user = root == RegistryRoot::currentUser;
  CString path = environmentVariable(user ? u"KPX_USER_REGISTRY" : u"KPX_MACHINE_REGISTRY");
  if (!path.IsEmpty()) return path;
  path = user ? detail::userDataFolder() : detail::commonDataFolder();
  if (!path.IsEmpty()) path += u"/kpx/registry.sqlite";
  return path;
}

// --- statements -------------------------------------------------------------------------------

/// A prepared statement, which must not outlive its connection. After the first failure the rest
/// does nothing, and `result` tells it.
class RegistryStore::Statement {
 public:
  Statement(sqlite3* connection, const char* sql) : connection_(connection) {
    code_ = sqlite3_prepare_v2(connection, sql, -1, &statement_, nullptr);
  }
  ~Statement() { sqlite3_finalize(statement_); }
  Statement(const Statement&) = delete;
  Statement& operator=(const Statement&) = delete;

  Statement& bind(std::int64_t number) {
    return bound([&](int place) { return sqlite3_bind_int64(statement_, place, number); });
  }
  /// As UTF-8, readable with any tool; a text that UTF-8 cannot hold as its bytes.
  Statement& bind(std::u16string_view text) {
    const std::string utf8 = utf8FromUtf16(text);
    return textOfUtf8(utf8) == text ? bindText(utf8) : bindBlob(RegistryValue::ofText(text).bytes);
  }
  Statement& bindText(std::string_view utf8) {
    return bound([&](int place) {
      return sqlite3_bind_text64(statement_, place, utf8.data(), utf8.size(), SQLITE_TRANSIENT,
                                 SQLITE_UTF8);
    });
  }
  Statement& bindBlob(std::string_view bytes) {
    return bound([&](int place) {
      return sqlite3_bind_blob64(statement_, place, bytes.data(), bytes.size(), SQLITE_TRANSIENT);
    });
  }

  /// Whether there is a (further) row.
  bool step() {
    if (code_ == SQLITE_OK || code_ == SQLITE_ROW) code_ = sqlite3_step(statement_);
    return code_ == SQLITE_ROW;
  }
  /// Runs it to its end.
  RegistryResult run() {
    while (step()) {
    }
    return result();
  }
  void reset() {
    if (code_ != SQLITE_DONE && code_ != SQLITE_ROW) return;
    code_ = sqlite3_reset(statement_);
    place_ = 0;
  }
  RegistryResult result() const { return resultOf(connection_, code_); }

  int typeOf(int column) const { return sqlite3_column_type(statement_, column); }
  std::int64_t number(int column) const { return sqlite3_column_int64(statement_, column); }
  std::string_view bytes(int column) const {
    const void* const start = sqlite3_column_blob(statement_, column);
    const int size = sqlite3_column_bytes(statement_, column);
    return start != nullptr
               ? std::string_view(static_cast<const char*>(start), static_cast<std::size_t>(size))
               : std::string_view();
  }
  /// A text as `bind` wrote it.
  std::optional<std::u16string> text(int column) const {
    switch (typeOf(column)) {
      case SQLITE_TEXT:
        return textOfUtf8(bytes(column));
      case SQLITE_BLOB:
        return textOfUnits(bytes(column));
      default:
        return std::nullopt;
    }
  }

 private:
  template <class Bind>
  Statement& bound(Bind bindAt) {
    if (code_ == SQLITE_OK) code_ = bindAt(++place_);
    return *this;
  }

  sqlite3* connection_;
  sqlite3_stmt* statement_ = nullptr;
  int code_ = SQLITE_OK;
  int place_ = 0;
};

// --- connection -------------------------------------------------------------------------------

RegistryStore::~RegistryStore() {
  // What a child process inherited belongs to its parent, whose locks closing would touch.
  if (connection_ != nullptr && process_ == ::getpid()) sqlite3_close(connection_);
}

RegistryResult RegistryStore::open(RegistryRoot root) {
  const RegistryResult result = connect(root);
  return result.status == RegistryStatus::notFound ? RegistryResult{} : result;
}

RegistryResult RegistryStore::openForChanges(RegistryRoot root, bool create) {
  RegistryResult result = connect(root);
  if (result.status == RegistryStatus::notFound && create) {
    const std::string path = registryStorePath(root).utf8();
    const bool user = root == RegistryRoot::currentUser;
    if (path.empty()) return {RegistryStatus::failed};
    result = createFoldersAbove(path, user ? 0700 : 0755);
    if (!result) return result;
    const int descriptor = ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW,
                                  user ? 0600 : 0644);
    if (descriptor == -1 && errno != EEXIST) return resultOfSystem(errno);
    if (descriptor != -1) ::close(descriptor);
    result = connect(root);
  }
  if (!result) return result;
  if (sqlite3_db_readonly(connection_, "main") != 0) return {RegistryStatus::noPermission};
  if (hasTables_ || !create) return {};
  return createTables();
}

RegistryResult RegistryStore::connect(RegistryRoot root) {
  const std::string path = registryStorePath(root).utf8();
  struct stat status;
  if (path.empty()) return {RegistryStatus::notFound};
  if (::stat(path.c_str(), &status) != 0) {
    if (errno == ENOENT || errno == ENOTDIR) return {RegistryStatus::notFound, errno};
    return resultOfSystem(errno);
  }
  // Opening a pipe would wait for its other end.
  if (!S_ISREG(status.st_mode)) return damaged;

  process_ = ::getpid();
  // Readers open it for writing too if they may: only so can they take back the half change of a
  // program that was ended.
  const int code = sqlite3_open_v2(path.c_str(), &connection_,
                                   SQLITE_OPEN_READWRITE | SQLITE_OPEN_NOMUTEX, nullptr);
  if (code != SQLITE_OK) return resultOf(connection_, code);
  sqlite3_extended_result_codes(connection_, 1);
  sqlite3_busy_handler(connection_, &waitForLock, nullptr);
  sqlite3_limit(connection_, SQLITE_LIMIT_LENGTH, maxRowBytes);
  sqlite3_db_config(connection_, SQLITE_DBCONFIG_DEFENSIVE, 1, nullptr);
  sqlite3_db_config(connection_, SQLITE_DBCONFIG_TRUSTED_SCHEMA, 0, nullptr);
  sqlite3_db_config(connection_, SQLITE_DBCONFIG_ENABLE_TRIGGER, 0, nullptr);
  sqlite3_db_config(connection_, SQLITE_DBCONFIG_ENABLE_VIEW, 0, nullptr);
  if (const RegistryResult result = execute("PRAGMA cell_size_check=1"); !result) return result;
  // In one transaction: another program may be creating the tables just now, and half of its marks
  // would look like damage.
  return transact("BEGIN", [&] { return checkFormat(); });
}

RegistryResult RegistryStore::checkFormat() {
  std::int64_t version = 0;
  std::int64_t application = 0;
  std::int64_t tables = 0;
  RegistryResult result = number("PRAGMA user_version", version);
  if (result) result = number("PRAGMA application_id", application);
  if (!result) return result;
  hasTables_ = application == applicationId && version == formatVersion;
  if (hasTables_) return {};
  // A file without anything in it is one that a program is creating just now, or that it was
  // ended over.
  if (application != 0 || version != 0) return damaged;
  result = number("SELECT count(*) FROM sqlite_schema", tables);
  return result && tables != 0 ? damaged : result;
}

RegistryResult RegistryStore::createTables() {
  const RegistryResult result = transact("BEGIN IMMEDIATE", [&] {
    if (const RegistryResult checked = checkFormat(); !checked) return checked;
    if (!hasTables_) {
      static_assert(applicationId == 1263556690 && formatVersion == 1);
      for (const char* const step :
           {"CREATE TABLE keys(id INTEGER PRIMARY KEY AUTOINCREMENT, parent INTEGER NOT NULL,"
            " folded NOT NULL, name NOT NULL, UNIQUE(parent, folded))",
            "CREATE TABLE entries(\"key\" INTEGER NOT NULL, folded NOT NULL, name NOT NULL,"
            " type INTEGER NOT NULL, content NOT NULL, UNIQUE(\"key\", folded))",
            "PRAGMA application_id=1263556690", "PRAGMA user_version=1"}) {
        if (const RegistryResult done = execute(step); !done) return done;
      }
    }
    return execute("COMMIT");
  });
  hasTables_ = result.ok();
  return result;
}

RegistryResult RegistryStore::number(const char* sql, std::int64_t& answer) {
  Statement statement(connection_, sql);
  if (statement.step()) answer = statement.number(0);
  return statement.result();
}

RegistryResult RegistryStore::execute(const char* sql) { return Statement(connection_, sql).run(); }

RegistryResult RegistryStore::checkUsable(bool forChange) const noexcept {
  if (connection_ == nullptr) return {RegistryStatus::notFound};
  if (process_ != ::getpid()) return {RegistryStatus::failed};
  if (forChange && !hasTables_) return {RegistryStatus::notFound};
  return {};
}

RegistryResult RegistryStore::inTransaction(const Change& change) {
  if (const RegistryResult usable = checkUsable(true); !usable) return usable;
  return transact("BEGIN IMMEDIATE", [&] {
    const RegistryResult result = change();
    return result ? execute("COMMIT") : result;
  });
}

RegistryResult RegistryStore::transact(const char* begin, const Change& body) {
  struct End {
    ~End() { store.rollBack(statement); }
    RegistryStore& store;
    Statement statement;
  };
  // Made beforehand: there may be no memory for it when it is needed.
  End end{*this, Statement(connection_, "ROLLBACK")};
  if (const RegistryResult prepared = end.statement.result(); !prepared) return prepared;
  const RegistryResult begun = execute(begin);
  return begun ? body() : begun;
}

void RegistryStore::rollBack(Statement& prepared) noexcept {
  // Some failures have rolled back already.
  if (sqlite3_get_autocommit(connection_) != 0) return;
  prepared.step();
}

// --- reading ----------------------------------------------------------------------------------

RegistryResult RegistryStore::findKey(std::u16string_view path, KeyId& key) {
  std::vector<std::u16string_view> names;
  RegistryResult result = splitKeyPath(path, names);
  if (!result) return result;
  key = rootKey;
  if (names.empty()) return {};
  result = checkUsable(true);
  if (!result) return result;
  Statement find(connection_, "SELECT id FROM keys WHERE parent=? AND folded=?");
  for (const std::u16string_view name : names) {
    find.bind(key).bind(folded(name));
    if (!find.step())
      return find.result() ? RegistryResult{RegistryStatus::notFound} : find.result();
    key = find.number(0);
    find.reset();
  }
  return {};
}

RegistryResult RegistryStore::keyExists(KeyId key) {
  if (key == rootKey) return {};
  if (const RegistryResult usable = checkUsable(true); !usable) return usable;
  Statement find(connection_, "SELECT 1 FROM keys WHERE id=?");
  if (find.bind(key).step()) return {};
  return find.result() ? RegistryResult{RegistryStatus::keyDeleted} : find.result();
}

RegistryResult RegistryStore::read(KeyId key, std::u16string_view name, RegistryValue& value) {
  if (const RegistryResult usable = checkUsable(true); !usable) return usable;
  Statement find(connection_, "SELECT type, content FROM entries WHERE \"key\"=? AND folded=?");
  if (!find.bind(key).bind(folded(name)).step()) {
    const RegistryResult result = find.result();
    if (!result) return result;
    const RegistryResult exists = keyExists(key);
    return exists ? RegistryResult{RegistryStatus::notFound} : exists;
  }
  const std::int64_t type = find.number(0);
  if (find.typeOf(0) != SQLITE_INTEGER || type < 0 || type > 0xFFFFFFFF) return damaged;
  RegistryValue found{static_cast<RegistryType>(type), {}};
  switch (find.typeOf(1)) {
    case SQLITE_BLOB:
      found.bytes = find.bytes(1);
      break;
    case SQLITE_TEXT: {
      const std::optional<std::u16string> text = textOfUtf8(find.bytes(1));
      if (!text ||
          (found.type != RegistryType::string && found.type != RegistryType::expandString)) {
        return damaged;
      }
      found.bytes = RegistryValue::ofText(*text).bytes;
      break;
    }
    case SQLITE_INTEGER: {
      const std::int64_t number = find.number(1);
      if (found.type != RegistryType::dword || number < 0 || number > 0xFFFFFFFF) return damaged;
      found.bytes = RegistryValue::ofNumber(static_cast<std::uint32_t>(number)).bytes;
      break;
    }
    default:
      return damaged;
  }
  if (found.bytes.size() > Registry::maxValueBytes) return {RegistryStatus::tooLarge};
  value = std::move(found);
  return {};
}

RegistryResult RegistryStore::readNames(const char* sql, KeyId key, std::size_t maxLength,
                                        std::vector<CString>& names) {
  RegistryResult result = keyExists(key);
  if (!result) return result;
  if (!hasTables_) return {};
  result = checkUsable(true);
  if (!result) return result;
  Statement find(connection_, sql);
  find.bind(key);
  while (find.step()) {
    std::optional<std::u16string> name = find.text(0);
    if (!name || name->size() > maxLength) return damaged;
    names.emplace_back(std::move(*name));
  }
  return find.result();
}

RegistryResult RegistryStore::keyNames(KeyId key, std::vector<CString>& names) {
  std::vector<CString> found;
  const RegistryResult result = readNames("SELECT name FROM keys WHERE parent=? ORDER BY folded",
                                          key, Registry::maxKeyName, found);
  if (!result) return result;
  std::vector<std::u16string_view> parts;
  for (const CString& name : found) {
    if (!splitKeyPath(name, parts) || parts.size() != 1 || parts[0] != name.view()) return damaged;
  }
  names = std::move(found);
  return {};
}

RegistryResult RegistryStore::valueNames(KeyId key, std::vector<CString>& names) {
  std::vector<CString> found;
  const RegistryResult result =
      readNames("SELECT name FROM entries WHERE \"key\"=? ORDER BY folded", key,
                Registry::maxValueName, found);
  if (result) names = std::move(found);
  return result;
}

// --- changing ---------------------------------------------------------------------------------

RegistryResult RegistryStore::createKey(std::u16string_view path, KeyId& key) {
  std::vector<std::u16string_view> names;
  const RegistryResult result = splitKeyPath(path, names);
  if (!result) return result;
  key = rootKey;
  Statement find(connection_, "SELECT id FROM keys WHERE parent=? AND folded=?");
  Statement insert(connection_, "INSERT INTO keys(parent, folded, name) VALUES(?, ?, ?)");
  for (const std::u16string_view name : names) {
    if (find.bind(key).bind(folded(name)).step()) {
      key = find.number(0);
    } else {
      if (const RegistryResult found = find.result(); !found) return found;
      const RegistryResult inserted = insert.bind(key).bind(folded(name)).bind(name).run();
      if (!inserted) return inserted;
      key = sqlite3_last_insert_rowid(connection_);
      insert.reset();
    }
    find.reset();
  }
  return {};
}

RegistryResult RegistryStore::removeKey(KeyId key) {
  Statement below(connection_, "SELECT 1 FROM keys WHERE parent=?");
  if (below.bind(key).step()) return {RegistryStatus::hasSubkeys};
  if (const RegistryResult result = below.result(); !result) return result;
  const RegistryResult result =
      Statement(connection_, "DELETE FROM entries WHERE \"key\"=?").bind(key).run();
  if (!result) return result;
  return Statement(connection_, "DELETE FROM keys WHERE id=?").bind(key).run();
}

RegistryResult RegistryStore::removeTree(KeyId key) {
  // UNION, not UNION ALL: keys that a damaged file has in a circle are met once.
#define KPX_KEYS_BELOW                                                    \
  "WITH RECURSIVE below(id) AS (SELECT ?1 UNION SELECT keys.id FROM keys" \
  " JOIN below ON keys.parent=below.id) "
  const RegistryResult result =
      Statement(connection_, KPX_KEYS_BELOW "DELETE FROM entries WHERE \"key\" IN below")
          .bind(key)
          .run();
  if (!result) return result;
  return Statement(connection_, KPX_KEYS_BELOW "DELETE FROM keys WHERE id IN below")
      .bind(key)
      .run();
#undef KPX_KEYS_BELOW
}

RegistryResult RegistryStore::write(KeyId key, std::u16string_view name,
                                    const RegistryValue& value) {
  if (name.size() > Registry::maxValueName || name.find(u'\0') != name.npos) {
    return {RegistryStatus::badName};
  }
  if (value.bytes.size() > Registry::maxValueBytes) return {RegistryStatus::tooLarge};
  if (const RegistryResult exists = keyExists(key); !exists) return exists;
  Statement insert(connection_,
                   "INSERT INTO entries(\"key\", folded, name, type, content)"
                   " VALUES(?, ?, ?, ?, ?) ON CONFLICT(\"key\", folded)"
                   " DO UPDATE SET type=excluded.type, content=excluded.content");
  insert.bind(key).bind(folded(name)).bind(name).bind(static_cast<std::int64_t>(value.type));
  std::uint32_t number = 0;
  const bool isText =
      value.type == RegistryType::string || value.type == RegistryType::expandString;
  if (value.asNumber(number)) {
    insert.bind(std::int64_t{number});
  } else if (const auto text = isText ? textOfUnits(value.bytes) : std::nullopt; text) {
    insert.bind(*text);
  } else {
    insert.bindBlob(value.bytes);
  }
  return insert.run();
}

RegistryResult RegistryStore::removeValue(KeyId key, std::u16string_view name) {
  if (const RegistryResult exists = keyExists(key); !exists) return exists;
  const RegistryResult result =
      Statement(connection_, "DELETE FROM entries WHERE \"key\"=? AND folded=?")
          .bind(key)
          .bind(folded(name))
          .run();
  if (!result) return result;
  return sqlite3_changes(connection_) != 0 ? RegistryResult{}
                                           : RegistryResult{RegistryStatus::notFound};
}

}  // namespace kpx::detail
