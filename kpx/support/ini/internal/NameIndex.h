#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

namespace kpx::detail {

/// Finds the first of the entries of a list that has a name and was not removed. Several may have
/// the same name. The list itself is with the owner, who tells its names:
///
///   std::u16string_view nameAt(std::size_t position);
///   bool isRemoved(std::size_t position);
///
/// Each operation takes constant time on the average, whatever the names: they come from files,
/// so their hash depends on a number that differs from run to run. Nothing is ever listed in
/// the order of the hash.
template <class List>
class NameIndex {
 public:
  static constexpr std::size_t none = static_cast<std::size_t>(-1);

  void clear() noexcept {
    slots_.clear();
    next_.clear();
    names_ = 0;
  }

  /// Takes up all entries of a list anew; those that are removed are not found.
  void rebuild(const List& list, std::size_t count) {
    std::fill(slots_.begin(), slots_.end(), Slot{});
    next_.clear();
    names_ = 0;
    for (std::size_t position = 0; position < count; ++position) add(list, position);
    for (Slot& slot : slots_) skipRemoved(list, slot);
  }

  /// Takes up the last entry of the list. Throws std::bad_alloc, with the index as it was.
  void add(const List& list, std::size_t position) {
    if ((names_ + 1) * 2 > slots_.size()) grow();
    next_.push_back(noPosition);
    const auto added = static_cast<std::uint32_t>(position);
    const std::u16string_view name = list.nameAt(position);
    const std::uint32_t hash = hashOf(name);
    Slot& slot = slots_[slotOf(list, name, hash)];
    if (slot.named == noPosition) {
      slot = {hash, added, added, added};
      ++names_;
    } else if (slot.first == noPosition) {
      slot.first = slot.last = added;
    } else {
      next_[slot.last] = added;
      slot.last = added;
    }
  }

  std::size_t find(const List& list, std::u16string_view name) const noexcept {
    if (slots_.empty()) return none;
    const Slot& slot = slots_[slotOf(list, name, hashOf(name))];
    return slot.first == noPosition ? none : slot.first;
  }

  /// To be called when the entry that `find` gives for its name was removed; the next one of the
  /// same name takes its place.
  void passRemoved(const List& list, std::u16string_view name) noexcept {
    if (slots_.empty()) return;
    skipRemoved(list, slots_[slotOf(list, name, hashOf(name))]);
  }

 private:
  static constexpr std::uint32_t noPosition = 0xFFFFFFFF;
  static constexpr std::size_t smallestTable = 8;

  // An open-addressing table, at most half full, with a slot for each name.
  struct Slot {
    std::uint32_t hash = 0;
    std::uint32_t named = noPosition;  // an entry of that name, removed or not
    std::uint32_t first = noPosition;  // the first and the last that count
    std::uint32_t last = noPosition;
  };

  static std::uint64_t seed() noexcept;

  void skipRemoved(const List& list, Slot& slot) noexcept {
    while (slot.first != noPosition && list.isRemoved(slot.first)) slot.first = next_[slot.first];
  }

  static std::uint32_t hashOf(std::u16string_view name) noexcept {
    constexpr std::uint64_t factor = 0x9E3779B97F4A7C15;
    std::uint64_t hash = seed() ^ name.size();
    constexpr std::size_t unitsAtOnce = 4;
    for (; name.size() >= unitsAtOnce; name.remove_prefix(unitsAtOnce)) {
      std::uint64_t four;
      std::memcpy(&four, name.data(), sizeof four);
      hash = (hash ^ four) * factor;
      hash ^= hash >> 32;
    }
    for (const char16_t unit : name) {
      hash = (hash ^ unit) * factor;
      hash ^= hash >> 32;
    }
    return static_cast<std::uint32_t>(hash);
  }

  // Quicker than comparing unit by unit, and every look-up does it.
  static bool isSame(std::u16string_view a, std::u16string_view b) noexcept {
    return a.size() == b.size() &&
           (a.empty() || std::memcmp(a.data(), b.data(), a.size() * sizeof(char16_t)) == 0);
  }

  std::size_t slotOf(const List& list, std::u16string_view name,
                     std::uint32_t hash) const noexcept {
    const std::size_t mask = slots_.size() - 1;
    std::size_t at = hash & mask;
    while (slots_[at].named != noPosition &&
           !(slots_[at].hash == hash && isSame(list.nameAt(slots_[at].named), name))) {
      at = (at + 1) & mask;
    }
    return at;
  }

  void grow() {
    std::vector<Slot> larger(std::max(slots_.size() * 2, smallestTable));
    const std::size_t mask = larger.size() - 1;
    for (const Slot& slot : slots_) {
      if (slot.named == noPosition) continue;
      std::size_t at = slot.hash & mask;
      while (larger[at].named != noPosition) at = (at + 1) & mask;
      larger[at] = slot;
    }
    slots_.swap(larger);
  }

  std::vector<Slot> slots_;
  std::vector<std::uint32_t> next_;  // of each position, the next of the same name
  std::size_t names_ = 0;
};

/// A number that differs from run to run.
std::uint64_t nameIndexSeed() noexcept;

template <class List>
std::uint64_t NameIndex<List>::seed() noexcept {
  static const std::uint64_t number = nameIndexSeed();
  return number;
}

}  // namespace kpx::detail
