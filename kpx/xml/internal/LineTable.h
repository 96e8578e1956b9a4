#pragma once

#include <string_view>
#include <vector>

namespace kpx::detail {

/// Turns offsets of a text into lines and columns. Costs nothing until it is first asked, then one
/// pass over the text and a binary search for each offset.
class LineTable {
 public:
  struct Place {
    int line;
    int column;
  };

  /// The text must outlive it.
  explicit LineTable(std::u16string_view text) noexcept : text_(text) {}

  /// Counted from 1, the column in units.
  Place at(int offset);

 private:
  std::u16string_view text_;
  std::vector<int> starts_;
};

}  // namespace kpx::detail
