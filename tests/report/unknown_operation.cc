// Must not compile: the table has no such operation. (No .cpp, so that no tool takes it for a source.)
#include "kpx/report/Error.h"

constexpr kpx::ErrorEntry operations[] = {{1, "known"}};

int failing() {
  return kpx::Guarded(kpx::OperationNumber::in(operations, "unknown"), 0, [] { return 1; });
}
