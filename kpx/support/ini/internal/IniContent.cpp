#include "kpx/support/ini/internal/IniContent.h"

#include <utility>

#include "kpx/support/ini/internal/IniLine.h"

namespace kpx {
namespace {

using detail::IniEntry;
using detail::IniLine;
using detail::IniLineKind;

/// Puts the lines of a file together.
class LineWriter {
 public:
  explicit LineWriter(std::u16string_view lineEnd) : lineEnd_(lineEnd) {}

  void reserve(std::size_t units) { text_.reserve(units); }

  void put(std::u16string_view lines) {
    if (lines.empty()) return;
    // The last line of a file may have no line end, and a piece of a long line has none; what
    // followed it when it was read goes on following it without one.
    if (!text_.empty() && text_.back() != u'\n' && lines.data() != end_) {
      // A carriage return that is part of the line must not become part of the line end.
      text_ += text_.back() == u'\r' ? u"\r\n" : lineEnd_;
    }
    text_ += lines;
    end_ = lines.data() + lines.size();
  }
  void put(const IniEntry& entry) {
    put(entry.before());
    put(entry.line());
  }

  std::u16string take() { return std::move(text_); }

 private:
  std::u16string_view lineEnd_;
  std::u16string text_;
  const char16_t* end_ = nullptr;
};

}  // namespace

void CIniEx::Content::read() {
  const std::u16string_view all = *text;
  const std::size_t feed = all.find(u'\n');
  if (feed != all.npos && (feed == 0 || all[feed - 1] != u'\r')) lineEnd.assign(1, u'\n');

  CSection* section = nullptr;
  std::size_t before = 0;  // where the lines begin that belong to the next entry
  std::size_t at = 0;
  detail::IniLineReader lines(all);
  for (std::u16string_view line; lines.next(line); at += line.size()) {
    const IniLine parsed = detail::parseIniLine(detail::withoutLineEnd(line));
    if (parsed.kind != IniLineKind::section && parsed.kind != IniLineKind::key) continue;
    const std::u16string_view linesBefore = all.substr(before, at - before);
    before = at + line.size();
    if (parsed.kind == IniLineKind::section || section == nullptr) {
      std::unique_ptr<CSection> added(new CSection);
      if (parsed.kind == IniLineKind::section) {
        added->header_.setRead(linesBefore, line, parsed.name, {});
      } else {
        added->hasHeader_ = false;
      }
      section = &addSection(std::move(added), sections.size());
    }
    if (parsed.kind == IniLineKind::key) {
      KEY_STRUCT key;
      key.entry_.setRead(linesBefore, line, parsed.name, parsed.value);
      section->add(std::move(key));
    }
  }
  tail = all.substr(before);
  tailSection = section;
}

CSection& CIniEx::Content::addSection(std::unique_ptr<CSection> section, std::size_t position) {
  const auto place = sections.begin() + static_cast<std::ptrdiff_t>(position);
  CSection& added = **sections.insert(place, std::move(section));
  try {
    if (position + 1 == sections.size()) {
      index.add(*this, position);
    } else {
      detail::NameIndex<Content> moved;
      moved.rebuild(*this, sections.size());
      index = std::move(moved);
    }
  } catch (...) {
    sections.erase(sections.begin() + static_cast<std::ptrdiff_t>(position));
    throw;
  }
  return added;
}

std::unique_ptr<CIniEx::Content> CIniEx::Content::clone() const {
  auto copy = std::make_unique<Content>();
  copy->text = text;
  copy->encoding = encoding;
  copy->origin = origin;
  copy->origin = origin;
  copy->halfUnit = halfUnit;
  copy->lineEnd = lineEnd;
  copy->sections.reserve(sections.size());
  for (const auto& section : sections) {
    copy->sections.push_back(std::unique_ptr<CSection>(new CSection(section->clone())));
    if (section.get() == tailSection) copy->tailSection = copy->sections.back().get();
  }
  copy->index = index;
  copy->tail = tail;
  return copy;
}

std::u16string CIniEx::Content::written() const {
  LineWriter writer(lineEnd);
  if (text) writer.reserve(text->size() + 256);
  if (tailSection == nullptr) writer.put(tail);
  for (const auto& section : sections) {
    if (section->state() != IniEntry::removed) {
      if (section->hasHeader_) writer.put(section->header_);
      for (const KEY_STRUCT& key : section->keys_) {
        if (key.state() != IniEntry::removed) writer.put(key.entry_);
      }
    }
    if (section.get() == tailSection) writer.put(tail);
  }
  return writer.take();
}

void CIniEx::Content::settle() noexcept {
  eraseSections();
  for (const auto& section : sections) {
    section->eraseRemoved();
    section->header_.setState(IniEntry::asRead);
    for (KEY_STRUCT& key : section->keys_) key.entry_.setState(IniEntry::asRead);
  }
}

void CIniEx::Content::eraseSections() noexcept {
  // The lines at the end stay, behind the section before.
  const CSection* last = nullptr;
  for (const auto& section : sections) {
    if (section->state() != IniEntry::removed) last = section.get();
    if (section.get() == tailSection) {
      tailSection = last;
      break;
    }
  }
  const auto removed = [](const auto& section) { return section->state() == IniEntry::removed; };
  if (std::erase_if(sections, removed) == 0) return;
  // Fewer entries than before need no memory.
  index.rebuild(*this, sections.size());
}

}  // namespace kpx
