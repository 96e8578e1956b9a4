#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

#include "kpx/xml/internal/ParseState.h"

namespace kpx::detail {

/// The name of a tag, which begins at `position`.
std::u16string_view tagNameAt(std::u16string_view text, int position) noexcept;

/// Whether an end tag of this name closes an element whose start tag has its name at `position`:
/// the names are equal, or the start tag's goes on with one of the units that end a name where
/// attributes may follow it. Looks at no more of the start tag than the name is long.
bool closesTagAt(std::u16string_view text, int position, std::u16string_view endTagName,
                 bool ignoreCase) noexcept;

/// Finds among many open elements the innermost one that an end tag closes, without walking them:
/// a document of end tags that close nothing costs no more for each the deeper it is nested. Takes
/// little more memory than the names themselves, whatever they are.
class OpenNames {
 public:
  /// The open elements, [0] aside, which stands for their parent; both must outlive it.
  OpenNames(std::u16string_view text, const std::vector<OpenElement>& stack, bool ignoreCase);

  /// How many entries of the stack it knows: all below this depth.
  int depth() const noexcept { return depth_; }
  /// Takes the entry at this depth.
  void push();
  /// Gives the last one back, which must be in the stack still.
  void pop();
  /// The depth of the innermost element, or -1.
  int find(std::u16string_view endTagName) const;

 private:
  // The innermost element that a name closes, by a part of the key of that name.
  struct Slot {
    std::uint32_t key = 0;
    std::int32_t depth = free;
  };
  static constexpr std::int32_t free = -1;

  template <class Visit>
  void visitKeys(int depth, Visit visit) const;
  std::uint64_t extend(std::uint64_t key, char16_t unit) const noexcept;
  std::size_t slotOf(std::uint64_t key) const noexcept;
  void makeRoom(std::size_t keys);
  bool closes(int depth, std::u16string_view endTagName) const noexcept;

  const std::u16string_view text_;
  const std::vector<OpenElement>& stack_;
  const bool ignoreCase_;
  const std::uint64_t base_;
  int depth_ = 1;
  // Open addressing; what was put in last is taken out first, so that a slot can be freed without
  // a look at those behind it.
  std::vector<Slot> slots_;
  std::size_t used_ = 0;
  // For each key of each element, in the order of pushing: what stood in its slot before.
  std::vector<std::int32_t> shadowed_;
};

}  // namespace kpx::detail
