#include "kpx/platform/WindowPlacement.h"

#include <atomic>
#include <cstddef>

namespace kpx {
namespace {

constinit std::atomic<WindowPlacementHandler*> installedHandler{nullptr};

constexpr std::size_t wordCount = WindowPlacement::size / 4;

}  // namespace

WindowPlacementHandler::~WindowPlacementHandler() = default;

std::string WindowPlacement::bytes() const {
  const auto word = [](std::int32_t number) { return static_cast<std::uint32_t>(number); };
  const std::uint32_t words[wordCount] = {
      size,
      flags,
      showCommand,
      word(minimised.x),
      word(minimised.y),
      word(maximised.x),
      word(maximised.y),
      word(topLeft.x),
      word(topLeft.y),
      word(bottomRight.x),
      word(bottomRight.y),
  };
  std::string record;
  record.reserve(size);
  for (const std::uint32_t each : words) {
    for (unsigned shift = 0; shift < 32; shift += 8) record += static_cast<char>(each >> shift);
  }
  return record;
}

bool WindowPlacement::assign(std::string_view bytes) noexcept {
  if (bytes.size() != size) return false;
  std::uint32_t words[wordCount] = {};
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    words[i / 4] |= static_cast<std::uint32_t>(static_cast<unsigned char>(bytes[i])) << i % 4 * 8;
  }
  if (words[0] != size) return false;
  const auto point = [&](std::size_t first) {
    return Point{static_cast<std::int32_t>(words[first]),
                 static_cast<std::int32_t>(words[first + 1])};
  };
  flags = words[1];
  showCommand = words[2];
  minimised = point(3);
  maximised = point(5);
  topLeft = point(7);
  bottomRight = point(9);
  return true;
}

WindowPlacementHandler* windowPlacementHandler() noexcept {
  return installedHandler.load(std::memory_order_acquire);
}

WindowPlacementHandler* setWindowPlacementHandler(WindowPlacementHandler* handler) noexcept {
  return installedHandler.exchange(handler, std::memory_order_acq_rel);
}

}  // namespace kpx
