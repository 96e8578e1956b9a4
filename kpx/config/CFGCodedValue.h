#pragma once

#include <cstdint>

#include "kpx/config/CDBObject.h"

namespace kpx {

/// One coded value that a column allows. Element "CFGCodedValue".
///
/// Failures are reported as 42838 (GetElementName), 42840 (serializeXML), 42841 (loadByXML).
class KPX_API CFGCodedValue : public CDBObject {
 public:
  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;

  std::int32_t ColID = 0;  // the owning column
  CString Value;
  std::int32_t Data = 0;  // the code
};

}  // namespace kpx
