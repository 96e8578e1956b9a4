#include "kpx/settings/engine/Accessors.h"

#include "kpx/report/Error.h"
#include "kpx/support/TextStore.h"
#include "kpx/text/NumberText.h"

namespace kpx {

CString SettingText::get() const { return isLookedUp() ? GetMLT(id) : CString(literal); }

namespace detail {
namespace {

/// The stored text of a setting, or nullptr.
const CString* storedText(const CFGConfig& config, const SettingDef& setting) {
  const CFGCol* column = config.Class.find(setting.key);
  if (!column && !setting.olderKey.empty()) column = config.Class.find(setting.olderKey);
  return column ? &column->Value.Value : nullptr;
}

template <class Value, class Body>
Value guardedGetter(const SettingDef& setting, Body&& body) {
  if (setting.getterError == 0) return body();
  return Guarded(setting.getterError, Value(), body);
}

/// Lets `write` put the value's text into the column, or into a new one.
template <class Write>
int storeText(CFGConfig& config, const SettingDef& setting, Write&& write) {
  const auto store = [&] {
    if (CFGCol* const column = config.Class.Cols.find(setting.key)) {
      write(column->Value.Value);
    } else {
      CString text;
      write(text);
      config.AddSetting(text, setting.key.text(), setting.group.get(), setting.type,
                        setting.caption.get(), 1, 0, 0);
    }
  };
  if (setting.setterError == 0) {
    store();
  } else {
    Guarded(setting.setterError, store);
  }
  return 1;
}

}  // namespace

std::int32_t getInteger(const CFGConfig& config, const SettingDef& setting) {
  return guardedGetter<std::int32_t>(setting, [&] {
    const CString* const text = storedText(config, setting);
    return text ? textAsLong(*text) : setting.missingInteger;
  });
}

double getReal(const CFGConfig& config, const SettingDef& setting) {
  return guardedGetter<double>(setting, [&] {
    const CString* const text = storedText(config, setting);
    return text ? textAsDouble(*text) : setting.missingReal;
  });
}

CString getText(const CFGConfig& config, const SettingDef& setting) {
  return guardedGetter<CString>(setting, [&] {
    const CString* const text = storedText(config, setting);
    return text ? *text : CString();
  });
}

int setInteger(CFGConfig& config, const SettingDef& setting, std::int32_t value) {
  return storeText(config, setting, [&](CString& text) { longAsTextInto(text, value); });
}

int setReal(CFGConfig& config, const SettingDef& setting, double value) {
  return storeText(config, setting,
                   [&](CString& text) { doubleAsTextInto(text, value, setting.decimals, u'.'); });
}

int setText(CFGConfig& config, const SettingDef& setting, const CString& value) {
  // Into the text that is there, so that its memory is used again.
  return storeText(config, setting, [&](CString& text) { text.Assign(value); });
}

void beginConstruction(CFGConfig& config, std::u16string_view className, std::size_t columns) {
  config.Class.Name.Assign(className);
  config.Class.Cols.reserve(columns);
  config.Class.KeyOrder.reserve(columns);
}

void resetKeyOrder(CFGConfig& config, std::span<const KeyLiteral> keys, int error) {
  Guarded(error, [&] {
    config.Class.SetKeyCount(0);
    config.Class.KeyOrder.reserve(keys.size());
    for (const KeyLiteral& key : keys) config.Class.KeyOrder.emplace_back(key.text());
  });
}

}  // namespace detail
}  // namespace kpx
