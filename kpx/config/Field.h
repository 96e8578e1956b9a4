#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>
#include <tuple>
#include <type_traits>

#include "kpx/text/CString.h"

namespace kpx {

/// What an attribute of a stored object says: an integer of 32 bits, a time or a text.
enum class AttributeKind : std::uint8_t { integer, time, text };

/// One attribute of an element as it stands in files.
struct ElementAttribute {
  std::u16string_view name;
  AttributeKind kind = AttributeKind::integer;
};

/// The text of a time double that is 0.
inline constexpr std::u16string_view zeroTimeText = u"00.00.0000-00:00:00";

/// One field of a persistent class: the name of its attribute, and the member with its value. The
/// member's type tells the kind: std::int32_t, CString, and double for a time double.
template <class Owner, class Value>
class Field {
  static_assert(std::is_same_v<Value, std::int32_t> || std::is_same_v<Value, CString> ||
                std::is_same_v<Value, double>);

 public:
  template <std::size_t length>
  consteval Field(const char16_t (&name)[length], Value Owner::*value) noexcept
      : member(value), openingLength_(length + 2) {
    char16_t* end = opening_.data();
    *end++ = u' ';
    for (std::size_t i = 0; i + 1 < length; ++i) *end++ = name[i];
    *end++ = u'=';
    *end++ = u'"';
  }

  constexpr std::u16string_view name() const noexcept {
    return {opening_.data() + 1, openingLength_ - 3};
  }
  /// Everything that stands in an element before the value: " Name=\"".
  constexpr std::u16string_view opening() const noexcept {
    return {opening_.data(), openingLength_};
  }
  static constexpr AttributeKind kind() noexcept {
    if (std::is_same_v<Value, CString>) return AttributeKind::text;
    return std::is_same_v<Value, double> ? AttributeKind::time : AttributeKind::integer;
  }

  Value Owner::*member;

 private:
  static constexpr std::size_t longestOpening = 24;
  std::array<char16_t, longestOpening> opening_{};
  std::size_t openingLength_;
};

/// A class's own fields in the order in which they are written; `PersistentFields.h` has them all.
/// Nothing for every other class, so that no object is written without its fields.
template <class Object>
inline constexpr auto fieldsOf = nullptr;

/// Calls `visit` with each own field of the class.
template <class Object, class Visit>
constexpr void forEachField(Visit visit) {
  std::apply([&](const auto&... field) { (visit(field), ...); }, fieldsOf<Object>);
}

}  // namespace kpx
