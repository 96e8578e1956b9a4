#pragma once

#include <string_view>

#include "kpx/settings/Catalogue.h"
#include "kpx/settings/ConfigFile.h"
#include "kpx/xml/CMarkup.h"

namespace kpx::detail {

/// The value of an attribute; empty if there is none. Throws where a document would report.
inline CString valueOf(AttributeReader attributes, std::u16string_view name) {
  CString value;
  attributes.read(name, value);
  return value;
}

/// Whether the document's main element is a configuration.
inline bool isConfiguration(CMarkup& document) {
  const std::u16string_view name = document.ReadTagName();
  if (!name.starts_with(u"CFGConfig")) return false;
  if (findSettingsClassByElement(name)) return true;
  document.ResetChildPos();
  return document.FindChildElem(u"CFGClass");
}

/// The column at the main element, with its value at the child if it has one.
inline DocumentSetting settingAt(const CMarkup& document, bool hasValue) {
  DocumentSetting setting;
  int end = 0;
  document.GetOffsets(setting.offset, end);
  setting.key = valueOf(document.ReadAttribs(), u"Name");
  AttributeReader value = hasValue ? document.ReadChildAttribs() : AttributeReader();
  if (value.read(u"Value", setting.value)) {
    int begin = 0;
    document.GetChildOffsets(begin, end);
    setting.valueOffset = begin + value.valueBegin();
  }
  return setting;
}

/// Calls `visit` with each configuration of the document as its main element, until it answers
/// false. It leaves the main element as it was.
template <class Visit>
void visitConfigurations(CMarkup& document, Visit visit) {
  int depth = 0;
  document.ResetPos();
  for (;;) {
    if (document.FindElem()) {
      if (isConfiguration(document)) {
        if (!visit()) return;
      } else {
        document.ResetChildPos();
        document.IntoElem();
        ++depth;
      }
    } else if (depth > 0) {
      document.OutOfElem();
      --depth;
    } else {
      return;
    }
  }
}

/// Calls `visit` with each column of the configuration at the main element as the main element,
/// and its value, if there is one, as the child, until it answers false; then the document stays
/// there.
template <class Visit>
void visitColumns(CMarkup& document, Visit visit) {
  document.ResetChildPos();
  while (document.FindChildElem(u"CFGClass")) {
    document.IntoElem();
    document.ResetChildPos();
    while (document.FindChildElem(u"CFGCol")) {
      document.IntoElem();
      document.ResetChildPos();
      const bool hasValue = document.FindChildElem(u"CFGValue");
      if (!visit(hasValue)) return;
      document.OutOfElem();
    }
    document.OutOfElem();
  }
}

}  // namespace kpx::detail
