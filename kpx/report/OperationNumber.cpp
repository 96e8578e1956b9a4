#include "kpx/report/OperationNumber.h"

#include <algorithm>

namespace kpx {

std::string_view operationIn(std::span<const ErrorEntry> table, int number) noexcept {
  const auto found = std::ranges::lower_bound(table, number, {}, &ErrorEntry::number);
  return found != table.end() && found->number == number ? found->operation : std::string_view();
}

}  // namespace kpx
