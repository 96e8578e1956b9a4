#pragma once

#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/support/files/StoredText.h"
#include "kpx/support/ini/CIniEx.h"
#include "kpx/support/ini/internal/NameIndex.h"

namespace kpx {

/// What an INI file in memory consists of, apart from the key types.
struct KPX_LOCAL CIniEx::Content {
  // What was read; entries that nobody changed are parts of it. Copies share it.
  std::shared_ptr<const std::u16string> text;
  detail::StoredEncoding encoding;
  FileOrigin origin;
  std::string halfUnit;
  std::u16string lineEnd = u"\r\n";

  std::vector<std::unique_ptr<CSection>> sections;
  detail::NameIndex<Content> index;
  // The lines behind the last entry that was read, and the section they follow; nullptr when
  // they stand before all sections.
  std::u16string_view tail;
  const CSection* tailSection = nullptr;

  std::u16string_view nameAt(std::size_t position) const noexcept {
    return sections[position]->header_.name();
  }
  bool isRemoved(std::size_t position) const noexcept {
    return sections[position]->state() == detail::IniEntry::removed;
  }

  /// Fills an empty content with the sections and keys of the text.
  void read();
  CSection& addSection(std::unique_ptr<CSection> section, std::size_t position);
  std::unique_ptr<Content> clone() const;
  /// The text as it is saved.
  std::u16string written() const;
  /// Forgets the removed entries; what is left counts as read.
  void settle() noexcept;
  void eraseSections() noexcept;
};

}  // namespace kpx
