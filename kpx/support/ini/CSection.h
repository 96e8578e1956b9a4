#pragma once

#include <cstddef>
#include <string_view>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/support/ini/internal/IniEntry.h"
#include "kpx/support/ini/internal/NameIndex.h"
#include "kpx/text/CString.h"

namespace kpx {

class CIniEx;

/// One key of an INI file in memory. It belongs to its section and is changed through `CIniEx`.
class KEY_STRUCT {
 public:
  KEY_STRUCT(KEY_STRUCT&&) noexcept = default;
  KEY_STRUCT& operator=(KEY_STRUCT&&) noexcept = default;
  ~KEY_STRUCT() = default;

  /// The name, without the blanks around it.
  CString key() const { return entry_.name(); }
  /// The value with its line breaks, see `CIniEx`.
  KPX_API CString value() const;
  /// The comment lines above it, each with its ";", with line feeds between them.
  KPX_API CString comment() const;
  /// The name of its type, as the caller gave it; not stored in the file.
  CString type() const { return entry_.type(); }
  /// 0 as it was read, 1 changed or new, 2 removed: it is gone once the file is saved.
  int state() const noexcept { return entry_.state(); }

 private:
  friend class CIniEx;
  friend class CSection;
  KEY_STRUCT() = default;

  detail::IniEntry entry_;
};

/// One section of an INI file in memory, with its keys in the order of the file. It belongs to
/// its `CIniEx` and is changed through it.
class CSection {
 public:
  CSection(const CSection&) = delete;
  CSection& operator=(const CSection&) = delete;
  ~CSection() = default;

  /// The text between the brackets, with its blanks; empty for the keys above the first header.
  CString name() const { return header_.name(); }
  /// The comment lines above the header, each with its ";", with line feeds between them.
  KPX_API CString comment() const;
  /// As for a key.
  int state() const noexcept { return header_.state(); }
  /// All keys, also those that are removed but not yet gone.
  const std::vector<KEY_STRUCT>& keys() const noexcept { return keys_; }

 private:
  friend class CIniEx;
  friend class detail::NameIndex<CSection>;
  CSection() = default;
  CSection clone() const;
  CSection(CSection&&) noexcept = default;

  std::u16string_view nameAt(std::size_t position) const noexcept {
    return keys_[position].entry_.name();
  }
  bool isRemoved(std::size_t position) const noexcept {
    return keys_[position].state() == detail::IniEntry::removed;
  }

  void add(KEY_STRUCT&& key);
  std::size_t find(std::u16string_view name) const noexcept { return index_.find(*this, name); }
  void remove(std::size_t position) noexcept;
  void eraseRemoved() noexcept;

  detail::IniEntry header_;
  bool hasHeader_ = true;
  std::vector<KEY_STRUCT> keys_;
  detail::NameIndex<CSection> index_;
};

}  // namespace kpx
