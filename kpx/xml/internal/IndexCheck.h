#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "kpx/xml/internal/ElementIndex.h"
#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {

/// The single checks of `MarkupValidator`. Each answers whether all is right; after the first that
/// is not, `problem` tells what is wrong.
class IndexCheck {
 public:
  IndexCheck(std::u16string_view text, int docFlags, const ElementIndex& index);

  /// All records; requires nothing. The other checks require that this one was right.
  bool tree();
  /// Whether the three are in use and related as a position is.
  bool place(int parent, int main, int child);
  /// Whether a current node of this type can stand there.
  bool node(int parent, int main, int type, int offset, int length);
  /// Whether an element is a child of the parent that ends before the offset.
  bool precedes(int parent, int element, int offset);

  const std::string& problem() const noexcept { return problem_; }

 private:
  bool wrong(int index, const char* what);
  bool document();
  bool children(int parent);
  bool element(int index, int parent, int previous, int lowest, int highest);
  bool tags(int index);
  bool freeList(int elements);
  bool inUse(int index) const noexcept {
    return index == 0 ||
           (index > 0 && index < index_.usedCount() && seen_[static_cast<std::size_t>(index)]);
  }

  std::u16string_view text_;
  bool ignoreCase_;
  const ElementIndex& index_;
  std::vector<bool> seen_;
  std::string problem_;
};

}  // namespace kpx::detail
