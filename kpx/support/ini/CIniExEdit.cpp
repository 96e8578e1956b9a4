#include <optional>
#include <utility>

#include "kpx/report/Error.h"
#include "kpx/support/ini/CIniEx.h"
#include "kpx/support/ini/internal/IniContent.h"
#include "kpx/support/ini/internal/IniLine.h"
#include "kpx/support/Operations.h"

// Changing an INI file in memory: everything is checked and built first, then put in place.

namespace kpx {
namespace {

using detail::IniEntry;
using detail::IniLine;
using detail::IniLineKind;

/// Whether every encoding can keep the text.
bool isStorable(std::u16string_view text) noexcept {
  return text.find(u'\0') == text.npos && !detail::hasLoneSurrogate(text);
}

/// The comment as lines of the file, or nothing when one of them cannot be stored.
std::optional<std::u16string> storedComment(const CString& comment, std::u16string_view lineEnd) {
  if (!isStorable(comment)) return std::nullopt;
  std::u16string lines = detail::commentLines(comment, lineEnd);
  detail::IniLineReader reader(lines);
  for (std::u16string_view line; reader.next(line);) {
    if (!line.ends_with(u'\n')) return std::nullopt;  // a piece of a line that is too long
  }
  return lines;
}

/// Whether the line is read as what it was written for.
bool isReadAs(std::u16string_view line, IniLineKind kind, std::u16string_view name,
              std::u16string_view value) noexcept {
  if (line.size() > detail::longestIniLine || line.find_first_of(u"\r\n") != line.npos)
    return false;
  const IniLine parsed = detail::parseIniLine(line);
  return parsed.kind == kind && parsed.name == name && parsed.value == value;
}

bool setKeyLine(IniEntry& entry, std::u16string_view name, const CString& value,
                std::u16string_view lineEnd) {
  constexpr char16_t byteOrderMark = 0xFEFF;  // as the first character it would be taken for one
  const std::u16string stored = detail::encodeIniValue(value);
  if (!isStorable(name) || !isStorable(stored) || name.starts_with(byteOrderMark)) return false;
  std::u16string line(name);
  line += u'=';
  line += stored;
  if (!isReadAs(line, IniLineKind::key, name, stored)) return false;
  line += lineEnd;
  entry.setLine(std::move(line), 0, name.size(), stored.size());
  return true;
}

bool setHeaderLine(IniEntry& entry, std::u16string_view name, std::u16string_view lineEnd) {
  if (!isStorable(name)) return false;
  std::u16string line(u"[");
  line += name;
  line += u']';
  if (!isReadAs(line, IniLineKind::section, name, {})) return false;
  line += lineEnd;
  entry.setLine(std::move(line), 1, name.size(), 0);
  return true;
}

}  // namespace

int CIniEx::AddNewSection(const CString& name) {
  int index = 0;
  return AddNewSection(name, {}, index);
}

int CIniEx::AddNewSection(const CString& name, const CString& comment, int& index) {
  return Guarded("CIniEx::AddNewSection"_support, 0, [&] {
    index = GetIndexForSection(name);
    if (index >= 0) return 0;
    const auto lines = storedComment(comment, content_->lineEnd);
    if (!lines) return 0;
    std::unique_ptr<CSection> section(new CSection);
    section->header_.setState(IniEntry::changed);
    if (name.IsEmpty()) {
      // It has no line of its own that a comment could stand above.
      if (!lines->empty()) return 0;
      section->hasHeader_ = false;
    } else {
      if (!setHeaderLine(section->header_, name, content_->lineEnd)) return 0;
      if (!lines->empty()) section->header_.setBefore(*lines);
    }
    const std::size_t position = name.IsEmpty() ? 0 : content_->sections.size();
    content_->addSection(std::move(section), position);
    index = static_cast<int>(position);
    return 1;
  });
}

int CIniEx::AddNewKey(const CString& section, const CString& key, const CString& value) {
  int index = 0;
  return AddNewKey(section, key, value, {}, {}, index);
}

int CIniEx::AddNewKey(const CString& section, const CString& key, const CString& value,
                      const CString& comment, const CString& type, int& index) {
  return Guarded("CIniEx::AddNewKey"_support, 0, [&] {
    index = -1;
    CSection* const holder = findSection(section);
    if (holder == nullptr) return 0;
    const std::size_t found = holder->find(key);
    if (found != detail::NameIndex<CSection>::none) {
      index = static_cast<int>(found);
      return 0;
    }
    const auto lines = storedComment(comment, content_->lineEnd);
    KEY_STRUCT added;
    added.entry_.setState(IniEntry::changed);
    // Nobody means to write a key without a name, though files that have one keep it.
    if (key.IsEmpty() || !lines || !setKeyLine(added.entry_, key, value, content_->lineEnd))
      return 0;
    if (!lines->empty()) added.entry_.setBefore(*lines);
    added.entry_.setType(type);
    holder->add(std::move(added));
    index = static_cast<int>(holder->keys_.size() - 1);
    return 1;
  });
}

int CIniEx::UpdateKey(const CString& section, const CString& key, const CString& value) {
  return updateKey(section, key, value, nullptr, nullptr);
}

int CIniEx::UpdateKey(const CString& section, const CString& key, const CString& value,
                      const CString& comment, const CString& type) {
  return updateKey(section, key, value, &comment, &type);
}

int CIniEx::updateKey(const CString& section, const CString& key, const CString& value,
                      const CString* comment, const CString* type) {
  return Guarded("CIniEx::UpdateKey"_support, 0, [&] {
    KEY_STRUCT* const found = findKey(section, key);
    if (found == nullptr) return 0;
    IniEntry changed = found->entry_.clone();
    if (found->value() != value && detail::encodeIniValue(value) != changed.value()) {
      // From the entry, because the argument may be a part of something that changes.
      const std::u16string name(changed.name());
      if (!setKeyLine(changed, name, value, content_->lineEnd)) return 0;
      changed.setState(IniEntry::changed);
    }
    if (comment != nullptr && *comment != changed.comment()) {
      const auto lines = storedComment(*comment, content_->lineEnd);
      if (!lines) return 0;
      changed.setBefore(detail::withComment(changed.before(), *lines, content_->lineEnd));
      changed.setState(IniEntry::changed);
    }
    if (type != nullptr) changed.setType(*type);
    found->entry_ = std::move(changed);
    return 1;
  });
}

int CIniEx::UpdateSection(const CString& name, const CString& newName, const CString& comment) {
  return Guarded("CIniEx::UpdateSection"_support, 0, [&] {
    CSection* const found = findSection(name);
    if (found == nullptr || name.IsEmpty() || newName.IsEmpty()) return 0;
    const bool renamed = name != newName;
    if (renamed && findSection(newName) != nullptr) return 0;
    IniEntry changed = found->header_.clone();
    if (renamed && !setHeaderLine(changed, newName, content_->lineEnd)) return 0;
    if (comment != changed.comment()) {
      const auto lines = storedComment(comment, content_->lineEnd);
      if (!lines) return 0;
      changed.setBefore(detail::withComment(changed.before(), *lines, content_->lineEnd));
    } else if (!renamed) {
      return 1;
    }
    changed.setState(IniEntry::changed);
    std::swap(found->header_, changed);
    if (renamed) {
      try {
        detail::NameIndex<Content> index;
        index.rebuild(*content_, content_->sections.size());
        content_->index = std::move(index);
      } catch (...) {
        std::swap(found->header_, changed);
        throw;
      }
    }
    return 1;
  });
}

int CIniEx::DeleteKey(const CString& section, const CString& key) {
  return Guarded("CIniEx::DeleteKey"_support, 0, [&] {
    CSection* const holder = findSection(section);
    const std::size_t found =
        holder != nullptr ? holder->find(key) : detail::NameIndex<CSection>::none;
    if (found == detail::NameIndex<CSection>::none) return 0;
    holder->remove(found);
    return 1;
  });
}

int CIniEx::DeleteSection(const CString& name) {
  return Guarded("CIniEx::DeleteSection"_support, 0, [&] {
    CSection* const found = findSection(name);
    if (found == nullptr) return 0;
    found->header_.setState(IniEntry::removed);
    content_->index.passRemoved(*content_, found->header_.name());
    return 1;
  });
}

int CIniEx::DeleteKeyfromSection(const CString& section, const CString& key) {
  return Guarded("CIniEx::DeleteKeyfromSection"_support, 0, [&] {
    if (DeleteKey(section, key) == 0) return 0;
    findSection(section)->eraseRemoved();
    return 1;
  });
}

int CIniEx::DeleteSectionfromSections(const CString& name) {
  return Guarded("CIniEx::DeleteSectionfromSections"_support, 0, [&] {
    if (DeleteSection(name) == 0) return 0;
    content_->eraseSections();
    return 1;
  });
}

}  // namespace kpx
