#pragma once

#include <algorithm>
#include <array>
#include <cstddef>
#include <string_view>
#include <type_traits>

#include "kpx/config/PersistentFields.h"
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
  std::array<char, 24> member{};
  std::u16string_view attribute;
  FieldKind kind = FieldKind::integer;
  bool always = false;  // it is written even if it is 0 or empty, and has to be there

  constexpr const char* name() const noexcept { return member.data(); }
};

/// A member is named as its attribute, in lower case with underscores: "ObjectID" is "object_id".
constexpr JsonField jsonField(const ElementAttribute& attribute) {
  JsonField field{{}, attribute.name, attribute.kind};
  std::size_t length = 0;
  char16_t before = u'A';
  for (const char16_t unit : attribute.name) {
    const bool isUpper = unit >= u'A' && unit <= u'Z';
    if (isUpper && before >= u'a') field.member[length++] = '_';
    field.member[length++] = static_cast<char>(isUpper ? unit - u'A' + u'a' : unit);
    before = unit;
  }
  return field;
}

/// The attributes of an element with the names of their members; a column's "Name" is its "key".
template <class Object>
inline constexpr auto jsonFields = [] {
  std::array<JsonField, attributesOf<Object>.size()> fields{};
  std::ranges::transform(attributesOf<Object>, fields.begin(), jsonField);
  for (JsonField& field : fields) {
    if (std::is_same_v<Object, CFGCol> && field.attribute == u"Name") field.member = {"key"};
    const std::string_view name = field.name();
    field.always = name == "type" || name == "key" || name == "value";
  }
  return fields;
}();

inline constexpr auto& configurationFields = jsonFields<CFGConfig>;
inline constexpr auto& classFields = jsonFields<CFGClass>;
inline constexpr auto& columnFields = jsonFields<CFGCol>;
/// The attribute "Value" is the member "value" of the setting itself.
inline constexpr auto& valueFields = jsonFields<CFGValue>;

/// The text of a field that is left out.
std::u16string_view neutralText(FieldKind kind) noexcept;
/// The name that the class of configuration of an element has, unless the JSON says another.
CString usualClassName(const CString& elementName);

}  // namespace kpx::tool
