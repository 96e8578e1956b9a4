#include "kpx/support/ini/CSection.h"

#include <utility>

#include "kpx/platform/Clock.h"
#include "kpx/support/ini/internal/IniLine.h"

namespace kpx {

std::uint64_t detail::nameIndexSeed() noexcept { return systemClock().counter(); }

CString KEY_STRUCT::comment() const { return entry_.comment(); }

CString CSection::comment() const { return header_.comment(); }

CString KEY_STRUCT::value() const {
  CString text;
  detail::decodeIniValue(entry_.value(), text);
  return text;
}

CSection CSection::clone() const {
  CSection copy;
  copy.header_ = header_.clone();
  copy.hasHeader_ = hasHeader_;
  copy.keys_.reserve(keys_.size());
  for (const KEY_STRUCT& key : keys_) {
    KEY_STRUCT same;
    same.entry_ = key.entry_.clone();
    copy.keys_.push_back(std::move(same));
  }
  copy.index_ = index_;
  return copy;
}

void CSection::add(KEY_STRUCT&& key) {
  keys_.push_back(std::move(key));
  try {
    index_.add(*this, keys_.size() - 1);
  } catch (...) {
    keys_.pop_back();
    throw;
  }
}

void CSection::remove(std::size_t position) noexcept {
  keys_[position].entry_.setState(detail::IniEntry::removed);
  index_.passRemoved(*this, nameAt(position));
}

void CSection::eraseRemoved() noexcept {
  if (std::erase_if(keys_, [](const KEY_STRUCT& key) {
        return key.state() == detail::IniEntry::removed;
      }) == 0)
    return;
  // Fewer entries than before need no memory.
  index_.rebuild(*this, keys_.size());
}

}  // namespace kpx
