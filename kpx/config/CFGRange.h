#pragma once

#include <cstdint>

#include "kpx/config/CDBObject.h"

namespace kpx {

/// One range of values that a column allows; its bounds are texts, as values are. Element
/// "CFGRange".
///
/// Failures are reported as 42830 (GetElementName), 42832 (serializeXML), 42833 (loadByXML).
class KPX_API CFGRange : public CDBObject {
 public:
  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;

  std::int32_t ColID = 0;  // the owning column
  CString RangeFrom;
  CString RangeTo;
};

}  // namespace kpx
