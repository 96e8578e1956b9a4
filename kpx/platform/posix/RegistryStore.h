#pragma once

#include <sys/types.h>

#include <cstdint>
#include <functional>
#include <string_view>
#include <vector>

#include "kpx/platform/Registry.h"

struct sqlite3;

namespace kpx::detail {

/// The file that holds the keys of a root; empty when the user's folder is not known.
/// $KPX_USER_REGISTRY and $KPX_MACHINE_REGISTRY name other ones.
CString registryStorePath(RegistryRoot root);

/// A connection to such a file, for one thread. Outside of `inTransaction` every operation is a
/// transaction of its own. Keys have a number that is never given again; 0 is the root.
///
/// The file may hold anything: contents are checked when they are read, and triggers and views in
/// it are not run.
class RegistryStore {
 public:
  using KeyId = std::int64_t;
  static constexpr KeyId rootKey = 0;

  RegistryStore() noexcept = default;
  RegistryStore(const RegistryStore&) = delete;
  RegistryStore& operator=(const RegistryStore&) = delete;
  ~RegistryStore();

  /// Opens the file of a root. One that is missing reads like an empty one.
  RegistryResult open(RegistryRoot root);
  /// The same for changes. A missing file is created, with the folders above it, where `create`
  /// says so; else the answer is `notFound`.
  RegistryResult openForChanges(RegistryRoot root, bool create);

  RegistryResult findKey(std::u16string_view path, KeyId& key);
  RegistryResult keyExists(KeyId key);
  RegistryResult read(KeyId key, std::u16string_view name, RegistryValue& value);
  RegistryResult keyNames(KeyId key, std::vector<CString>& names);
  RegistryResult valueNames(KeyId key, std::vector<CString>& names);

  /// Carries out a change, which is stored whole or, when it fails or throws, not at all; the store
  /// is left for others in each case. The operations below belong inside of it.
  using Change = std::function<RegistryResult()>;
  RegistryResult inTransaction(const Change& change);

  RegistryResult createKey(std::u16string_view path, KeyId& key);
  RegistryResult removeKey(KeyId key);
  RegistryResult removeTree(KeyId key);
  RegistryResult write(KeyId key, std::u16string_view name, const RegistryValue& value);
  RegistryResult removeValue(KeyId key, std::u16string_view name);

 private:
  class Statement;

  /// A transaction: `begin`, and a body that commits it or leaves it. Whatever happens in either,
  /// nothing stays open, for which other programs would wait, and fail.
  RegistryResult transact(const char* begin, const Change& body);
  void rollBack(Statement& prepared) noexcept;

  RegistryResult connect(RegistryRoot root);
  RegistryResult checkFormat();
  RegistryResult createTables();
  RegistryResult number(const char* sql, std::int64_t& answer);
  RegistryResult execute(const char* sql);
  RegistryResult readNames(const char* sql, KeyId key, std::size_t maxLength,
                           std::vector<CString>& names);
  RegistryResult checkUsable(bool forChange) const noexcept;

  sqlite3* connection_ = nullptr;
  pid_t process_ = 0;
  bool hasTables_ = false;
};

}  // namespace kpx::detail
