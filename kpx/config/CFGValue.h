#pragma once

#include <cstdint>
#include <utility>

#include "kpx/config/CDBObject.h"

namespace kpx {

/// One stored value: always text, whatever its type. Element "CFGValue".
///
/// Failures are reported as 42922 (GetElementName), 42920 (serializeXML), 42919 (loadByXML).
class KPX_API CFGValue : public CDBObject {
 public:
  CFGValue() = default;
  explicit CFGValue(CString value) : Value(std::move(value)) {}

  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;

  CString Value;
  std::int32_t ColID = 0;  // the owning column
  std::int32_t RowID = 0;  // the owning row
  std::int32_t Data = 0;   // the owner's to use
};

}  // namespace kpx
