#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <iterator>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

// The attributes that the suite writes.

enum class AttributeKind : std::uint8_t { integer, time, text };

struct ConfigAttribute {
  std::u16string_view name;
  AttributeKind kind = AttributeKind::integer;
};

/// The attributes of the record header, with which every element begins.
inline constexpr ConfigAttribute headerAttributes[] = {
    {u"ObjectID"},
    {u"UserChangedID"},
    {u"UserCreatedID"},
    {u"changed", AttributeKind::time},
    {u"created", AttributeKind::time},
    {u"TransID"},
};

namespace detail {

template <std::size_t count>
constexpr auto withHeader(const ConfigAttribute (&own)[count]) {
  std::array<ConfigAttribute, std::size(headerAttributes) + count> all{};
  std::ranges::copy(own, std::ranges::copy(headerAttributes, all.begin()).out);
  return all;
}

}  // namespace detail

// Of each element, in the order in which they are written.
inline constexpr auto configurationAttributes = detail::withHeader({
    {u"Name", AttributeKind::text},
    {u"ClassID"},
});
inline constexpr auto keyedClassAttributes = detail::withHeader({
    {u"Name", AttributeKind::text},
});
inline constexpr auto columnAttributes = detail::withHeader({
    {u"ClassID"},
    {u"Type"},
    {u"Name", AttributeKind::text},
    {u"Caption", AttributeKind::text},
    {u"Category", AttributeKind::text},
    {u"Length"},
    {u"Prec"},
    {u"Nullable"},
    {u"Empty"},
    {u"Default", AttributeKind::text},
    {u"Unit"},
});
inline constexpr auto valueAttributes = detail::withHeader({
    {u"Value", AttributeKind::text},
    {u"ColID"},
    {u"RowID"},
    {u"Data"},
});

/// Whether a text is how the suite writes such an attribute: "7", not "007".
KPX_API bool isAsWritten(AttributeKind kind, const CString& text);

}  // namespace kpx
