#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/config/KeyLiteral.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// What an accessor takes and gives.
enum class ValueKind : std::uint8_t {
  integer,      // 32-bit integer
  flag,         // int, 0 or 1
  enumeration,  // stored as its 32-bit integer; any is accepted and kept
  real,         // double
  text,         // CString
};

/// A caption or group: a text as it stands (often a number of a text, kept as digits), or one
/// that is looked up when a column is created.
struct SettingText {
  std::u16string_view literal = {};
  std::int32_t id = 0;  // not 0: the text of this number

  constexpr bool isLookedUp() const noexcept { return id != 0; }
  /// The text that a column created now would get.
  KPX_API CString get() const;
};

/// One accessor pair of a settings class, as the schema defines it: all that tells it from the
/// others. Its behaviour is in Accessors.h.
struct SettingDef {
  /// "No decimals": only reals have them.
  static constexpr int noDecimals = -100;

  KeyLiteral key = {};
  ValueKind kind = ValueKind::text;
  int decimals = noDecimals;  // when a real is written; -1 all significant digits
  std::int32_t type = 0;      // the column's Type when created; how it is read never depends on it
  SettingText caption = {};   // the column's Caption
  SettingText group = {};     // the column's Category
  std::int32_t missingInteger = 0;  // what the getter answers when the column is missing
  double missingReal = 0.0;         // (texts answer the empty text)
  KeyLiteral olderKey = {};         // read by the getter when `key` is missing; empty: none
  int getterError = 0;              // reported when the getter fails; 0: exceptions pass
  int setterError = 0;              // the same for the setter
};

}  // namespace kpx
