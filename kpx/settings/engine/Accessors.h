#pragma once

#include <cstdint>
#include <span>

#include "kpx/config/CFGConfig.h"
#include "kpx/config/CFGRow.h"
#include "kpx/config/CFGTable.h"
#include "kpx/config/KeyedCollection.h"
#include "kpx/config/KeyLiteral.h"
#include "kpx/settings/engine/SettingDef.h"

namespace kpx::detail {

// What every accessor of every settings class does; the generated accessors are forwards to
// these.
//
// Getters convert the column's text, whatever the column's type, and create nothing. Setters
// change the text of an existing column and nothing else of it; a missing column is created with
// the type, caption and group of the definition. What holds for columns of a configuration holds
// for cells of a row. They answer 1. Both let exceptions pass unless
// the definition has a number to report them by; then they answer the neutral value, or 1.

using Columns = KeyedCollection<CFGCol>;

std::int32_t getInteger(const Columns& columns, const SettingDef& setting);
double getReal(const Columns& columns, const SettingDef& setting);
CString getText(const Columns& columns, const SettingDef& setting);

int setInteger(CFGConfig& config, const SettingDef& setting, std::int32_t value);
int setReal(CFGConfig& config, const SettingDef& setting, double value);
int setText(CFGConfig& config, const SettingDef& setting, const CString& value);
// The same for the cells of a row.
int setInteger(CFGRow& row, const SettingDef& setting, std::int32_t value);
int setReal(CFGRow& row, const SettingDef& setting, double value);
int setText(CFGRow& row, const SettingDef& setting, const CString& value);

/// Names a new object's class and makes room for its columns.
void beginConstruction(CFGConfig& config, std::u16string_view className, std::size_t columns);

/// Adds the columns of a table, or of a table's header, behind those that are there; without
/// values, because a definition has none.
void defineColumns(CFGTable& table, std::span<const SettingDef> columns);
void defineColumns(CFGConfig& header, std::span<const SettingDef> columns);

/// Replaces the key order. A failure is reported under `error`; the order then stays.
void resetKeyOrder(CFGConfig& config, std::span<const KeyLiteral> keys, int error);

}  // namespace kpx::detail
