#pragma once

namespace kpx {

/// Makes allocations of this thread fail once `count` more of them have been made, until
/// the end of the scope.
class FailingAllocations {
 public:
  explicit FailingAllocations(int count) noexcept;
  ~FailingAllocations();
  FailingAllocations(const FailingAllocations&) = delete;
  FailingAllocations& operator=(const FailingAllocations&) = delete;

  /// Whether any has failed since the scope began.
  bool hasFailed() const noexcept;
};

}  // namespace kpx
