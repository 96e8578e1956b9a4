#pragma once

#include <string>

#include "kpx/platform/FileSystem.h"
#include "kpx/platform/windows/SystemCall.h"

namespace kpx::detail {

/// Owner, group and access list of a file as one record of the system.
class AccessRecord {
 public:
  /// False when it cannot be read; the system's last code tells why.
  bool read(HANDLE file);
  /// Gives a file all of it or, since only few may give files away, the access list alone.
  bool giveTo(HANDLE file) noexcept;

  friend bool operator==(const AccessRecord&, const AccessRecord&) = default;

 private:
  PSECURITY_DESCRIPTOR get() noexcept { return bytes_.data(); }

  std::string bytes_;
};

/// What takes the place of another file. It is renamed and given all that it is given through its
/// handle, and nobody else can write, rename or remove it meanwhile.
class WindowsReplacementFile final : public ReplacementFile {
 public:
  /// For the file of that name, which is no link.
  WindowsReplacementFile(const CString& target, const ReplaceOptions& options)
      : target_(target),
        flushed_(options.durability == Durability::flushed),
        onlyNew_(options.onlyNew) {}
  WindowsReplacementFile(const WindowsReplacementFile&) = delete;
  WindowsReplacementFile& operator=(const WindowsReplacementFile&) = delete;
  ~WindowsReplacementFile() override;

  /// Begins with the attributes of another file, if one is named.
  FileResult open(const CString& model);

  FileResult write(std::string_view bytes) override;
  FileResult takeAttributes() override;
  FileResult flush() override;
  FileResult close() override;
  FileResult putInPlace(FileVersion* version) override;

 private:
  FileResult readModel(const CString& model);
  FileResult rename(const SystemPath& target);

  CString target_;
  bool flushed_;
  bool onlyNew_;
  bool hasModel_ = false;
  bool hasAccess_ = false;
  AccessRecord access_;
  DWORD attributes_ = 0;
  Handle file_{INVALID_HANDLE_VALUE};
  bool isInPlace_ = false;
};

}  // namespace kpx::detail
