#pragma once

#include <cstdint>
#include <string>
#include <string_view>

#include "kpx/report/Export.h"

class CWnd;  // the application framework's window, which only the host knows from inside

namespace kpx {

/// Where a window is and how it is shown, in the system's own form of 44 bytes. Coordinates are
/// pixels of the work area.
struct KPX_API WindowPlacement {
  struct Point {
    std::int32_t x = 0;
    std::int32_t y = 0;
    friend bool operator==(const Point&, const Point&) = default;
  };

  static constexpr std::uint32_t size = 44;

  std::uint32_t flags = 0;
  std::uint32_t showCommand = 1;  // 1 normal, 2 minimised, 3 maximised
  Point minimised;
  Point maximised;
  Point topLeft;  // of the window in its normal state
  Point bottomRight;

  /// The record, little-endian, with its size as the first word.
  std::string bytes() const;
  /// From a record; false, and nothing changed, when length or first word are wrong.
  bool assign(std::string_view bytes) noexcept;

  friend bool operator==(const WindowPlacement&, const WindowPlacement&) = default;
};

/// Reads and sets the placement of the host's windows. The host registers one, since only it knows
/// its window class; on Windows it has the two functions below for the work.
class KPX_API WindowPlacementHandler {
 public:
  virtual ~WindowPlacementHandler();
  /// Both answer false when the window is none.
  virtual bool get(const CWnd& window, WindowPlacement& placement) = 0;
  virtual bool set(CWnd& window, const WindowPlacement& placement) = 0;
};

/// The registered handler, nullptr if there is none; setting answers the one before.
KPX_API WindowPlacementHandler* windowPlacementHandler() noexcept;
KPX_API WindowPlacementHandler* setWindowPlacementHandler(WindowPlacementHandler* handler) noexcept;

/// The same for a window handle of the system; false when it is none, and always off Windows.
KPX_API bool placementOfHandle(void* window, WindowPlacement& placement) noexcept;
KPX_API bool placeHandle(void* window, const WindowPlacement& placement) noexcept;

}  // namespace kpx
