#include <algorithm>
#include <initializer_list>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <vector>

#include "kpx/settings/document/ConfigAttributes.h"
#include "kpx/settings/document/ConfigCheck.h"
#include "kpx/text/NumberText.h"
#include "kpx/xml/Encoding.h"
#include "tools/kpx/ConfigJson.h"
#include "tools/kpx/ConfigJsonFields.h"
#include "tools/kpx/Exit.h"
#include "tools/kpx/StrictJson.h"

namespace kpx::tool {
namespace {

using Names = std::initializer_list<const char*>;

class Reader {
 public:
  Reader(std::string_view text, const std::string& source) : json_(text, source), source_(source) {}

  XmlFromJson convert() {
    const Json& root = json_.root();
    requireObject(root, "", {},
                  {"format", "version", "encoding", "byte_order_mark", "configurations", "after"});
    requireFormat(root);
    const MarkupEncoding encoding = encodingOf(root);
    const Json& configurations = member(root, "", "configurations");
    if (!configurations.is_array() || configurations.empty()) {
      json_.fail("/configurations", "must be a list of at least one configuration");
    }
    for (std::size_t i = 0; i < configurations.size(); ++i) {
      appendConfiguration(configurations[i], "/configurations/" + std::to_string(i), i == 0);
    }
    out_ += root.contains("after") ? textOf(root["after"], "/after").view() : usualLineEnd;
    CMarkup document = requireReadable();
    XmlFromJson result;
    noteValues(document, result);
    result.bytes = encoded(encoding);
    return result;
  }

 private:
  // --- the document -----------------------------------------------------------------------

  void requireFormat(const Json& root) {
    if (member(root, "", "format") != jsonFormatName) {
      json_.fail("/format", std::string("must be \"") + jsonFormatName + "\"");
    }
    if (member(root, "", "version") != jsonFormatVersion) {
      json_.fail("/version", "is " + root["version"].dump() + ", and only version " +
                                 std::to_string(jsonFormatVersion) + " can be read");
    }
  }

  MarkupEncoding encodingOf(const Json& root) {
    MarkupEncoding encoding;
    if (root.contains("encoding")) {
      const CString name = textOf(root["encoding"], "/encoding");
      encoding.codePage = encodingCodePage(name);
      if (encoding.codePage == 0) json_.fail("/encoding", "is not the name of a known encoding");
    }
    if (root.contains("byte_order_mark")) {
      const Json& mark = root["byte_order_mark"];
      if (!mark.is_boolean()) json_.fail("/byte_order_mark", "must be true or false");
      encoding.mark = mark.get<bool>();
    }
    return encoding;
  }

  void appendConfiguration(const Json& object, const std::string& at, bool isFirst) {
    requireObject(object, at, configurationFields,
                  {"class", "element", "before", "class_record", "settings"});
    const CString element = elementOf(object, at);
    out_ += object.contains("before") ? textOf(object["before"], at + "/before").view()
                                      : (isFirst ? usualDeclaration : usualLineEnd);
    elements_.push_back({element, static_cast<int>(out_.size())});
    appendTag(element, object, at, configurationFields, {});
    out_ += u">\r\n";
    const Json& settings = member(object, at, "settings");
    const std::string settingsAt = at + "/settings";
    if (!settings.is_array()) json_.fail(settingsAt, "must be a list of settings");
    static const Json nothing = Json::object();
    const Json& record = object.contains("class_record") ? object["class_record"] : nothing;
    if (record.is_null()) {
      if (!settings.empty()) {
        json_.fail(at + "/class_record", "cannot be null where there are settings");
      }
    } else {
      const std::string recordAt = at + "/class_record";
      requireObject(record, recordAt, classFields, {});
      appendTag(u"CFGClass", record, recordAt, classFields, usualClassName(element));
      out_ += u">\r\n";
      for (std::size_t i = 0; i < settings.size(); ++i) {
        appendColumn(settings[i], settingsAt + "/" + std::to_string(i));
      }
      out_ += u"</CFGClass>\r\n";
    }
    out_ += u"</";
    out_ += element.view();
    out_ += u'>';
  }

  /// The element of a configuration, which its class tells where the JSON does not.
  CString elementOf(const Json& object, const std::string& at) {
    const CString className = textOf(member(object, at, "class"), at + "/class");
    const SettingsClass* const known = findSettingsClass(className);
    if (known && !known->isConfiguration()) {
      json_.fail(at + "/class", "is the class of a row or table, no configuration");
    }
    CString usual = known ? CString(known->elementName) : className;
    if (!object.contains("element")) {
      if (usual.IsEmpty())
        json_.fail(at, "lacks the field 'element', which its class does not tell");
      requireElementName(usual, at + "/class");
      return usual;
    }
    CString element = textOf(object["element"], at + "/element");
    if (known && !usual.IsEmpty() && element != usual) {
      json_.fail(at + "/element", "does not belong to the class " + shownName(className) +
                                      ", which has " + shownName(usual));
    }
    requireElementName(element, at + "/element");
    return element;
  }

  void requireElementName(const CString& name, const std::string& at) {
    if (!name.StartsWith(u"CFGConfig")) {
      json_.fail(at, "is neither a known class nor an element that begins with CFGConfig");
    }
    if (CMarkup document; !document.AddElem(name)) json_.fail(at, "is no name of an XML element");
  }

  void appendColumn(const Json& setting, const std::string& at) {
    columns_.push_back({at, static_cast<int>(out_.size())});
    requireObject(setting, at, columnFields, {"value", "value_record"});
    const Json& value = member(setting, at, "value");
    appendTag(u"CFGCol", setting, at, columnFields, {});
    out_ += u">\r\n";
    static const Json nothing = Json::object();
    const Json& given = setting.contains("value_record") ? setting["value_record"] : nothing;
    const std::string recordAt = at + "/value_record";
    if (given.is_null()) {
      if (!value.is_null()) json_.fail(recordAt, "cannot be null where there is a value");
    } else {
      requireObject(given, recordAt, std::span(valueFields), {});
      if (given.contains("value"))
        json_.fail(recordAt + "/value", "belongs into the setting itself");
      Json record = given;
      record["value"] = value;
      valueAt_ = at + "/value";
      appendTag(u"CFGValue", record, recordAt, valueFields, {});
      out_ += u"/>\r\n";
    }
    out_ += u"</CFGCol>\r\n";
  }

  /// A start tag up to its end; `usualName` is the attribute "Name" where the JSON leaves it out.
  void appendTag(const CString& name, const Json& object, const std::string& at,
                 std::span<const JsonField> fields, const CString& usualName) {
    out_ += u'<';
    out_ += name.view();
    for (const JsonField& field : fields) {
      std::optional<CString> text;
      if (field.always || object.contains(field.name())) {
        const Json& node = member(object, at, field.name());
        // The value of a setting stands beside its record.
        const bool isValue = field.attribute == u"Value";
        text = attributeOf(node, field.kind, isValue ? valueAt_ : at + "/" + field.name());
      } else {
        text = field.attribute == u"Name" ? usualName : CString(neutralText(field.kind));
      }
      if (!text) continue;
      out_ += u' ';
      out_ += field.attribute;
      out_ += u"=\"";
      out_ += CMarkup::EscapeText(*text, MarkupFlag::attributeValue).view();
      out_ += u'"';
    }
  }

  // --- values -----------------------------------------------------------------------------

  /// The text of an attribute; nothing if the element is to lack it.
  std::optional<CString> attributeOf(const Json& node, FieldKind kind, const std::string& at) {
    if (node.is_null()) return std::nullopt;
    if (node.is_object() && node.contains("text")) {
      requireObject(node, at, {}, {"text"});
      return textOf(node["text"], at + "/text");
    }
    if (kind == FieldKind::integer) return integerText(node, at);
    CString text = textOf(node, at);
    if (kind == FieldKind::time && !isAsWritten(kind, text)) {
      json_.fail(at, "must be a time like \"05.03.2021-08:33:34\"");
    }
    return text;
  }

  CString integerText(const Json& node, const std::string& at) {
    if (!node.is_number()) json_.fail(at, "must be a whole number, without quotes");
    constexpr std::int64_t least = std::numeric_limits<std::int32_t>::min();
    constexpr std::int64_t most = std::numeric_limits<std::int32_t>::max();
    if (node.is_number_float() && node.get<double>() >= least && node.get<double>() <= most) {
      json_.fail(at, "must be a whole number");
    }
    if (node.is_number_float() ||
        (node.is_number_unsigned() && node.get<std::uint64_t>() > std::uint64_t{most}) ||
        node.get<std::int64_t>() < least) {
      json_.fail(at, "is beyond the 32-bit range, -2147483648 to 2147483647");
    }
    return utlLongAsText(node.get<std::int32_t>());
  }

  CString textOf(const Json& node, const std::string& at) {
    CString text;
    if (node.is_string()) {
      text = CString::fromUtf8(node.get_ref<const std::string&>());
    } else if (node.is_object() && node.contains("utf16")) {
      requireObject(node, at, {}, {"utf16"});
      text = unitsOf(node["utf16"], at + "/utf16");
    } else if (node.is_number() || node.is_boolean()) {
      json_.fail(
          at, "must be a text; it is stored as one, so put it in quotes: \"" + node.dump() + "\"");
    } else {
      json_.fail(at, "must be a text in quotes");
    }
    // Half a surrogate pair stays: files in UTF-16 carry it.
    const auto isForbidden = [](char16_t unit) {
      return (unit < 0x20 && unit != u'\t' && unit != u'\n' && unit != u'\r') || unit >= 0xFFFE;
    };
    const auto found = std::ranges::find_if(text, isForbidden);
    if (found != text.end()) {
      CString name;
      name.Format(u"holds the character U+%04X, which XML cannot carry",
                  static_cast<unsigned>(*found));
      json_.fail(at, asUtf8(name));
    }
    return text;
  }

  CString unitsOf(const Json& node, const std::string& at) {
    if (!node.is_string()) json_.fail(at, "must be hexadecimal numbers of UTF-16 units in quotes");
    CString text;
    unsigned unit = 0;
    int digits = 0;
    for (const char each : node.get_ref<const std::string&>() + " ") {
      const std::string_view hex = "0123456789abcdefABCDEF";
      const std::size_t digit = hex.find(each);
      if (digit != hex.npos && digits < 4) {
        unit = unit * 16 + static_cast<unsigned>(digit < 16 ? digit : digit - 6);
        ++digits;
      } else if (each == ' ') {
        if (digits > 0) text += static_cast<char16_t>(unit);
        unit = 0;
        digits = 0;
      } else {
        json_.fail(at, "must be hexadecimal numbers of UTF-16 units, with blanks between them");
      }
    }
    return text;
  }

  // --- objects ----------------------------------------------------------------------------

  const Json& member(const Json& object, const std::string& at, const char* name) {
    const auto found = object.find(name);
    if (found == object.end()) json_.fail(at, std::string("lacks the field '") + name + "'");
    return *found;
  }

  void requireObject(const Json& node, const std::string& at, std::span<const JsonField> fields,
                     Names others) {
    if (!node.is_object()) json_.fail(at, "must be an object in braces");
    for (auto each = node.begin(); each != node.end(); ++each) {
      const auto isName = [&](const char* name) { return each.key() == name; };
      if (std::ranges::any_of(others, isName) ||
          std::ranges::any_of(fields, isName, &JsonField::name)) {
        continue;
      }
      json_.fail(at + "/" + each.key(), "is no field that is known here");
    }
  }

  // --- the result -------------------------------------------------------------------------

  /// What stands around the configurations is markup, and so must fit them.
  CMarkup requireReadable() {
    CMarkup document;
    document.SetDoc(CString(out_));
    const ConfigView view(document);
    const auto isSame = [](const ViewedConfiguration& a, const PlacedElement& b) {
      return a.elementName == b.name.view() && a.element.begin == b.offset;
    };
    const bool found = std::ranges::equal(view.configurations(), elements_, isSame);
    if (found && document.IsWellFormed()) return document;
    throw Failure(Exit::input,
                  source_ + (elements_.size() > 1
                                 ? ": several configurations need one XML element around them, "
                                   "which \"before\" of the first opens and \"after\" closes"
                                 : ": what stands in \"before\" and \"after\" does not make a "
                                   "well-formed document around the configuration"));
  }

  /// Values are converted as they are; what a person may have mistyped is told.
  void noteValues(CMarkup& document, XmlFromJson& result) {
    constexpr std::size_t mostNotes = 5;
    const Problems<ConfigFinding> findings =
        validateConfigurations(ConfigView(document), {{}, mostNotes, &isTypingError});
    result.noteCount = findings.count;
    for (const ConfigFinding& finding : findings) {
      const auto behind =
          std::ranges::upper_bound(columns_, finding.offset, {}, &PlacedColumn::offset);
      const std::string& at = std::prev(behind)->pointer;
      const bool isKey =
          finding.kind == FindingKind::unknownKey || finding.kind == FindingKind::duplicateKey;
      result.notes.push_back(
          json_.located(at + (isKey ? "/key" : "/value"), shownName(finding.className) + "." +
                                                              shownName(finding.key) + " " +
                                                              asUtf8(describe(finding))));
    }
  }

  static bool isTypingError(FindingKind kind) {
    switch (kind) {
      case FindingKind::unknownKey:
      case FindingKind::duplicateKey:
      case FindingKind::missingValue:
      case FindingKind::badValue:
      case FindingKind::thousandsMark:
      case FindingKind::notAsWritten:
        return true;
      default:
        return false;
    }
  }

  std::string encoded(MarkupEncoding encoding) {
    EncodedText result = encodeMarkupText(out_, encoding);
    const std::string name = asUtf8(encodingName(encoding.codePage));
    if (!result.usable || result.losses > 0) {
      throw Failure(Exit::input,
                    source_ + ": holds characters that the encoding " + name + " cannot carry");
    }
    const DecodedText again = decodeMarkupBytes(result.bytes);
    // With references in it, the text is another one that means the same.
    const bool sameEncoding = result.references > 0 && again.codePage == encoding.codePage;
    if (!sameEncoding && again.text != CString(out_)) {
      throw Failure(Exit::input, source_ + ": the XML would not be read in the encoding " + name +
                                     " again; its declaration in \"before\" must name it");
    }
    return std::move(result.bytes);
  }

  struct PlacedElement {
    CString name;
    int offset = 0;
  };

  struct PlacedColumn {
    std::string pointer;
    int offset = 0;
  };

  StrictJson json_;
  const std::string& source_;
  std::u16string out_;
  std::vector<PlacedElement> elements_;
  std::vector<PlacedColumn> columns_;
  std::string valueAt_;  // where the value stands whose record is being written
};

}  // namespace

XmlFromJson xmlFromJson(std::string_view json, const std::string& source) {
  return Reader(json, source).convert();
}

}  // namespace kpx::tool
