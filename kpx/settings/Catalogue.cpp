#include "kpx/settings/Catalogue.h"

#include <algorithm>

#include "kpx/config/CFGHeader.h"
#include "kpx/config/CFGRow.h"
#include "kpx/report/Error.h"
#include "kpx/settings/engine/GeneratedClass.h"
#include "kpx/settings/engine/ValueText.h"
#include "kpx/settings/internal/CatalogueTable.h"
#include "kpx/settings/internal/HeaderAccess.h"
#include "kpx/text/NumberText.h"

namespace kpx {
namespace detail {
extern const SettingsClass settingsClassCFGHeader;
constinit const SettingsClass settingsClassCFGHeader = {
    .name = u"CFGHeader",
    .family = u"",
    .elementName = u"CFGConfigCFGClassHeader",
    .settings = headerAccesses,
    .shape = ClassShape::configuration,
    .make = &makeObject<CFGHeader>,
};
}  // namespace detail

CString SettingAccess::text(const CDBObject& object) const {
  const SettingValue value = get(object);
  if (const CString* const text = std::get_if<CString>(&value)) return *text;
  CString text;
  if (const double* const real = std::get_if<double>(&value)) {
    detail::realTextInto(text, *real, *setting);
  } else {
    detail::integerTextInto(text, std::get<std::int32_t>(value));
  }
  return text;
}

ValueCheck SettingAccess::setText(CDBObject& object, std::u16string_view text) const {
  ValueCheck check = checkValueText(setting->kind, text, setting->decimals);
  if (check.valid()) {
    if (setting->kind == ValueKind::text) {
      set(object, check.normal);
    } else if (setting->kind == ValueKind::real) {
      set(object, detail::textAsDouble(text));
    } else {
      set(object, detail::textAsLong(text));
    }
  }
  return check;
}

std::unique_ptr<CFGConfig> SettingsClass::create() const {
  if (!isConfiguration()) return nullptr;
  // Without memory an object reports it and goes on without the setting.
  const GuardWatch watch;
  std::unique_ptr<CFGConfig> object(static_cast<CFGConfig*>(make().release()));
  watch.passOn();
  return object;
}

const SettingAccess* SettingsClass::findKey(std::u16string_view key) const noexcept {
  const std::uint32_t hash = textHash(key);
  for (const SettingAccess& access : settings) {
    const KeyLiteral& own = access.setting->key;
    if (own.hash() == hash && own.text() == key) return &access;
  }
  for (const SettingAccess& access : settings) {
    const KeyLiteral& older = access.setting->olderKey;
    if (!older.empty() && older.text() == key) return &access;
  }
  return nullptr;
}

const SettingAccess* SettingsClass::findAccessor(std::u16string_view accessor) const noexcept {
  if (accessor.empty()) return nullptr;
  for (const SettingAccess& access : settings) {
    if (access.getter == accessor || access.setter == accessor) return &access;
  }
  return nullptr;
}

std::span<const SettingsClass* const> settingsClasses() noexcept { return detail::classTable(); }

const SettingsClass* findSettingsClass(std::u16string_view name) noexcept {
  const auto classes = settingsClasses();
  const auto found = std::ranges::lower_bound(classes, name, {}, &SettingsClass::name);
  return found != classes.end() && (*found)->name == name ? *found : nullptr;
}

const SettingsClass* findSettingsClassByElement(std::u16string_view elementName) noexcept {
  if (elementName.empty()) return nullptr;
  for (const SettingsClass* const each : settingsClasses()) {
    if (each->elementName == elementName) return each;
  }
  return nullptr;
}

namespace {

/// A new object without its columns or cells, which the accessors of the class work on.
struct EmptyObject {
  explicit EmptyObject(const SettingsClass& owner) : object(owner.make()) {
    switch (owner.shape) {
      case ClassShape::configuration: {
        CFGClass& held = static_cast<CFGConfig&>(*object).Class;
        held.RemoveCols();
        columns = &held.Cols;
        break;
      }
      case ClassShape::row:
        columns = &static_cast<CFGRow&>(*object).Cells;
        break;
      case ClassShape::table:
        break;
    }
  }

  std::unique_ptr<CDBObject> object;
  const KeyedCollection<CFGCol>* columns = nullptr;
};

}  // namespace

std::optional<CFGCol> columnCreatedBy(const SettingsClass& owner, const SettingAccess& access) {
  if (!access.set) return std::nullopt;
  const EmptyObject empty(owner);
  const SettingDef& setting = *access.setting;
  const GuardWatch watch;
  if (setting.kind == ValueKind::text) {
    access.set(*empty.object, CString());
  } else if (setting.kind == ValueKind::real) {
    access.set(*empty.object, 0.0);
  } else {
    access.set(*empty.object, std::int32_t{0});
  }
  watch.passOn();
  if (empty.columns->empty()) return std::nullopt;
  return empty.columns->begin()->value;
}

std::optional<SettingValue> answerWhenMissing(const SettingsClass& owner,
                                              const SettingAccess& access) {
  if (!access.get) return std::nullopt;
  const EmptyObject empty(owner);
  const GuardWatch watch;
  std::optional<SettingValue> answer = access.get(*empty.object);
  watch.passOn();
  return answer;
}

}  // namespace kpx
