#pragma once

#include <chrono>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "kpx/platform/RegistryHandles.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Why a registry operation was not carried out.
enum class RegistryStatus : std::uint8_t {
  ok,
  notFound,      // no such key or value
  noPermission,  // also a change through a key that was opened for reading only
  wrongType,     // the value has another type than the one asked for, or a length that its type
                 // cannot have
  hasSubkeys,    // a key that has others below it cannot be deleted alone
  keyDeleted,    // the open key was deleted meanwhile
  badName,       // empty where that is none, too long, too many levels, or a root that is not known
  tooLarge,      // a value beyond the limit
  damaged,       // what is stored is no registry, or not one that this version can read
  busy,          // other programs kept the registry locked for too long
  noSpace,
  failed,  // anything else; the system's code tells
};

/// What came of a registry operation.
struct KPX_API RegistryResult {
  RegistryStatus status = RegistryStatus::ok;
  int systemCode = 0;  // of the system or the store, 0 if there is none

  bool ok() const noexcept { return status == RegistryStatus::ok; }
  explicit operator bool() const noexcept { return ok(); }
  /// A short English clause for messages: "there is no such key or value"; empty when it went well.
  CString message() const;
};

enum class RegistryRoot : std::uint8_t { currentUser, localMachine };

/// The root that a handle stands for; false for any other handle.
KPX_API bool rootOfHandle(HKEY handle, RegistryRoot& root) noexcept;
KPX_API HKEY handleOfRoot(RegistryRoot root) noexcept;

/// Types of values, with the system's numbers. Others occur in registries that other programs
/// write; they are kept and handed on as bytes.
enum class RegistryType : std::uint32_t {
  none = 0,
  string = 1,
  expandString = 2,  // with names of environment variables between percent signs
  binary = 3,
  dword = 4,
  multiString = 7,  // texts that each end with a character 0
};

/// A value: its type and its bytes as the system stores them. Texts are UTF-16 without a
/// terminator, numbers little-endian.
struct KPX_API RegistryValue {
  RegistryType type = RegistryType::none;
  std::string bytes;

  static RegistryValue ofText(std::u16string_view text);
  static RegistryValue ofNumber(std::uint32_t number);
  static RegistryValue ofBytes(std::string_view bytes);

  /// The text of a `string` or `expandString`, up to its first character 0; false, and `text` as
  /// it was, for other types and odd lengths.
  bool asText(CString& text) const;
  /// The number of a `dword`; false for other types and lengths.
  bool asNumber(std::uint32_t& number) const noexcept;

  friend bool operator==(const RegistryValue&, const RegistryValue&) = default;
};

/// What an open key may be used for.
enum class RegistryAccess : std::uint8_t { read, readWrite };

/// An open key. Destroying it closes it. One thread at a time may use it. The names of keys and
/// values compare without case and keep the case they were written with. The value with the
/// empty name is the key's default value.
///
/// A child process made by fork without exec must open keys of its own: one that it inherited
/// answers `failed`.
class KPX_API RegistryKey {
 public:
  virtual ~RegistryKey();

  virtual RegistryResult read(const CString& name, RegistryValue& value) = 0;
  /// Creates the value or replaces it; a replaced one keeps the case of its name.
  virtual RegistryResult write(const CString& name, const RegistryValue& value) = 0;
  virtual RegistryResult removeValue(const CString& name) = 0;
  /// The names of the values and of the keys directly below, ordered without case.
  virtual RegistryResult valueNames(std::vector<CString>& names) = 0;
  virtual RegistryResult keyNames(std::vector<CString>& names) = 0;
};

/// The path of a key, shared by the steps that change the same one: a path may be long, and a
/// change may have many steps.
class KPX_API RegistryPath {
 public:
  /// The root itself.
  RegistryPath() noexcept = default;
  RegistryPath(CString path) : path_(std::make_shared<const CString>(std::move(path))) {}
  RegistryPath(const char16_t* path) : RegistryPath(CString(path)) {}

  operator const CString&() const noexcept { return path_ ? *path_ : ofRoot(); }
  operator std::u16string_view() const noexcept {
    return path_ ? path_->view() : std::u16string_view();
  }

 private:
  static const CString& ofRoot() noexcept;

  std::shared_ptr<const CString> path_;
};

/// One step of a change to several keys.
struct RegistryChange {
  enum class Kind : std::uint8_t {
    createKey,    // with the keys above it; no failure if it exists
    removeTree,   // with everything below it; no failure if it does not exist
    write,        // the key is created when it is missing
    removeValue,  // no failure if it does not exist
  };
  Kind kind = Kind::createKey;
  RegistryPath key;
  CString name;         // write, removeValue
  RegistryValue value;  // write
};

/// The registry: keys with values in a tree, shared by all programs of the user and of the machine.
/// On Windows it is the system's, elsewhere a file for each root; see README.md. Keys are named by
/// their path below a root, with backslashes between the names; separators at either end are
/// passed over, and the empty path is the root itself.
///
/// No operation throws but with std::bad_alloc. Tests derive from it.
class KPX_API Registry {
 public:
  /// The system's own limits, in UTF-16 units and levels.
  static constexpr std::size_t maxKeyName = 255;
  static constexpr std::size_t maxValueName = 16383;
  static constexpr std::size_t maxLevels = 512;
  /// No value may have more bytes: far above any setting, window or object that is kept here.
  static constexpr std::size_t maxValueBytes = std::size_t{16} << 20;

  virtual ~Registry();

  /// Opens a key that exists.
  virtual RegistryResult open(RegistryRoot root, const CString& path, RegistryAccess access,
                              std::unique_ptr<RegistryKey>& key) = 0;
  /// Opens a key and creates it, and those above it, when they are missing.
  virtual RegistryResult create(RegistryRoot root, const CString& path, RegistryAccess access,
                                std::unique_ptr<RegistryKey>& key) = 0;
  /// Deletes a key and its values; refuses with `hasSubkeys` when there are keys below it, as the
  /// system does. The root itself cannot be deleted.
  virtual RegistryResult remove(RegistryRoot root, const CString& path) = 0;
  /// Deletes a key with everything below it.
  virtual RegistryResult removeTree(RegistryRoot root, const CString& path) = 0;
  /// Carries out the steps in their order; `reached` is how many went well before the first that
  /// failed. On Windows these stay, unless a name or a value was none that can be stored; elsewhere
  /// all steps are stored together or none is.
  virtual RegistryResult change(RegistryRoot root, std::span<const RegistryChange> steps,
                                std::size_t& reached) = 0;

  /// Whether `change` and `removeTree` are carried out whole or not at all: not on Windows.
  virtual bool isChangeWhole() const noexcept;
  /// The file that holds a root, which may not exist yet; empty on Windows, which has none.
  virtual CString fileOf(RegistryRoot root) const;
};

/// As long as it lives, operations of this thread give up at its deadline (with `busy`) when other
/// programs keep the registry locked, in place of waiting as long as any living program may need.
/// On Windows nothing is locked for long.
class KPX_API RegistryDeadline {
 public:
  explicit RegistryDeadline(std::chrono::steady_clock::time_point deadline) noexcept;
  ~RegistryDeadline();
  RegistryDeadline(const RegistryDeadline&) = delete;
  RegistryDeadline& operator=(const RegistryDeadline&) = delete;

 private:
  std::chrono::steady_clock::time_point before_;
};

/// The registry that the library works with: the system's, unless a test wraps it.
KPX_API Registry& registry() noexcept;
/// Puts another one in its place, which must outlive its use; nullptr for the system's. Answers
/// the one before.
KPX_API Registry* setRegistry(Registry* other) noexcept;

namespace detail {
/// Whether the deadline of this thread is over; false when there is none.
bool isRegistryDeadlineOver() noexcept;
/// The system's own.
Registry& systemRegistry() noexcept;
/// The names of a path between backslashes; `badName` when one of them is empty or too long or the
/// path has too many.
RegistryResult splitKeyPath(std::u16string_view path, std::vector<std::u16string_view>& names);
}  // namespace detail

}  // namespace kpx
