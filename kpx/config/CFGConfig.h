#pragma once

#include <cstdint>

#include "kpx/config/CDBObject.h"
#include "kpx/config/CFGClass.h"

namespace kpx {

/// The base of every configuration object. All settings are columns of its Class; subclasses add
/// typed accessors, the columns of a new object, and the order of presentation.
///
/// As XML: one element with one child "CFGClass". The element is named by Class.Name, with
/// "CFGConfig" before it where it does not begin so ("CFGConfig" alone if it is empty).
///
/// It reads itself from the document's current child element: in a loaded document that is the
/// root after `FindChildElem`.
///
/// Copies are deep and follow the rules of `CFGClass`.
///
/// Failures are reported as 42927 (GetElementName), 42885 (serializeXML), 42884 (loadByXML).
class KPX_API CFGConfig : public CDBObject {
 public:
  CFGConfig() = default;
  CFGConfig(const CFGConfig&) = default;
  CFGConfig(CFGConfig&&) noexcept = default;
  CFGConfig& operator=(const CFGConfig&) = default;
  ~CFGConfig() override = default;

  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;
  /// Puts the keys of the class into their order of presentation. Columns stay as they are.
  virtual void ResetPos();

  /// Adds a column with these values; Param3 and Param4 are 0, Param6 is 1. A failure is reported
  /// as 42886 and nothing is stored.
  void AddSetting(const CString& value, const CString& key, const CString& groupText,
                  std::int32_t type, const CString& caption, std::int32_t param1, std::int32_t prec,
                  std::int32_t param5);
  /// Adds a prepared column with `CFGClass::AddCol`. A failure is reported as 42887 and nothing
  /// is stored.
  void AddColumn(const CFGCol& column);

  CFGClass Class;
  CString Name;  // the configuration's name
  std::int32_t ClassID = 0;
};

}  // namespace kpx
