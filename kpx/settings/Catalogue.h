#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string_view>
#include <variant>

#include "kpx/config/CFGConfig.h"
#include "kpx/report/Export.h"
#include "kpx/settings/engine/SettingDef.h"
#include "kpx/settings/ValueCheck.h"

namespace kpx {

/// A value as an accessor takes or gives it: integers, flags and enumerations as the integer.
using SettingValue = std::variant<std::int32_t, double, CString>;

/// One setting of a settings class: what the schema says of it, and its accessors, callable
/// without naming them. Several may share a key; one without accessors is created with its object.
struct SettingAccess {
  const SettingDef* setting;
  std::u16string_view getter;  // "getCA2TTolXY"; empty if there is none
  std::u16string_view setter;
  // Both require an object of the class that the accessor belongs to.
  SettingValue (*get)(const CDBObject& object);  // nullptr if there is no getter
  int (*set)(CDBObject& object, const SettingValue& value);

  std::u16string_view key() const noexcept { return setting->key.text(); }

  /// The getter's answer as text, reals with the decimals of the setting. Requires a getter.
  KPX_API CString text(const CDBObject& object) const;
  /// Calls the setter with the value that the text says, if it is one. Requires a setter.
  KPX_API ValueCheck setText(CDBObject& object, std::u16string_view text) const;
};

/// What the objects of a settings class are.
enum class ClassShape : std::uint8_t {
  configuration,  // a CFGConfig
  row,            // a CFGRow: accessors to cells, none in a new object
  table,          // a CFGTable: columns and rows, no accessors
};

/// One settings class. Lives as long as the program.
struct SettingsClass {
  std::u16string_view name;         // "CFGGeneralSettings"
  std::u16string_view family;       // the folder of the schema
  std::u16string_view elementName;  // of its XML; empty if that does not tell the class
  std::span<const SettingAccess> settings;
  ClassShape shape;
  std::unique_ptr<CDBObject> (*make)();
  int resetError = 0;  // reported when ResetPos fails; 0: there is no such number

  /// Whether objects are configurations, which carry their settings through XML.
  constexpr bool isConfiguration() const noexcept { return shape == ClassShape::configuration; }
  /// A new object with all its defaults. nullptr for rows and tables. Throws std::bad_alloc, or
  /// `GuardedException` when the object has reported that it is not whole.
  KPX_API std::unique_ptr<CFGConfig> create() const;
  /// The first accessor pair of a key, else the one whose getter reads it as its older key, or
  /// nullptr if the class does not know the key.
  KPX_API const SettingAccess* findKey(std::u16string_view key) const noexcept;
  /// The accessor pair of a getter or setter, or nullptr.
  KPX_API const SettingAccess* findAccessor(std::u16string_view accessor) const noexcept;
};

/// All settings classes, by name.
KPX_API std::span<const SettingsClass* const> settingsClasses() noexcept;
/// The class, or nullptr if there is none of that name.
KPX_API const SettingsClass* findSettingsClass(std::u16string_view name) noexcept;
KPX_API const SettingsClass* findSettingsClassByElement(std::u16string_view elementName) noexcept;

/// The column (of a row: the cell) that a setter creates in an object without columns, given 0 or
/// the empty text. Nothing without a setter.
KPX_API std::optional<CFGCol> columnCreatedBy(const SettingsClass& owner,
                                              const SettingAccess& access);
/// What a getter answers in an object without columns or cells. Nothing without a getter.
KPX_API std::optional<SettingValue> answerWhenMissing(const SettingsClass& owner,
                                                      const SettingAccess& access);

}  // namespace kpx
