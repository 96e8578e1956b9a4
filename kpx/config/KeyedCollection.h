#pragma once

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <memory>
#include <string_view>
#include <type_traits>
#include <utility>
#include <vector>

#include "kpx/config/KeyLiteral.h"
#include "kpx/text/CString.h"
#include "kpx/text/TextHash.h"

namespace kpx {

/// Values held by case-sensitive text keys.
///
/// Iterates in the order in which keys were first inserted, the same on every platform, so that
/// the same configuration gives the same bytes everywhere. References to values stay valid until
/// the collection is cleared or destroyed. A value's own name may differ from its key.
///
/// Copy construction copies every entry. Assignment writes the source's entries over the
/// target's: entries that only the target has remain.
template <class Value>
class KeyedCollection {
 public:
  struct Entry {
    explicit Entry(std::u16string_view text) : key(text) {}
    Entry(std::u16string_view text, Value given) : key(text), value(std::move(given)) {}

    const CString key;
    Value value;
  };

  /// Walks over the entries.
  template <class Element>
  class Iterator {
   public:
    using iterator_category = std::forward_iterator_tag;
    using value_type = Element;
    using difference_type = std::ptrdiff_t;
    using pointer = Element*;
    using reference = Element&;

    Iterator() = default;
    explicit Iterator(const std::unique_ptr<Entry>* at) noexcept : at_(at) {}
    Element& operator*() const noexcept { return **at_; }
    Element* operator->() const noexcept { return at_->get(); }
    Iterator& operator++() noexcept {
      ++at_;
      return *this;
    }
    Iterator operator++(int) noexcept { return Iterator(at_++); }
    friend bool operator==(const Iterator&, const Iterator&) = default;

   private:
    const std::unique_ptr<Entry>* at_ = nullptr;
  };

  KeyedCollection() = default;
  KeyedCollection(const KeyedCollection& other) { *this = other; }
  KeyedCollection(KeyedCollection&& other) noexcept
      : entries_(std::exchange(other.entries_, {})), slots_(std::exchange(other.slots_, {})) {}
  KeyedCollection& operator=(const KeyedCollection& other) {
    if (this == &other) return *this;
    reserve(std::max(size(), other.size()));
    for (const Entry& entry : other) at(entry.key) = entry.value;
    return *this;
  }
  ~KeyedCollection() = default;

  std::size_t size() const noexcept { return entries_.size(); }
  bool empty() const noexcept { return entries_.empty(); }

  auto begin() noexcept { return Iterator<Entry>(entries_.data()); }
  auto end() noexcept { return Iterator<Entry>(entries_.data() + entries_.size()); }
  auto begin() const noexcept { return Iterator<const Entry>(entries_.data()); }
  auto end() const noexcept { return Iterator<const Entry>(entries_.data() + entries_.size()); }

  /// The entry at a place in that order. Requires position < size().
  const Entry& entryAt(std::size_t position) const noexcept { return *entries_[position]; }

  /// The value under the key, or nullptr if there is none.
  const Value* find(std::u16string_view key) const noexcept { return find(key, textHash(key)); }
  const Value* find(const KeyLiteral& key) const noexcept { return find(key.text(), key.hash()); }
  Value* find(std::u16string_view key) noexcept {
    return const_cast<Value*>(std::as_const(*this).find(key));
  }
  Value* find(const KeyLiteral& key) noexcept {
    return const_cast<Value*>(std::as_const(*this).find(key));
  }

  /// The value under the key; a default-constructed one is inserted if there is none.
  Value& at(std::u16string_view key) {
    const std::uint32_t hash = textHash(key);
    if (const Value* found = find(key, hash)) return const_cast<Value&>(*found);
    return insert(std::make_unique<Entry>(key), hash);
  }

  /// Stores the value under the key; nothing of an earlier one stays.
  void set(std::u16string_view key, Value value) {
    static_assert(std::is_nothrow_move_constructible_v<Value>);
    const std::uint32_t hash = textHash(key);
    if (const Value* found = find(key, hash)) {
      // Built anew, because assigning to a value that is itself a collection would keep entries.
      Value* const earlier = const_cast<Value*>(found);
      std::destroy_at(earlier);
      std::construct_at(earlier, std::move(value));
    } else {
      insert(std::make_unique<Entry>(key, std::move(value)), hash);
    }
  }

  /// Removes all entries.
  void clear() noexcept {
    slots_.clear();
    entries_.clear();
  }

  /// Room for this many entries without growing in between.
  void reserve(std::size_t count) {
    entries_.reserve(count);
    const std::size_t wanted = std::bit_ceil(std::max(count * 2, smallestTable));
    if (count > 0 && wanted > slots_.size()) rebuild(wanted);
  }

 private:
  // An open-addressing table, at most half full: the entry and its hash, or nullptr.
  struct Slot {
    Entry* entry = nullptr;
    std::uint32_t hash = 0;
  };
  static constexpr std::size_t smallestTable = 16;

  const Value* find(std::u16string_view key, std::uint32_t hash) const noexcept {
    if (slots_.empty()) return nullptr;
    const std::size_t mask = slots_.size() - 1;
    for (std::size_t at = hash & mask;; at = (at + 1) & mask) {
      const Slot& slot = slots_[at];
      if (!slot.entry) return nullptr;
      if (slot.hash == hash && slot.entry->key.view() == key) return &slot.entry->value;
    }
  }

  Value& insert(std::unique_ptr<Entry> entry, std::uint32_t hash) {
    if ((entries_.size() + 1) * 2 > slots_.size()) {
      rebuild(std::max(slots_.size() * 2, smallestTable));
    }
    entries_.push_back(std::move(entry));
    Entry* const added = entries_.back().get();
    place(slots_, added, hash);
    return added->value;
  }

  void rebuild(std::size_t slotCount) {
    std::vector<Slot> larger(slotCount);
    for (const Slot& slot : slots_) {
      if (slot.entry) place(larger, slot.entry, slot.hash);
    }
    slots_ = std::move(larger);
  }

  static void place(std::vector<Slot>& table, Entry* entry, std::uint32_t hash) noexcept {
    const std::size_t mask = table.size() - 1;
    std::size_t at = hash & mask;
    while (table[at].entry) at = (at + 1) & mask;
    table[at] = {entry, hash};
  }

  std::vector<std::unique_ptr<Entry>> entries_;  // in order of insertion
  std::vector<Slot> slots_;
};

}  // namespace kpx
