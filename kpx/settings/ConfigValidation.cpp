#include <algorithm>
#include <cmath>
#include <set>
#include <span>
#include <string_view>
#include <utility>

#include "kpx/config/PersistentFields.h"
#include "kpx/settings/ConfigFile.h"
#include "kpx/settings/ConfigParts.h"
#include "kpx/settings/internal/ConfigPartsWalk.h"
#include "kpx/settings/internal/ConfigWalk.h"
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

/// Collects the findings that are meant.
struct Findings {
  ProblemCollector<ConfigFinding> collector;
  bool (*isMeant)(FindingKind);
};

/// Looks at the configuration that is the document's main element.
class Validator {
 public:
  Validator(CMarkup& document, detail::DefaultColumns& defaults, Findings& findings)
      : document_(document),
        elementName_(document.ReadTagName()),
        class_(findSettingsClassByElement(elementName_)),
        className_(class_ ? CString(class_->name) : elementName_),
        defaults_(defaults),
        findings_(findings) {
    int end = 0;
    document_.GetOffsets(offset_, end);
  }

  void run() {
    if (!class_) {
      add(FindingKind::unknownClass, {}, {}, offset_);
      return;
    }
    document_.ResetChildPos();
    hasClass_ = document_.FindChildElem(u"CFGClass");
    checkSettings();
    detail::ConfigPartsWalk(document_, *this).run();
  }

  // --- markup: the parts one by one -----------------------------------------------------------

  void configuration(const ConfigElement& element) {
    checkAttributes(element, attributesOf<CFGConfig>, {});
  }
  void keyedClass(const ConfigElement& element) {
    checkAttributes(element, attributesOf<CFGClass>, {});
    checkName(element);
  }
  void column(const ConfigColumnParts& column) {
    CString key;
    AttributeReader attributes = column.column.attributes;
    attributes.read(u"Name", key);
    checkAttributes(column.column, attributesOf<CFGCol>, key);
    checkType(column.column, key);
    if (column.value) checkAttributes(*column.value, attributesOf<CFGValue>, key);
  }
  template <class Name>
  void foreign(int offset, Name name) {
    if (!hasClass_) return;  // what stands in its place is told with it
    add(FindingKind::foreignMarkup, {}, {}, offset, ValueProblem::none, name());
  }

 private:
  // --- settings -----------------------------------------------------------------------------

  void checkSettings() {
    if (!hasClass_) {
      add(FindingKind::missingClass, {}, {}, offset_);
      return;
    }
    std::set<CString> keys;
    detail::visitColumns(document_, [&](bool hasValue) {
      const DocumentSetting setting = detail::settingAt(document_, hasValue);
      if (!keys.insert(setting.key).second) {
        add(FindingKind::duplicateKey, setting.key, setting.value, setting.offset);
      }
      checkSetting(setting);
      return true;
    });
    const CFGConfig* const object = defaults_.objectOf(*class_);
    if (!object) return;
    for (const auto& [key, column] : object->Class.Cols) {
      if (!keys.contains(key)) add(FindingKind::missingKey, key, {}, offset_);
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

  /// Reading takes the name over, and saving makes the element's name from it.
  void checkName(const ConfigElement& element) {
    if (isMissing(element, u"Name")) return;
    CFGConfig saved;
    AttributeReader attributes = element.attributes;
    attributes.read(u"Name", saved.Class.Name);
    const CString renamed = saved.GetElementName();
    if (renamed == elementName_) return;
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

  void checkAttributes(const ConfigElement& element, std::span<const ElementAttribute> known,
                       const CString& key) {
    std::uint32_t seen = 0;
    AttributeReader attribute = element.attributes;
    for (attribute.rewind(); attribute.next();) {
      const int offset = element.offset + attribute.nameBegin();
      const auto found = std::ranges::find(known, attribute.name(), &ElementAttribute::name);
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
    if (findings_.isMeant && !findings_.isMeant(kind)) return;
    findings_.collector.add(static_cast<std::size_t>(offset), 0, [&] {
      return ConfigFinding{kind, className_, key, value, offset, problem, detail};
    });
  }

  CMarkup& document_;
  CString elementName_;
  const SettingsClass* class_;
  CString className_;
  int offset_ = 0;
  bool hasClass_ = false;
  detail::DefaultColumns& defaults_;
  Findings& findings_;
};

}  // namespace

Problems<ConfigFinding> validateConfigurations(CMarkup& document,
                                               const ValidationOptions& options) {
  Findings findings{ProblemCollector<ConfigFinding>(options.limit), options.isMeant};
  detail::DefaultColumns defaults;
  DocumentConfiguration each;
  detail::visitConfigurations(document, [&] {
    ++each.number;
    each.elementName = document.ReadTagName();
    each.settingsClass = findSettingsClassByElement(each.elementName);
    if (options.choice.includes(each)) Validator(document, defaults, findings).run();
    return true;
  });
  document.ResetPos();
  return std::move(findings.collector).finish();
}

}  // namespace kpx
