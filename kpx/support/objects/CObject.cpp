#include "kpx/support/objects/CObject.h"

namespace kpx {

CObject::~CObject() = default;

void CObject::Serialize(CArchive& /*archive*/) {}

}  // namespace kpx
