#pragma once

#include <cstddef>
#include <span>
#include <string>
#include <string_view>

namespace kpx::detail {

/// What one report says: a number, or a free text in its place.
struct Report {
  int number = 0;
  const std::u16string_view* text = nullptr;
};

/// The line of a report as the logs get it, with its line end. Throws std::bad_alloc.
std::string logLine(const Report& report);

/// The same without memory of its own; what is too long is cut. Requires room for 64 bytes.
std::string_view shortLogLine(const Report& report, std::span<char> buffer) noexcept;

}  // namespace kpx::detail
