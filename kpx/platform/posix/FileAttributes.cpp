#include "kpx/platform/posix/FileAttributes.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <cerrno>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "kpx/platform/posix/SystemCall.h"

namespace kpx::detail {

namespace {

constexpr char accessListName[] = "system.posix_acl_access";

/// What tells that a file has no such attribute, or its volume none at all.
bool isNone(int code) noexcept { return code == ENODATA || code == ENOTSUP || code == ENOSYS; }

/// Calls `read(buffer, size)` with a buffer that is large enough; empty where there is nothing.
template <class Read>
FileResult readWhole(std::string& bytes, Read read) {
  for (;;) {
    const ssize_t size = read(nullptr, 0);
    if (size < 0) break;
    bytes.resize(static_cast<std::size_t>(size));
    if (size == 0) return {};
    const ssize_t got = read(bytes.data(), bytes.size());
    if (got >= 0) {
      bytes.resize(static_cast<std::size_t>(got));
      return {};
    }
    // Another program may have made it longer between the two calls.
    if (errno != ERANGE) break;
  }
  bytes.clear();
  return isNone(errno) ? FileResult{} : lastError();
}

FileResult readAttribute(int file, const char* name, std::string& value) {
  return readWhole(value,
                   [&](char* to, std::size_t size) { return ::fgetxattr(file, name, to, size); });
}

FileResult writeAttribute(int file, const char* name, const std::string& value) noexcept {
  return ::fsetxattr(file, name, value.data(), value.size(), 0) == 0 ? FileResult{} : lastError();
}

FileResult copyUserAttributes(int from, int to) {
  std::string names;
  std::string value;
  FileResult result = readWhole(
      names, [&](char* list, std::size_t size) { return ::flistxattr(from, list, size); });
  for (std::size_t at = 0; result && at < names.size();) {
    const char* const name = names.c_str() + at;
    at += std::strlen(name) + 1;
    if (!std::string_view(name).starts_with("user.")) continue;
    result = readAttribute(from, name, value);
    if (result) result = writeAttribute(to, name, value);
  }
  return result;
}

/// An access list in the form in which the system hands it out: a version, then entries.
class AccessList {
 public:
  FileResult read(int file) { return readAttribute(file, accessListName, bytes_); }
  bool empty() const noexcept { return bytes_.empty(); }
  FileResult giveTo(int file) const noexcept {
    return writeAttribute(file, accessListName, bytes_);
  }

  /// What the file's own group may do: with an access list the group's bits of the mode are the
  /// most that anybody named in it may do.
  unsigned groupRights() const noexcept {
    unsigned mask = 7;
    unsigned group = 0;
    forEach([&](const Entry& entry, std::size_t) {
      if (entry.tag == Tag::mask) mask = entry.rights;
      if (entry.tag == Tag::ownGroup) group = entry.rights;
    });
    return group & mask;
  }

  void setGroupRights(unsigned rights) noexcept {
    forEach([&](Entry entry, std::size_t at) {
      if (entry.tag != Tag::ownGroup) return;
      entry.rights = static_cast<std::uint16_t>(rights);
      std::memcpy(bytes_.data() + at, &entry, sizeof entry);
    });
  }

 private:
  enum class Tag : std::uint16_t { ownGroup = 0x04, mask = 0x10 };
  // The system's bytes have the lowest first, as the machines have on which this runs.
  struct Entry {
    Tag tag;
    std::uint16_t rights;
    std::uint32_t id;
  };

  template <class Use>
  void forEach(Use use) const noexcept {
    constexpr std::size_t versionBytes = 4;
    for (std::size_t at = versionBytes; at + sizeof(Entry) <= bytes_.size(); at += sizeof(Entry)) {
      Entry entry;
      std::memcpy(&entry, bytes_.data() + at, sizeof entry);
      use(entry, at);
    }
  }

  std::string bytes_;
};

}  // namespace

FileResult copyAttributes(int from, const struct stat& model, int to) {
  AccessList access;
  if (const FileResult result = access.read(from); !result) return result;
  struct stat given;
  if (::fstat(to, &given) != 0) return lastError();

  mode_t mode = model.st_mode & 07777;
  if (!access.empty()) mode = (mode & ~mode_t{0070}) | access.groupRights() << 3;
  if (model.st_uid != given.st_uid || model.st_gid != given.st_gid) {
    constexpr auto sameOwner = static_cast<uid_t>(-1);
    if (::fchown(to, model.st_uid, model.st_gid) != 0) {
      // Only the system's administrator may give files away. A group that cannot be kept must
      // not hand its rights to another one.
      mode &= 0777;
      if (::fchown(to, sameOwner, model.st_gid) != 0) {
        const mode_t others = mode & 0007;
        mode = (mode & 0707) | others << 3;
        access.setGroupRights(others);
      }
    }
  }
  // What the folder handed on to the new file goes first: it might let in whom the old one did not.
  if (::fremovexattr(to, accessListName) != 0 && !isNone(errno)) return lastError();
  if (::fchmod(to, mode) != 0) return lastError();
  if (!access.empty()) {
    if (const FileResult result = access.giveTo(to); !result) return result;
  }
  return copyUserAttributes(from, to);
}

}  // namespace kpx::detail
