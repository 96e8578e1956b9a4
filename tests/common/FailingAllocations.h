#pragma once

namespace kpx {

/// Makes allocations of the test program fail once `count` more of them have been made, until
/// the end of the scope.
class FailingAllocations {
 public:
  explicit FailingAllocations(int count) noexcept;
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;
};

}  // namespace kpx
