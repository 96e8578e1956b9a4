#include "kpx/support/CObject.h"

namespace kpx {

CObject::~CObject() = default;

void CObject::Serialize(CArchive& /*archive*/) {}

}  // namespace kpx
