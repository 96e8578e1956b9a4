#pragma once

#include <cstdint>
#include <span>

#include "kpx/config/CFGConfig.h"
#include "kpx/config/KeyLiteral.h"
#include "kpx/report/Export.h"
#include "kpx/settings/engine/SettingDef.h"

namespace kpx::detail {

// What every accessor of every settings class does; the generated accessors are forwards to
// these.
//
// Getters convert the column's text, whatever the column's type, and create nothing. Setters
// change the text of an existing column and nothing else of it; a missing column is created with
// the type, caption and group of the definition. They answer 1. Both let exceptions pass unless
// the definition has a number to report them by; then they answer the neutral value, or 1.

KPX_API std::int32_t getInteger(const CFGConfig& config, const SettingDef& setting);
KPX_API double getReal(const CFGConfig& config, const SettingDef& setting);
KPX_API CString getText(const CFGConfig& config, const SettingDef& setting);

KPX_API int setInteger(CFGConfig& config, const SettingDef& setting, std::int32_t value);
KPX_API int setReal(CFGConfig& config, const SettingDef& setting, double value);
KPX_API int setText(CFGConfig& config, const SettingDef& setting, const CString& value);

/// Names a new object's class and makes room for its columns.
KPX_API void beginConstruction(CFGConfig& config, std::u16string_view className,
                               std::size_t columns);

/// Replaces the key order. A failure is reported under `error`.
KPX_API void resetKeyOrder(CFGConfig& config, std::span<const KeyLiteral> keys, int error);

}  // namespace kpx::detail
