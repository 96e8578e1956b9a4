#include "kpx/domain/internal/PropertyList.h"

#include <algorithm>
#include <bit>
#include <utility>

#include "kpx/platform/Clock.h"
#include "kpx/text/CaseFold.h"

namespace kpx::detail {
namespace {

/// Lists of this length are searched as quickly from front to end.
constexpr std::size_t shortList = 16;

/// Differs from run to run: the texts come from files, which must not make all of them collide.
std::uint64_t seed() noexcept {
  static const std::uint64_t number = systemClock().counter();
  return number;
}

}  // namespace

void PropertyList::clear() noexcept {
  texts_.clear();
  dropSlots();
}

void PropertyList::assign(std::vector<CString>&& texts) noexcept {
  texts_ = std::move(texts);
  dropSlots();
}

bool PropertyList::contains(std::u16string_view text) {
  const auto isSame = [&](const CString& each) {
    return detail::compareTextNoCase(each, text) == 0;
  };
  if (texts_.size() <= shortList) return std::ranges::any_of(texts_, isSame);
  if (slots_.empty()) buildSlots();
  const std::size_t mask = slots_.size() - 1;
  for (std::size_t slot = firstSlot(text); slots_[slot] != 0; slot = (slot + 1) & mask) {
    if (slots_[slot] != removed && isSame(texts_[slots_[slot] - 1])) return true;
  }
  return false;
}

void PropertyList::add(CString&& text) {
  texts_.push_back(std::move(text));
  if (!slots_.empty()) occupy(texts_.size() - 1);
}

void PropertyList::set(std::size_t at, CString&& text) noexcept {
  if (!slots_.empty()) {
    std::size_t slot = firstSlot(texts_[at]);
    while (slots_[slot] != at + 1) slot = (slot + 1) & (slots_.size() - 1);
    slots_[slot] = removed;
  }
  texts_[at] = std::move(text);
  if (!slots_.empty()) occupy(at);
}

void PropertyList::buildSlots() {
  // Room for as many more, so that building anew is rare.
  slots_.assign(std::bit_ceil(texts_.size() * 4), 0);
  used_ = 0;
  for (std::size_t at = 0; at < texts_.size(); ++at) occupy(at);
}

/// Takes the slot of a text; drops all of them when there is none to spare.
void PropertyList::occupy(std::size_t at) noexcept {
  if (++used_ * 2 > slots_.size()) {
    dropSlots();
    return;
  }
  std::size_t slot = firstSlot(texts_[at]);
  while (slots_[slot] != 0) slot = (slot + 1) & (slots_.size() - 1);
  slots_[slot] = static_cast<std::uint32_t>(at + 1);
}

std::size_t PropertyList::firstSlot(std::u16string_view text) const noexcept {
  constexpr std::uint64_t factor = 0x9E3779B97F4A7C15;
  std::uint64_t hash = seed() ^ text.size();
  for (const char16_t unit : text) {
    hash = (hash ^ foldCase(unit)) * factor;
    hash ^= hash >> 32;
  }
  return static_cast<std::size_t>(hash) & (slots_.size() - 1);
}

}  // namespace kpx::detail
