#include "kpx/context/internal/ContextState.h"

namespace kpx::detail {
namespace {

constinit std::atomic<ContextState*> current{nullptr};

}  // namespace

constinit CachedText programFolder;
constinit CachedText systemFolder;

const ContextState* contextState() noexcept { return current.load(std::memory_order_acquire); }

ContextState& changeContextState() {
  ContextState* state = current.load(std::memory_order_relaxed);
  if (!state) {
    state = new ContextState;
    current.store(state, std::memory_order_release);
  }
  return *state;
}

void releaseContext() noexcept {
  delete current.exchange(nullptr, std::memory_order_acq_rel);
  programFolder.release();
  systemFolder.release();
}

}  // namespace kpx::detail
