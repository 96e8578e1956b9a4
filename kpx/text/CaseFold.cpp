#include "kpx/text/CaseFold.h"

#include <algorithm>

namespace kpx {

int detail::compareText(std::u16string_view left, std::u16string_view right) noexcept {
  const int order = left.compare(right);
  return order < 0 ? -1 : order > 0 ? 1 : 0;
}

int detail::compareTextNoCase(std::u16string_view left, std::u16string_view right) noexcept {
  const std::size_t common = std::min(left.size(), right.size());
  for (std::size_t i = 0; i < common; ++i) {
    const char16_t a = foldCase(left[i]);
    const char16_t b = foldCase(right[i]);
    if (a != b) return a < b ? -1 : 1;
  }
  if (left.size() == right.size()) return 0;
  return left.size() < right.size() ? -1 : 1;
}

}  // namespace kpx
