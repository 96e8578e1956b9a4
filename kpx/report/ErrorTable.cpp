#include "kpx/report/ErrorTable.h"

#include <algorithm>

namespace kpx {
namespace {

constexpr bool areOperationsUnique() noexcept {
  for (std::size_t i = 0; i < std::size(errorTable); ++i) {
    for (std::size_t k = 0; k < i; ++k) {
      if (errorTable[i].operation == errorTable[k].operation) return false;
    }
  }
  return true;
}
// Here and not in the header: the comparison of all pairs is too slow to be made in every source.
static_assert(areOperationsUnique(), "an operation of the error table stands twice");

}  // namespace

std::string_view operationOf(int number) noexcept {
  const auto* const found =
      std::lower_bound(std::begin(errorTable), std::end(errorTable), number,
                       [](const ErrorEntry& entry, int wanted) { return entry.number < wanted; });
  return found != std::end(errorTable) && found->number == number ? found->operation
                                                                  : std::string_view();
}

}  // namespace kpx
