#pragma once

#include "kpx/config/Field.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Whether a text is how the suite writes an attribute of this kind: "7", not "007".
KPX_API bool isAsWritten(AttributeKind kind, const CString& text);

}  // namespace kpx
