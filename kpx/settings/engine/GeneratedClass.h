#pragma once

#include <memory>
#include <string_view>
#include <type_traits>

#include "kpx/settings/Catalogue.h"
#include "kpx/settings/engine/Accessors.h"
#include "kpx/settings/engine/SettingDef.h"

// What the generated source of a settings class is made of.

namespace kpx::detail {

template <class Accessor>
struct AccessorTypes;
template <class Owner, class Result>
struct AccessorTypes<Result (Owner::*)() const> {
  using OwnerType = Owner;
};
template <class Owner, class Argument>
struct AccessorTypes<int (Owner::*)(Argument)> {
  using OwnerType = Owner;
  using ValueType = std::remove_cvref_t<Argument>;
};

/// Calls a getter and packs its answer.
template <auto Getter>
SettingValue callGetter(const CDBObject& object) {
  using Owner = typename AccessorTypes<decltype(Getter)>::OwnerType;
  auto value = (static_cast<const Owner&>(object).*Getter)();
  if constexpr (std::is_enum_v<decltype(value)>) {
    return static_cast<std::int32_t>(value);
  } else {
    return value;
  }
}

/// Unpacks a value and calls a setter with it.
template <auto Setter>
int callSetter(CDBObject& object, const SettingValue& value) {
  using Types = AccessorTypes<decltype(Setter)>;
  using Value = typename Types::ValueType;
  auto& owner = static_cast<typename Types::OwnerType&>(object);
  if constexpr (std::is_enum_v<Value>) {
    return (owner.*Setter)(static_cast<Value>(std::get<std::int32_t>(value)));
  } else {
    return (owner.*Setter)(std::get<Value>(value));
  }
}

/// The catalogue's entry of an accessor pair; nullptr stands for an accessor that there is not.
template <auto Getter, auto Setter>
constexpr SettingAccess access(const SettingDef& setting, std::u16string_view getter,
                               std::u16string_view setter) {
  SettingAccess entry{&setting, getter, setter, nullptr, nullptr};
  if constexpr (!std::is_null_pointer_v<decltype(Getter)>) entry.get = &callGetter<Getter>;
  if constexpr (!std::is_null_pointer_v<decltype(Setter)>) entry.set = &callSetter<Setter>;
  return entry;
}

template <class Owner>
std::unique_ptr<CDBObject> makeObject() {
  return std::make_unique<Owner>();
}

}  // namespace kpx::detail
