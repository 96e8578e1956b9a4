#pragma once

#include <array>
#include <cstddef>
#include <iterator>
#include <string_view>

#include "kpx/settings/document/ConfigAttributes.h"
#include "kpx/text/CString.h"

namespace kpx::tool {

inline constexpr const char* jsonFormatName = "kpx-configurations";
inline constexpr int jsonFormatVersion = 1;

/// What stands before the first configuration of a usual file, and behind each element.
inline constexpr std::u16string_view usualDeclaration =
    u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";
inline constexpr std::u16string_view usualLineEnd = u"\r\n";

using FieldKind = AttributeKind;

/// An attribute of an element and the member of a JSON object that it becomes.
struct JsonField {
  const char* name;
  std::u16string_view attribute;
  FieldKind kind = FieldKind::integer;
  bool always = false;  // it is written even if it is 0 or empty, and has to be there
};

/// The attributes of an element with the names of their members: those of the record header, and
/// the element's own.
template <std::size_t attributeCount, std::size_t count>
constexpr std::array<JsonField, attributeCount> jsonFields(
    const std::array<ConfigAttribute, attributeCount>& attributes,
    const char* const (&ownNames)[count]) {
  constexpr const char* headerNames[] = {"object_id", "user_changed_id", "user_created_id",
                                         "changed",   "created",         "trans_id"};
  constexpr std::size_t headerCount = std::size(headerNames);
  static_assert(attributeCount == headerCount + count);
  std::array<JsonField, attributeCount> fields{};
  for (std::size_t i = 0; i < attributeCount; ++i) {
    const std::string_view name = i < headerCount ? headerNames[i] : ownNames[i - headerCount];
    fields[i] = {name.data(), attributes[i].name, attributes[i].kind,
                 name == "type" || name == "key" || name == "value"};
  }
  return fields;
}

inline constexpr auto configurationFields =
    jsonFields(configurationAttributes, {"name", "class_id"});
inline constexpr auto classFields = jsonFields(keyedClassAttributes, {"name"});
inline constexpr auto columnFields =
    jsonFields(columnAttributes, {"class_id", "type", "key", "caption", "category", "length",
                                  "prec", "nullable", "empty", "default", "unit"});
/// The attribute "Value" is the member "value" of the setting itself.
inline constexpr auto valueFields =
    jsonFields(valueAttributes, {"value", "col_id", "row_id", "data"});

/// The text of a field that is left out.
std::u16string_view neutralText(FieldKind kind) noexcept;
/// The name that the class of configuration of an element has, unless the JSON says another.
CString usualClassName(const CString& elementName);

}  // namespace kpx::tool
