#include <algorithm>
#include <cmath>
#include <set>
#include <span>
#include <string_view>

#include "kpx/settings/ConfigFile.h"
#include "kpx/settings/ConfigParts.h"
#include "kpx/settings/internal/DefaultColumns.h"
#include "kpx/text/NumberText.h"

namespace kpx {
namespace {

/// What the getter of a number makes of a text.
CString readAs(ValueKind kind, std::u16string_view text) {
  if (kind != ValueKind::real) return longAsText(textAsLong(text));
  const double value = textAsDouble(text);
  // All digits, but as a person writes them where that is possible.
  const bool isUsual = value == 0 || (std::abs(value) >= 1e-6 && std::abs(value) < 1e9);
  CString number = doubleAsText(value, isUsual ? 10 : -1, u'.');
  if (isUsual) number.TrimRight(u"0");
  number.TrimRight(u".");
  return number;
}

bool isMissing(const ConfigElement& element, std::u16string_view name) {
  AttributeReader attributes = element.attributes;
  return !attributes.find(name);
}

class Validator {
 public:
  Validator(const DocumentConfiguration& configuration, const ConfigParts& parts,
            detail::DefaultColumns& defaults, std::vector<ConfigFinding>& findings)
      : configuration_(configuration),
        parts_(parts),
        class_(configuration.settingsClass),
        className_(class_ ? CString(class_->name) : configuration.elementName),
        defaults_(defaults),
        findings_(findings) {}

  void run() {
    if (!class_) {
      add(FindingKind::unknownClass, {}, {}, configuration_.offset);
      return;
    }
    checkSettings();
    checkMarkup();
  }

 private:
  // --- settings -----------------------------------------------------------------------------

  void checkSettings() {
    if (!parts_.keyedClass) {
      add(FindingKind::missingClass, {}, {}, configuration_.offset);
      return;
    }
    std::set<std::u16string_view> keys;
    for (const DocumentSetting& setting : configuration_.settings) {
      if (!keys.insert(setting.key).second) {
        add(FindingKind::duplicateKey, setting.key, setting.value, setting.offset);
      }
      checkSetting(setting);
    }
    const CFGConfig* const object = defaults_.objectOf(*class_);
    if (!object) return;
    for (const auto& [key, column] : object->Class.Cols) {
      if (!keys.contains(key)) add(FindingKind::missingKey, key, {}, configuration_.offset);
    }
  }

  void checkSetting(const DocumentSetting& setting) {
    const SettingAccess* const access = class_->findKey(setting.key);
    if (!access) {
      add(FindingKind::unknownKey, setting.key, setting.value, setting.offset);
      return;
    }
    if (setting.valueOffset < 0) {
      add(FindingKind::missingValue, setting.key, {}, setting.offset);
      return;
    }
    const SettingDef& definition = *access->setting;
    const ValueKind kind = definition.kind;
    const ValueCheck check = checkValueText(kind, setting.value, definition.decimals);
    if (!check.valid()) {
      add(check.problem == ValueProblem::thousandsMark ? FindingKind::thousandsMark
                                                       : FindingKind::badValue,
          setting.key, setting.value, setting.valueOffset, check.problem,
          kind == ValueKind::text ? CString() : readAs(kind, setting.value));
    } else if (setting.value.FindOneOf(u"\r\n") >= 0) {
      add(FindingKind::lineBreak, setting.key, setting.value, setting.valueOffset);
    } else if (check.normal != setting.value && !isDefault(setting)) {
      CString both = readAs(kind, setting.value);
      both += u" and written as ";
      both += check.normal;
      add(FindingKind::notAsWritten, setting.key, setting.value, setting.valueOffset,
          ValueProblem::none, both);
    }
  }

  /// Whether a new object carries the same text, which not every setter would write.
  bool isDefault(const DocumentSetting& setting) {
    const CFGCol* const column = defaults_.find(*class_, setting.key);
    return column && column->Value.Value == setting.value;
  }

  // --- markup -------------------------------------------------------------------------------

  void checkMarkup() {
    checkAttributes(parts_.element, configurationAttributes, {});
    if (parts_.keyedClass) {
      checkAttributes(*parts_.keyedClass, keyedClassAttributes, {});
      checkName(*parts_.keyedClass);
    }
    for (const ConfigColumnParts& each : parts_.columns) {
      CString key;
      AttributeReader attributes = each.column.attributes;
      attributes.read(u"Name", key);
      checkAttributes(each.column, columnAttributes, key);
      checkType(each.column, key);
      if (each.value) checkAttributes(*each.value, valueAttributes, key);
    }
    if (!parts_.keyedClass) return;  // what stands in its place is told with it
    for (const ForeignMarkup& each : parts_.foreign) {
      add(FindingKind::foreignMarkup, {}, {}, each.offset, ValueProblem::none, each.what);
    }
  }

  /// Reading takes the name over, and saving makes the element's name from it.
  void checkName(const ConfigElement& element) {
    if (isMissing(element, u"Name")) return;
    CFGConfig saved;
    AttributeReader attributes = element.attributes;
    attributes.read(u"Name", saved.Class.Name);
    const CString renamed = saved.GetElementName();
    if (renamed == configuration_.elementName) return;
    add(FindingKind::renamingClass, {}, saved.Class.Name, element.offset, ValueProblem::none,
        renamed);
  }

  void checkType(const ConfigElement& element, const CString& key) {
    const CFGCol* const usual = defaults_.find(*class_, key);
    if (!usual || isMissing(element, u"Type")) return;
    CString type;
    AttributeReader attributes = element.attributes;
    attributes.read(u"Type", type);
    if (!checkValueText(ValueKind::integer, type).valid()) return;  // told as an attribute
    if (utlTextAsLong(type) == usual->Type) return;
    add(FindingKind::wrongType, key, type, element.offset + attributes.valueBegin(),
        ValueProblem::none, longAsText(usual->Type));
  }

  void checkAttributes(const ConfigElement& element, std::span<const ConfigAttribute> known,
                       const CString& key) {
    std::uint32_t seen = 0;
    AttributeReader attribute = element.attributes;
    for (attribute.rewind(); attribute.next();) {
      const int offset = element.offset + attribute.nameBegin();
      const auto found = std::ranges::find(known, attribute.name(), &ConfigAttribute::name);
      if (found == known.end()) {
        addAttribute(FindingKind::foreignAttribute, key, offset, attribute);
        continue;
      }
      const std::uint32_t bit = std::uint32_t{1} << (found - known.begin());
      if ((seen & bit) != 0) {
        addAttribute(FindingKind::repeatedAttribute, key, offset, attribute);
      } else if (!readsAs(found->kind, attribute.value())) {
        addAttribute(FindingKind::badAttribute, key, offset, attribute);
      }
      seen |= bit;
    }
  }

  static bool readsAs(AttributeKind kind, const CString& text) {
    if (kind == AttributeKind::integer) return checkValueText(ValueKind::integer, text).valid();
    return isAsWritten(kind, text);
  }

  void addAttribute(FindingKind kind, const CString& key, int offset,
                    const AttributeReader& attribute) {
    add(kind, key, attribute.value(), offset, ValueProblem::none, CString(attribute.name()));
  }

  void add(FindingKind kind, const CString& key, const CString& value, int offset,
           ValueProblem problem = ValueProblem::none, const CString& detail = {}) {
    findings_.push_back({kind, className_, key, value, offset, problem, detail});
  }

  const DocumentConfiguration& configuration_;
  const ConfigParts& parts_;
  const SettingsClass* class_;
  CString className_;
  detail::DefaultColumns& defaults_;
  std::vector<ConfigFinding>& findings_;
};

}  // namespace

std::vector<ConfigFinding> validateConfigurations(CMarkup& document, std::size_t enough) {
  std::vector<ConfigFinding> findings;
  detail::DefaultColumns defaults;
  const std::vector<DocumentConfiguration> configurations = findConfigurations(document);
  const std::vector<ConfigParts> parts = configPartsOf(document);
  for (std::size_t i = 0; i < configurations.size() && findings.size() < enough; ++i) {
    Validator(configurations[i], parts[i], defaults, findings).run();
  }
  std::ranges::stable_sort(findings, {}, &ConfigFinding::offset);
  return findings;
}

}  // namespace kpx
