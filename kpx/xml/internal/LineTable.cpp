#include "kpx/xml/internal/LineTable.h"

#include <algorithm>

#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {

LineTable::Place LineTable::at(int offset) {
  if (starts_.empty()) {
    starts_.push_back(0);
    const auto size = static_cast<int>(text_.size());
    for (int feed = findUnit(text_, 0, '\n'); feed < size; feed = findUnit(text_, feed + 1, '\n')) {
      starts_.push_back(feed + 1);
    }
  }
  const auto behind = std::upper_bound(starts_.begin(), starts_.end(), offset);
  return {static_cast<int>(behind - starts_.begin()), offset - *(behind - 1) + 1};
}

}  // namespace kpx::detail
