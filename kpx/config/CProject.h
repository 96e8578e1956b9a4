#pragma once

#include <cstdint>

#include "kpx/config/CDBObject.h"

namespace kpx {

/// A surveying project and its database. Element "CProject".
///
/// Status and DBType are codes of the programs that store projects; nothing here looks into them.
/// Failures are reported as 43211 (GetElementName), 43213 (serializeXML), 43214 (loadByXML), 43210
/// (copying, which then gives an empty record).
class KPX_API CProject : public CDBObject {
 public:
  CProject() = default;
  CProject(const CProject& other);
  CProject(CProject&&) noexcept = default;
  CProject& operator=(const CProject&) = default;
  CProject& operator=(CProject&&) noexcept = default;

  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;

  CString Name;
  CString Description;
  std::int32_t Status = 0;
  CString Path;  // the folder of the project
  CString Text;
  CString DBName;
  std::int32_t DBType = 0;
};

}  // namespace kpx
