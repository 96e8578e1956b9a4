#pragma once

#include <cstdint>

#include "kpx/config/CDBObject.h"

namespace kpx {

/// A job within a project. Element "CJob".
///
/// Type and SystemID are codes of the programs that store jobs; nothing here looks into them.
/// Failures are reported as 43090 (GetElementName), 43088 (serializeXML), 43087 (loadByXML), 43091
/// (copying, which then gives an empty record).
class KPX_API CJob : public CDBObject {
 public:
  CJob() = default;
  CJob(const CJob& other);
  CJob(CJob&&) noexcept = default;
  CJob& operator=(const CJob&) = default;
  CJob& operator=(CJob&&) noexcept = default;

  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;

  CString Name;
  CString Description;
  std::int32_t Type = 0;
  std::int32_t SystemID = 0;
};

}  // namespace kpx
