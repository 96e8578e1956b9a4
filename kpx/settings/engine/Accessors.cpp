#include "kpx/settings/engine/Accessors.h"

#include <utility>
#include <vector>

#include "kpx/report/Error.h"
#include "kpx/settings/engine/ValueText.h"
#include "kpx/support/texts/TextStore.h"

namespace kpx {

CString SettingText::get() const { return isLookedUp() ? storedText(id) : literal; }

namespace detail {
namespace {

/// The stored text of a setting, or nullptr.
const CString* storedText(const Columns& columns, const SettingDef& setting) {
  const CFGCol* column = columns.find(setting.key);
  if (!column && !setting.olderKey.empty()) column = columns.find(setting.olderKey);
  return column ? &column->Value.Value : nullptr;
}

template <class Value, class Body>
Value guardedGetter(const SettingDef& setting, Body&& body) {
  if (setting.getterError == 0) return body();
  return Guarded(OperationNumber::ofSetting(setting.getterError), Value(), body);
}

Columns& columnsOf(CFGConfig& config) { return config.Class.Cols; }
Columns& columnsOf(CFGRow& row) { return row.Cells; }

void create(CFGConfig& config, const SettingDef& setting, const CString& text) {
  config.AddSetting(text, setting.key.text(), setting.group.get(), setting.type,
                    setting.caption.get(), 1, 0, 0);
}
void create(CFGRow& row, const SettingDef& setting, const CString& text) {
  row.AddCell(text, setting.key.text(), setting.group.get(), setting.type, setting.caption.get());
}

/// Lets `write` put the value's text into the column, or into a new one.
template <class Owner, class Write>
int storeText(Owner& owner, const SettingDef& setting, Write&& write) {
  const auto store = [&] {
    if (CFGCol* const column = columnsOf(owner).find(setting.key)) {
      write(column->Value.Value);
    } else {
      CString text;
      write(text);
      create(owner, setting, text);
    }
  };
  if (setting.setterError == 0) {
    store();
  } else {
    Guarded(OperationNumber::ofSetting(setting.setterError), store);
  }
  return 1;
}

template <class Owner>
int storeInteger(Owner& owner, const SettingDef& setting, std::int32_t value) {
  return storeText(owner, setting, [&](CString& text) { integerTextInto(text, value); });
}

template <class Owner>
int storeReal(Owner& owner, const SettingDef& setting, double value) {
  return storeText(owner, setting, [&](CString& text) { realTextInto(text, value, setting); });
}

template <class Owner>
int storeTextValue(Owner& owner, const SettingDef& setting, const CString& value) {
  // Into the text that is there, so that its memory is used again.
  return storeText(owner, setting, [&](CString& text) { text.Assign(value); });
}

}  // namespace

std::int32_t getInteger(const Columns& columns, const SettingDef& setting) {
  return guardedGetter<std::int32_t>(
      setting, [&] { return integerOf(storedText(columns, setting), setting); });
}

double getReal(const Columns& columns, const SettingDef& setting) {
  return guardedGetter<double>(setting,
                               [&] { return realOf(storedText(columns, setting), setting); });
}

CString getText(const Columns& columns, const SettingDef& setting) {
  return guardedGetter<CString>(setting, [&] { return textOf(storedText(columns, setting)); });
}

int setInteger(CFGConfig& config, const SettingDef& setting, std::int32_t value) {
  return storeInteger(config, setting, value);
}
int setReal(CFGConfig& config, const SettingDef& setting, double value) {
  return storeReal(config, setting, value);
}
int setText(CFGConfig& config, const SettingDef& setting, const CString& value) {
  return storeTextValue(config, setting, value);
}

int setInteger(CFGRow& row, const SettingDef& setting, std::int32_t value) {
  return storeInteger(row, setting, value);
}
int setReal(CFGRow& row, const SettingDef& setting, double value) {
  return storeReal(row, setting, value);
}
int setText(CFGRow& row, const SettingDef& setting, const CString& value) {
  return storeTextValue(row, setting, value);
}

void beginConstruction(CFGConfig& config, std::u16string_view className, std::size_t columns) {
  config.Class.Name.Assign(className);
  config.Class.Cols.reserve(columns);
  config.Class.KeyOrder.reserve(columns);
}

void defineColumns(CFGTable& table, std::span<const SettingDef> columns) {
  for (const SettingDef& column : columns) {
    table.AddColDef(u"", column.key.text(), column.group.get(), column.type, column.caption.get());
  }
}

void defineColumns(CFGConfig& header, std::span<const SettingDef> columns) {
  for (const SettingDef& column : columns) create(header, column, CString());
}

void resetKeyOrder(CFGConfig& config, std::span<const KeyLiteral> keys, int error) {
  Guarded(OperationNumber::ofSetting(error), [&] {
    std::vector<CString> order;
    order.reserve(keys.size());
    for (const KeyLiteral& key : keys) order.emplace_back(key.text());
    config.Class.KeyOrder = std::move(order);
  });
}

}  // namespace detail
}  // namespace kpx
