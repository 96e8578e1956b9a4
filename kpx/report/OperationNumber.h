#pragma once

#include <span>
#include <string_view>

#include "kpx/report/Export.h"

namespace kpx {

/// An operation that reports its unexpected failures, and the number by which the error logs and
/// the users' support know it.
///
/// Each layer has a table of its own, `Operations.h`, ordered by number; those of the accessors of
/// settings stand in the settings schema. A number stands in the logs of users, so it never changes
/// and is never given to another operation. 900001 to 909999 belong to settings; what has no number
/// from older modules has one from 910001 on, in blocks that the tables name.
struct ErrorEntry {
  int number;
  std::string_view operation;  // function or Class::function; overloads with their parameters
};

/// The operation of a number in a table; empty when it is none of them.
KPX_API std::string_view operationIn(std::span<const ErrorEntry> table, int number) noexcept;

namespace detail {
// Not constexpr: naming it in a constant expression is the compiler's message to the caller.
void operationIsNotInTable();
}  // namespace detail

/// The error number of an operation. The compiler looks the name up in the table of the layer,
/// which has a literal for that, "CMarkup::Load"_xml, and refuses a name that is not there.
class OperationNumber {
 public:
  static consteval OperationNumber in(std::span<const ErrorEntry> table,
                                      std::string_view operation) {
    for (const ErrorEntry& entry : table) {
      if (entry.operation == operation) return OperationNumber(entry.number);
    }
    detail::operationIsNotInTable();
    return OperationNumber(0);
  }
  /// A number that the settings schema gives, where it is checked.
  static constexpr OperationNumber ofSetting(int number) noexcept {
    return OperationNumber(number);
  }

  constexpr int value() const noexcept { return value_; }

 private:
  constexpr explicit OperationNumber(int number) noexcept : value_(number) {}

  int value_;
};

}  // namespace kpx
