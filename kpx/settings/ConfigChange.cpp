#include <algorithm>
#include <utility>

#include "kpx/report/Error.h"
#include "kpx/settings/ConfigFile.h"
#include "kpx/settings/internal/ConfigWalk.h"
#include "kpx/settings/internal/DefaultColumns.h"

namespace kpx {
namespace {

/// What a key means in a document.
struct Candidates {
  int configurations = 0;
  int known = 0;         // configurations of known classes
  int knowTheKey = 0;    // of them, those whose class knows the key
  int columns = 0;       // their columns with this key and a value
  int emptyColumns = 0;  // those without one
  int number = 0;        // the configuration of the last column; without one, that knows the key
  const SettingsClass* settingsClass = nullptr;  // its class
  const SettingAccess* access = nullptr;
};

Candidates lookFor(const std::vector<DocumentConfiguration>& configurations,
                   const ConfigurationChoice& choice, const CString& key) {
  Candidates found;
  for (const DocumentConfiguration& configuration : configurations) {
    if (!choice.includes(configuration)) continue;
    ++found.configurations;
    if (!configuration.settingsClass) continue;
    ++found.known;
    const SettingAccess* const access = configuration.settingsClass->findKey(key);
    if (!access) continue;
    ++found.knowTheKey;
    const auto take = [&] {
      found.number = configuration.number;
      found.settingsClass = configuration.settingsClass;
      found.access = access;
    };
    if (found.columns + found.emptyColumns == 0) take();
    for (const DocumentSetting& setting : configuration.settings) {
      if (setting.key != key) continue;
      if (setting.valueOffset < 0) {
        ++found.emptyColumns;
        if (found.columns == 0) take();
      } else {
        ++found.columns;
        take();
      }
    }
  }
  return found;
}

/// Moves the document to the configuration of this number as its main element.
void goTo(CMarkup& document, int number) {
  int passed = 0;
  detail::visitConfigurations(document, [&] { return ++passed != number; });
}

EditOutcome changeAt(CMarkup& document, const CString& key, EditResult& result) {
  goTo(document, result.number);
  detail::visitColumns(document, [&](bool hasValue) {
    return !(hasValue && detail::valueOf(document.ReadAttribs(), u"Name") == key &&
             document.HasChildAttrib(u"Value"));
  });
  result.oldValue = detail::valueOf(document.ReadChildAttribs(), u"Value");
  if (result.oldValue == result.newValue) return EditOutcome::unchanged;
  return document.SetChildAttrib(u"Value", result.newValue) ? EditOutcome::changed
                                                            : EditOutcome::refused;
}

/// Gives the column of the key that lacks a value one.
EditOutcome giveValue(CMarkup& document, const CString& key, const EditResult& result) {
  goTo(document, result.number);
  bool hasElement = false;
  detail::visitColumns(document, [&](bool hasValue) {
    hasElement = hasValue;
    return !(detail::valueOf(document.ReadAttribs(), u"Name") == key &&
             !(hasValue && document.HasChildAttrib(u"Value")));
  });
  if (hasElement) {
    return document.SetChildAttrib(u"Value", result.newValue) ? EditOutcome::added
                                                              : EditOutcome::refused;
  }
  CFGValue value;
  value.Value = result.newValue;
  document.IntoElem();
  return value.serializeXML(&document) == 1 ? EditOutcome::added : EditOutcome::refused;
}

EditOutcome addColumn(CMarkup& document, const SettingsClass& settingsClass, const CString& key,
                      const EditResult& result) {
  detail::DefaultColumns columns;
  const CFGCol* const usual = columns.find(settingsClass, key);
  if (!usual) return EditOutcome::notInFile;
  CFGCol column = *usual;
  column.Value.Value = result.newValue;
  goTo(document, result.number);
  document.ResetChildPos();
  if (!document.FindChildElem(u"CFGClass")) return EditOutcome::refused;
  document.IntoElem();
  document.ResetChildPos();
  document.IntoElem();
  return column.serializeXML(&document) == 1 ? EditOutcome::added : EditOutcome::refused;
}

EditOutcome addTo(CMarkup& document, const Candidates& found, const CString& key,
                  const EditResult& result) {
  return found.emptyColumns > 0 ? giveValue(document, key, result)
                                : addColumn(document, *found.settingsClass, key, result);
}

EditOutcome outcomeBefore(const Candidates& found, MissingKey missingKey) {
  if (found.configurations == 0) return EditOutcome::noConfiguration;
  if (found.known == 0) return EditOutcome::unknownClass;
  if (found.knowTheKey == 0) return EditOutcome::unknownKey;
  if (found.columns > 1) return EditOutcome::severalCandidates;
  if (found.columns == 1) return EditOutcome::changed;
  if (missingKey == MissingKey::refuse) return EditOutcome::notInFile;
  if (found.emptyColumns > 0) {
    return found.emptyColumns == 1 ? EditOutcome::added : EditOutcome::severalCandidates;
  }
  return found.knowTheKey == 1 ? EditOutcome::added : EditOutcome::severalCandidates;
}

}  // namespace

bool addConfiguration(CMarkup& document, const CFGConfig& config) {
  const GuardWatch watch;
  document.ResetPos();
  bool added = true;
  if (document.FindElem()) {
    added = !detail::isConfiguration(document);
    document.ResetChildPos();
    document.IntoElem();
  }
  added = added && config.serializeXML(&document) == 1;
  document.ResetPos();
  if (!added) watch.passOn();
  return added;
}

EditResult setValueInDocument(CMarkup& document, const ConfigurationChoice& choice,
                              const CString& key, const CString& text, MissingKey missingKey) {
  const GuardWatch watch;
  EditResult result{};
  const Candidates found = lookFor(findConfigurations(document), choice, key);
  result.outcome = outcomeBefore(found, missingKey);
  result.number = found.number;
  const bool isMeant =
      result.outcome == EditOutcome::changed || result.outcome == EditOutcome::added;
  if (isMeant && found.access) {  // there is one whenever the key is known
    const SettingDef& setting = *found.access->setting;
    result.check = checkValueText(setting.kind, text, setting.decimals);
    result.newValue = result.check.normal;
    if (!result.check.valid()) {
      result.outcome = EditOutcome::badValue;
    } else if (result.outcome == EditOutcome::changed) {
      result.outcome = changeAt(document, key, result);
    } else {
      result.outcome = addTo(document, found, key, result);
    }
  }
  document.ResetPos();
  watch.passOn();
  return result;
}

const char* describe(EditOutcome outcome) noexcept {
  switch (outcome) {
    case EditOutcome::changed:
      return "was changed";
    case EditOutcome::added:
      return "was added";
    case EditOutcome::unchanged:
      return "has this value already";
    case EditOutcome::noConfiguration:
      return "is in no configuration of this document";
    case EditOutcome::unknownClass:
      return "belongs to a configuration of an unknown class";
    case EditOutcome::unknownKey:
      return "is not known to this class";
    case EditOutcome::notInFile:
      return "has no value in this document";
    case EditOutcome::severalCandidates:
      return "stands in this document more than once";
    case EditOutcome::badValue:
      return "does not take this value";
    case EditOutcome::refused:
      return "could not be changed in this document";
  }
  return "was not changed";
}

}  // namespace kpx
