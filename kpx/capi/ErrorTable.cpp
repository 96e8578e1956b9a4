#include "kpx/capi/ErrorTable.h"

#include <algorithm>
#include <array>

#include "kpx/capi/Operations.h"
#include "kpx/config/Operations.h"
#include "kpx/context/Operations.h"
#include "kpx/domain/Operations.h"
#include "kpx/platform/Operations.h"
#include "kpx/support/Operations.h"
#include "kpx/text/Operations.h"
#include "kpx/xml/Operations.h"

namespace kpx {
namespace {

template <std::size_t... counts>
consteval auto joined(const ErrorEntry (&... tables)[counts]) {
  std::array<ErrorEntry, (counts + ...)> all{};
  auto end = all.begin();
  ((end = std::ranges::copy(tables, end).out), ...);
  std::ranges::sort(all, {}, &ErrorEntry::number);
  return all;
}

constexpr auto table =
    joined(textOperations, platformOperations, supportOperations, xmlOperations, configOperations,
           domainOperations, contextOperations, capiOperations);

consteval bool areUnique(auto ErrorEntry::*member) {
  auto entries = table;
  std::ranges::sort(entries, {}, member);
  return std::ranges::adjacent_find(entries, {}, member) == entries.end();
}
static_assert(areUnique(&ErrorEntry::number), "two operations have the same number");
static_assert(areUnique(&ErrorEntry::operation), "an operation has two numbers");

}  // namespace

std::span<const ErrorEntry> errorTable() noexcept { return table; }

std::string_view operationOf(int number) noexcept { return operationIn(table, number); }

}  // namespace kpx
