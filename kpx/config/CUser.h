#pragma once

#include <cstdint>

#include "kpx/config/CDBObject.h"

namespace kpx {

/// A user account. Element "CUser".
///
/// Type is a code of the programs that store users; nothing here looks into it.
/// Failures are reported as 43330 (GetElementName), 43328 (serializeXML), 43327 (loadByXML), 43331
/// (copying, which then gives an empty record).
class KPX_API CUser : public CDBObject {
 public:
  CUser() = default;
  CUser(const CUser& other);
  CUser(CUser&&) noexcept = default;
  CUser& operator=(const CUser&) = default;
  CUser& operator=(CUser&&) noexcept = default;

  CString GetElementName() const override;
  int serializeXML(CMarkup* document) const override;
  int loadByXML(CMarkup* document) override;

  std::int32_t Type = 0;
  CString Name;
  CString Comment;
  // In XML as it stands here: whoever stores a user decides who may read it.
  CString Password;
};

}  // namespace kpx
