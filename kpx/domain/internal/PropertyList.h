#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "kpx/text/CString.h"

namespace kpx::detail {

/// Texts in an order of the owner's, in which a text is found without regard to case. The owner may
/// put any texts there, also some that are equal. All operations but `sort` take constant time on
/// the average, whatever the texts.
class PropertyList {
 public:
  PropertyList() = default;
  PropertyList(const PropertyList& other) : texts_(other.texts_) {}
  PropertyList(PropertyList&&) noexcept = default;
  PropertyList& operator=(const PropertyList& other) {
    dropSlots();
    texts_ = other.texts_;
    return *this;
  }
  PropertyList& operator=(PropertyList&&) noexcept = default;
  ~PropertyList() = default;

  const std::vector<CString>& texts() const noexcept { return texts_; }
  void clear() noexcept;
  void assign(std::vector<CString>&& texts) noexcept;

  /// Whether a text is there. Throws std::bad_alloc.
  bool contains(std::u16string_view text);
  /// Throws std::bad_alloc, with the list as it was.
  void add(CString&& text);
  /// Requires that there is such a place.
  void set(std::size_t at, CString&& text) noexcept;

  template <class Before>
  void sort(Before before) {
    dropSlots();
    std::sort(texts_.begin(), texts_.end(), before);
  }

 private:
  // An open-addressing table, at most half full, of places in `texts_` by their folded texts, each
  // one more than it is; 0 is free. Without any it is to be built. Copies do without.
  static constexpr std::uint32_t removed = 0xFFFFFFFF;

  void buildSlots();
  void dropSlots() noexcept { slots_.clear(); }
  void occupy(std::size_t at) noexcept;
  std::size_t firstSlot(std::u16string_view text) const noexcept;

  std::vector<CString> texts_;
  std::vector<std::uint32_t> slots_;
  std::size_t used_ = 0;  // slots that are not free
};

}  // namespace kpx::detail
