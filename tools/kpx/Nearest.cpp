#include "tools/kpx/Nearest.h"

#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "kpx/text/CaseFold.h"
#include "tools/kpx/ShownText.h"

namespace kpx::tool {
namespace {

/// How many units have to be changed, added, left out or swapped to make one text of the other,
/// without regard to case.
std::size_t editDistance(std::u16string_view from, std::u16string_view to) {
  std::vector<std::size_t> beforeLast(to.size() + 1);
  std::vector<std::size_t> last(to.size() + 1);
  std::vector<std::size_t> row(to.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  const auto same = [&](std::size_t i, std::size_t j) {
    return foldCase(from[i]) == foldCase(to[j]);
  };
  for (std::size_t i = 0; i < from.size(); ++i) {
    std::swap(beforeLast, last);
    std::swap(last, row);
    row[0] = i + 1;
    for (std::size_t j = 0; j < to.size(); ++j) {
      row[j + 1] = std::min({last[j] + (same(i, j) ? 0 : 1), row[j] + 1, last[j + 1] + 1});
      if (i > 0 && j > 0 && same(i, j - 1) && same(i - 1, j)) {
        row[j + 1] = std::min(row[j + 1], beforeLast[j - 1] + 1);
      }
    }
  }
  return row.back();
}

}  // namespace

Nearest::Nearest(std::u16string_view wanted)
    : wanted_(wanted), smallest_(std::max<std::size_t>(wanted.size() / 4, 1) + 1) {
  // Of two characters every other name is only one away.
  constexpr std::size_t shortest = 3;
  if (wanted.size() < shortest) smallest_ = 1;
  // No name is that long, and comparing costs the product of the lengths.
  constexpr std::size_t longest = 100;
  if (wanted.size() > longest) smallest_ = 0;
}

void Nearest::offer(std::u16string_view name, std::u16string_view written) {
  const std::size_t longer = std::max(wanted_.size(), written.size());
  const std::size_t shorter = std::min(wanted_.size(), written.size());
  if (longer - shorter >= smallest_) return;
  const std::size_t distance = editDistance(wanted_, written);
  if (distance >= smallest_) return;
  smallest_ = distance;
  name_ = name;
}

std::string Nearest::question() const {
  return name_.IsEmpty() ? std::string() : "; did you mean '" + shownName(name_) + "'?";
}

}  // namespace kpx::tool
