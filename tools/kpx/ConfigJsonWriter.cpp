#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <optional>
#include <span>
#include <vector>

#include "kpx/settings/document/ConfigAttributes.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/Utf.h"
#include "tools/kpx/ConfigJson.h"
#include "tools/kpx/ConfigJsonFields.h"
#include "tools/kpx/Exit.h"

namespace kpx::tool {

std::u16string_view neutralText(FieldKind kind) noexcept {
  switch (kind) {
    case FieldKind::integer:
      return u"0";
    case FieldKind::time:
      return zeroTimeText;
    case FieldKind::text:
      break;
  }
  return {};
}

CString usualClassName(const CString& elementName) {
  constexpr std::u16string_view prefix = u"CFGConfig";
  const CString rest = elementName.Mid(static_cast<int>(prefix.size()));
  return rest.StartsWith(u"CFG") ? rest : elementName;
}

namespace {

bool hasLoneSurrogate(std::u16string_view text) {
  for (std::size_t i = 0; i < text.size();) {
    const char32_t code = nextCodePoint(text, i);
    if (code >= 0xD800 && code <= 0xDFFF) return true;
  }
  return false;
}

Json jsonOfText(const CString& text) {
  if (!hasLoneSurrogate(text)) return text.utf8();
  CString units;
  for (const char16_t unit : text) {
    units.AppendFormat(units.IsEmpty() ? u"%x" : u" %x", static_cast<unsigned>(unit));
  }
  return {{"utf16", units.utf8()}};
}

Json jsonOfAttribute(FieldKind kind, const CString& text) {
  if (!isAsWritten(kind, text)) return {{"text", jsonOfText(text)}};
  return kind == FieldKind::integer ? Json(utlTextAsLong(text)) : jsonOfText(text);
}

/// One object on one line, with blanks as a person sets them.
void appendOneLine(std::string& out, const Json& json) {
  if (!json.is_object()) {
    out += json.dump();
    return;
  }
  out += '{';
  for (auto member = json.begin(); member != json.end(); ++member) {
    if (member != json.begin()) out += ", ";
    out += Json(member.key()).dump() + ": ";
    appendOneLine(out, member.value());
  }
  out += '}';
}

class Writer {
 public:
  explicit Writer(const Configurations& configurations)
      : configurations_(configurations), view_(configurations.view()) {}

  std::string write() {
    out_ = "{\n";
    appendHead();
    out_ += "  \"configurations\": [";
    auto selected = configurations_.list.begin();
    std::u16string before;
    int end = 0;
    for (const ViewedConfiguration& each : view_.configurations()) {
      const bool skipped = selected == configurations_.list.end() || *selected != &each;
      appendAround(before, end, each.element.begin, skipped);
      end = each.element.end;
      if (skipped) continue;
      if (selected != configurations_.list.begin()) out_ += ',';
      appendConfiguration(each, before, selected == configurations_.list.begin());
      before.clear();
      ++selected;
    }
    out_ += "\n  ]";
    appendAround(before, end, configurations_.document.text().GetLength(), false);
    if (before != usualLineEnd) {
      out_ += ",\n  \"after\": ";
      appendOneLine(out_, jsonOfText(before));
    }
    return out_ += "\n}\n";
  }

 private:
  void appendHead() {
    out_ += "  \"format\": \"";
    out_ += jsonFormatName;
    out_ += "\",\n  \"version\": ";
    out_ += std::to_string(jsonFormatVersion);
    out_ += ",\n";
    const MarkupEncoding& storage = configurations_.document.storage();
    if (storage.codePage != CodePage::utf8) {
      out_ += "  \"encoding\": " + Json(configurations_.encoding()).dump() + ",\n";
    }
    if (storage.mark) out_ += "  \"byte_order_mark\": true,\n";
  }

  /// Keeps what stands between two configurations; where one is left out, not the line end
  /// before it.
  void appendAround(std::u16string& around, int begin, int end, bool skipped) {
    const std::u16string_view text =
        view_.text().substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
    const bool blank = text.find_first_not_of(u" \t\r\n") == text.npos;
    if (!(skipped && blank)) around += text;
  }

  void appendConfiguration(const ViewedConfiguration& parts, std::u16string_view before,
                           bool isFirst) {
    if (!parts.foreign.empty()) {
      refuse(parts.foreign[0].offset, asUtf8(view_.describe(parts.foreign[0])));
    }
    Json head{{"class", nameOf(parts)}, {"element", asUtf8(parts.elementName)}};
    if (before != (isFirst ? usualDeclaration : usualLineEnd)) {
      head["before"] = jsonOfText(CString(before));
    }
    addFields(head, configurationFields, parts.element, u"");
    Json classRecord = nullptr;
    if (parts.keyedClass.exists()) {
      classRecord = Json::object();
      addFields(classRecord, classFields, parts.keyedClass, usualClassName(parts.elementName));
    }
    if (!parts.keyedClass.exists() || !classRecord.empty())
      head["class_record"] = std::move(classRecord);

    out_ += "\n    {";
    for (auto member = head.begin(); member != head.end(); ++member) {
      out_ += "\n      " + Json(member.key()).dump() + ": ";
      appendOneLine(out_, member.value());
      out_ += ',';
    }
    out_ += "\n      \"settings\": [";
    for (const ConfigColumn& column : parts.columns) {
      if (&column != parts.columns.data()) out_ += ',';
      out_ += "\n        ";
      appendOneLine(out_, jsonOfColumn(column));
    }
    out_ += parts.columns.empty() ? "]\n    }" : "\n      ]\n    }";
  }

  Json jsonOfColumn(const ConfigColumn& parts) {
    // Key and value first: they are what a person looks for.
    Json column{{"key", nullptr}, {"value", nullptr}};
    Json valueRecord = nullptr;
    if (parts.value.exists()) {
      valueRecord = Json::object();
      addFields(valueRecord, valueFields, parts.value, {});
      column["value"] = std::move(valueRecord["value"]);
      valueRecord.erase("value");
    }
    for (const char* const shownEarly : {"type", "caption", "category"}) column[shownEarly] = "";
    addFields(column, columnFields, parts.column, {});
    for (const char* const optional : {"caption", "category"}) {
      if (column[optional] == Json("")) column.erase(optional);
    }
    if (!parts.value.exists() || !valueRecord.empty())
      column["value_record"] = std::move(valueRecord);
    return column;
  }

  /// Adds the attributes of an element, without those that say nothing; `usualName` is what the
  /// attribute "Name" of a class need not say.
  void addFields(Json& object, std::span<const JsonField> fields, const ConfigElement& element,
                 const CString& usualName) {
    constexpr std::size_t most = std::size(columnFields);
    std::array<std::optional<CString>, most> texts;
    for (AttributeReader attribute = view_.attributesOf(element); attribute.next();) {
      const auto field = std::ranges::find(fields, attribute.name(), &JsonField::attribute);
      if (field == fields.end()) {
        refuse(element.begin, "the attribute '" + shownName(CString(attribute.name())) + "'");
      }
      std::optional<CString>& text = texts[static_cast<std::size_t>(field - fields.begin())];
      if (text) {
        refuse(element.begin, "a second attribute '" + shownName(CString(attribute.name())) + "'");
      }
      text = attribute.value();
    }
    for (std::size_t i = 0; i < fields.size(); ++i) {
      const JsonField& field = fields[i];
      const std::optional<CString>& text = texts[i];
      const std::u16string_view usual =
          field.attribute == u"Name" ? usualName.view() : neutralText(field.kind);
      if (!text) {
        object[field.name()] = nullptr;
      } else if (field.always || *text != usual) {
        object[field.name()] = jsonOfAttribute(field.kind, *text);
      }
    }
  }

  [[noreturn]] void refuse(int offset, const std::string& what) {
    const auto [line, column] = PlaceCounter(view_.text()).at(offset);
    throw Failure(Exit::input,
                  placeOf(configurations_.source,
                          {line, column,
                           what + " inside a configuration cannot be kept, so this file is not "
                                  "converted; CSV and INI leave it out"}));
  }

  const Configurations& configurations_;
  const ConfigView& view_;
  std::string out_;
};

}  // namespace

std::string jsonOf(const Configurations& configurations) { return Writer(configurations).write(); }

}  // namespace kpx::tool
