#pragma once

#include <span>

namespace kpx {
struct SettingsClass;
}

namespace kpx::detail {

/// All settings classes, by name. The table is generated with the classes.
std::span<const SettingsClass* const> classTable() noexcept;

}  // namespace kpx::detail
