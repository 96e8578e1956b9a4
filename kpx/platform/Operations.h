#pragma once

#include <cstddef>

#include "kpx/report/OperationNumber.h"

namespace kpx {

/// The operations of the platform that report failures, by number; a new one takes the next number.
inline constexpr ErrorEntry platformOperations[] = {
    {910601, "findProcesses"},
    {910602, "endProcesses"},
};

/// The number of one of them: "findProcesses"_platform.
consteval OperationNumber operator""_platform(const char* operation, std::size_t length) {
  return OperationNumber::in(platformOperations, {operation, length});
}

}  // namespace kpx
