#pragma once

#include <cstdint>

#include "kpx/config/CDBObject.h"

namespace kpx {

/// One command that a column offers. Element "CFGCommand".
///
/// Failures are reported as 42846 (GetElementName), 42848 (serializeXML), 42926 (loadByXML).
class KPX_API CFGCommand : public CDBObject {
 public:
  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;

  CString Caption;
  std::int32_t Command = 0;  // the command's number
  std::int32_t Pos = 0;      // its position in the list of commands
};

}  // namespace kpx
