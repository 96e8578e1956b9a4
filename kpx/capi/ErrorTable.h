#pragma once

#include <span>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/report/OperationNumber.h"

namespace kpx {

/// Every guarded operation of the library but the accessors of settings, whose numbers stand in
/// their catalogue. Ordered by number.
KPX_API std::span<const ErrorEntry> errorTable() noexcept;

/// The operation of a number; empty when it is none of this table.
KPX_API std::string_view operationOf(int number) noexcept;

}  // namespace kpx
