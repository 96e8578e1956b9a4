#pragma once

#include <cstdint>
#include <span>
#include <string_view>

#include "kpx/text/CString.h"

namespace kpx::tool {

inline constexpr const char* jsonFormatName = "kpx-configurations";
inline constexpr int jsonFormatVersion = 1;

/// What stands before the first configuration of a usual file, and behind each element.
inline constexpr std::u16string_view usualDeclaration =
    u"<?xml version=\"1.0\" encoding=\"UTF-8\"?>\r\n";
inline constexpr std::u16string_view usualLineEnd = u"\r\n";

enum class FieldKind : std::uint8_t { integer, time, text };

/// An attribute of an element and the member of a JSON object that it becomes.
struct JsonField {
  const char* name;
  std::u16string_view attribute;
  FieldKind kind = FieldKind::integer;
  bool always = false;  // it is written even if it is 0 or empty, and has to be there
};

// In the order in which the suite writes the attributes.
inline constexpr JsonField configurationFields[] = {
    {"object_id", u"ObjectID"},
    {"user_changed_id", u"UserChangedID"},
    {"user_created_id", u"UserCreatedID"},
    {"changed", u"changed", FieldKind::time},
    {"created", u"created", FieldKind::time},
    {"trans_id", u"TransID"},
    {"name", u"Name", FieldKind::text},
    {"class_id", u"ClassID"},
};
inline constexpr std::span<const JsonField> classFields = std::span(configurationFields).first<7>();
inline constexpr JsonField columnFields[] = {
    {"object_id", u"ObjectID"},
    {"user_changed_id", u"UserChangedID"},
    {"user_created_id", u"UserCreatedID"},
    {"changed", u"changed", FieldKind::time},
    {"created", u"created", FieldKind::time},
    {"trans_id", u"TransID"},
    {"class_id", u"ClassID"},
    {"type", u"Type", FieldKind::integer, true},
    {"key", u"Name", FieldKind::text, true},
    {"caption", u"Caption", FieldKind::text},
    {"category", u"Category", FieldKind::text},
    {"length", u"Length"},
    {"prec", u"Prec"},
    {"nullable", u"Nullable"},
    {"empty", u"Empty"},
    {"default", u"Default", FieldKind::text},
    {"unit", u"Unit"},
};
/// The attribute "Value" is the member "value" of the setting itself.
inline constexpr JsonField valueFields[] = {
    {"object_id", u"ObjectID"},
    {"user_changed_id", u"UserChangedID"},
    {"user_created_id", u"UserCreatedID"},
    {"changed", u"changed", FieldKind::time},
    {"created", u"created", FieldKind::time},
    {"trans_id", u"TransID"},
    {"value", u"Value", FieldKind::text, true},
    {"col_id", u"ColID"},
    {"row_id", u"RowID"},
    {"data", u"Data"},
};

/// The text of a field that is left out.
std::u16string_view neutralText(FieldKind kind) noexcept;
/// Whether a text is how the suite writes such a field, so that JSON can show it as what it is.
bool isPlain(FieldKind kind, const CString& text);

/// The name that the class of configuration of an element has, unless the JSON says another.
CString usualClassName(const CString& elementName);

}  // namespace kpx::tool
