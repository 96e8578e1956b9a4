#include "kpx/settings/document/ConfigAttributes.h"

#include "kpx/text/NumberText.h"
#include "kpx/text/TimeValue.h"

namespace kpx {

bool isAsWritten(AttributeKind kind, const CString& text) {
  if (kind == AttributeKind::integer) return detail::longAsText(utlTextAsLong(text)) == text;
  if (kind == AttributeKind::time)
    return detail::timeDoubleText(detail::timeDoubleOf(text)) == text;
  return true;
}

}  // namespace kpx
