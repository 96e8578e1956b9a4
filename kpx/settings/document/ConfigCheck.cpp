#include "kpx/settings/document/ConfigCheck.h"

#include <algorithm>
#include <cmath>
#include <set>
#include <span>
#include <string_view>
#include <type_traits>
#include <utility>

#include "kpx/config/PersistentFields.h"
#include "kpx/settings/document/ConfigAttributes.h"
#include "kpx/settings/document/internal/DefaultColumns.h"
#include "kpx/text/NumberText.h"

namespace kpx {
namespace {

/// What the getter of a number makes of a text.
CString readAs(ValueKind kind, std::u16string_view text) {
  if (kind != ValueKind::real) return detail::longAsText(detail::textAsLong(text));
  const double value = detail::textAsDouble(text);
  // All digits, but as a person writes them where that is possible.
  const bool isUsual = value == 0 || (std::abs(value) >= 1e-6 && std::abs(value) < 1e9);
  CString number = detail::doubleAsText(value, isUsual ? 10 : -1, u'.');
  if (isUsual) number.TrimRight(u"0");
  number.TrimRight(u".");
  return number;
}

/// Collects the findings that are meant.
struct Findings {
  ProblemCollector<ConfigFinding> collector;
  bool (*isMeant)(FindingKind);
};

/// Looks at one configuration.
class Validator {
 public:
  Validator(const ConfigView& view, const ViewedConfiguration& configuration,
            detail::DefaultColumns& defaults, Findings& findings)
      : view_(view),
        configuration_(configuration),
        class_(configuration.settingsClass),
        className_(class_ ? class_->name : configuration.elementName),
        offset_(configuration.element.begin),
        defaults_(defaults),
        findings_(findings) {}

  void run() {
    if (!class_) {
      add(FindingKind::unknownClass, {}, {}, offset_);
    } else if (!configuration_.keyedClass.exists()) {
      // What stands in its place is told with it.
      add(FindingKind::missingClass, {}, {}, offset_);
      checkAttributes(configuration_.element, attributesOf<CFGConfig>, {});
    } else {
      checkSettings();
      checkMarkup();
    }
  }

 private:
  // --- settings -----------------------------------------------------------------------------

  void checkSettings() {
    std::set<CString> keys;
    for (const ConfigColumn& column : configuration_.columns) {
      const CString key = view_.keyOf(column);
      if (!keys.insert(key).second) {
        add(FindingKind::duplicateKey, key, view_.valueOf(column), column.column.begin);
      }
      checkSetting(column, key, view_.valueOf(column));
    }
    const CFGConfig* const object = defaults_.objectOf(*class_);
    if (!object) return;
    for (const auto& [key, column] : object->Class.Cols) {
      if (!keys.contains(key)) add(FindingKind::missingKey, key, {}, offset_);
    }
  }

  void checkSetting(const ConfigColumn& column, const CString& key, const CString& value) {
    const SettingAccess* const access = class_->findKey(key);
    if (!access) {
      add(FindingKind::unknownKey, key, value, column.column.begin);
      return;
    }
    const int offset = view_.attributeOffset(column.value, u"Value");
    if (offset < 0) {
      add(FindingKind::missingValue, key, {}, column.column.begin);
      return;
    }
    const SettingDef& definition = *access->setting;
    const ValueKind kind = definition.kind;
    const ValueCheck check = checkValueText(kind, value, definition.decimals);
    if (!check.valid()) {
      add(check.problem == ValueProblem::thousandsMark ? FindingKind::thousandsMark
                                                       : FindingKind::badValue,
          key, value, offset, check.problem,
          kind == ValueKind::text ? CString() : readAs(kind, value));
    } else if (value.FindOneOf(u"\r\n") >= 0) {
      add(FindingKind::lineBreak, key, value, offset);
    } else if (check.normal != value && !isDefault(key, value)) {
      CString both = readAs(kind, value);
      both += u" and written as ";
      both += check.normal;
      add(FindingKind::notAsWritten, key, value, offset, ValueProblem::none, both);
    }
  }

  /// Whether a new object carries the same text, which not every setter would write.
  bool isDefault(const CString& key, const CString& value) {
    const CFGCol* const column = defaults_.find(*class_, key);
    return column && column->Value.Value == value;
  }

  // --- markup -------------------------------------------------------------------------------

  void checkMarkup() {
    checkAttributes(configuration_.element, attributesOf<CFGConfig>, {});
    checkAttributes(configuration_.keyedClass, attributesOf<CFGClass>, {});
    checkName(configuration_.keyedClass);
    for (std::size_t i = 0; i < configuration_.ownColumns; ++i) {
      const ConfigColumn& column = configuration_.columns[i];
      const CString key = view_.keyOf(column);
      checkAttributes(column.column, attributesOf<CFGCol>, key);
      checkType(column.column, key);
      checkAttributes(column.value, attributesOf<CFGValue>, key);
    }
    for (const ForeignMarkup& each : configuration_.foreign) {
      add(FindingKind::foreignMarkup, {}, {}, each.offset, ValueProblem::none,
          [&] { return view_.describe(each); });
    }
  }

  /// Reading takes the name over, and saving makes the element's name from it.
  void checkName(const ConfigElement& element) {
    CFGConfig saved;
    if (!view_.attributesOf(element).read(u"Name", saved.Class.Name)) return;
    const CString renamed = saved.GetElementName();
    if (renamed == configuration_.elementName) return;
    add(FindingKind::renamingClass, {}, saved.Class.Name, element.begin, ValueProblem::none,
        renamed);
  }

  void checkType(const ConfigElement& element, const CString& key) {
    const CFGCol* const usual = defaults_.find(*class_, key);
    CString type;
    AttributeReader attributes = view_.attributesOf(element);
    if (!usual || !attributes.read(u"Type", type)) return;
    if (!checkValueText(ValueKind::integer, type).valid()) return;  // told as an attribute
    if (utlTextAsLong(type) == usual->Type) return;
    add(FindingKind::wrongType, key, type, element.begin + attributes.valueBegin(),
        ValueProblem::none, detail::longAsText(usual->Type));
  }

  void checkAttributes(const ConfigElement& element, std::span<const ElementAttribute> known,
                       const CString& key) {
    std::uint32_t seen = 0;
    for (AttributeReader attribute = view_.attributesOf(element); attribute.next();) {
      const int offset = element.begin + attribute.nameBegin();
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
    add(kind, key, value, offset, problem, [&] { return detail; });
  }
  /// `detail` is called only if the finding is kept.
  template <class Detail>
  requires std::is_invocable_r_v<CString, Detail>
  void add(FindingKind kind, const CString& key, const CString& value, int offset,
           ValueProblem problem, Detail detail) {
    if (findings_.isMeant && !findings_.isMeant(kind)) return;
    findings_.collector.add(static_cast<std::size_t>(offset), 0, [&] {
      return ConfigFinding{kind, className_, key, value, offset, problem, detail()};
    });
  }

  const ConfigView& view_;
  const ViewedConfiguration& configuration_;
  const SettingsClass* class_;
  const CString className_;
  const int offset_;
  detail::DefaultColumns& defaults_;
  Findings& findings_;
};

}  // namespace

Problems<ConfigFinding> validateConfigurations(const ConfigView& view,
                                               const ValidationOptions& options) {
  Findings findings{ProblemCollector<ConfigFinding>(options.limit), options.isMeant};
  detail::DefaultColumns defaults;
  for (const ViewedConfiguration& each : view.configurations()) {
    if (options.choice.includes(each)) Validator(view, each, defaults, findings).run();
  }
  return std::move(findings.collector).finish();
}

}  // namespace kpx
