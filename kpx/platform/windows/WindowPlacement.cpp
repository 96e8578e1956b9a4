#include "kpx/platform/WindowPlacement.h"

#include <windows.h>

#include <cstring>

namespace kpx {

static_assert(sizeof(WINDOWPLACEMENT) == WindowPlacement::size);

bool placementOfHandle(void* window, WindowPlacement& placement) noexcept {
  WINDOWPLACEMENT record = {};
  record.length = sizeof record;
  if (!::GetWindowPlacement(static_cast<HWND>(window), &record)) return false;
  return placement.assign({reinterpret_cast<const char*>(&record), sizeof record});
}

bool placeHandle(void* window, const WindowPlacement& placement) noexcept {
  try {
    const std::string bytes = placement.bytes();
    WINDOWPLACEMENT record = {};
    std::memcpy(&record, bytes.data(), sizeof record);
    return ::SetWindowPlacement(static_cast<HWND>(window), &record) != 0;
  } catch (...) {
    return false;
  }
}

}  // namespace kpx
