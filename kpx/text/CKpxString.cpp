#include "kpx/text/CKpxString.h"

#include "kpx/report/Error.h"
#include "kpx/text/Formatter.h"
#include "kpx/text/Operations.h"

namespace kpx {

bool CKpxString::FormatV_l(const TextArg& format, const void* /*locale*/, std::va_list list) {
  return Guarded("CKpxString::FormatV_l"_text, false, [&] {
    const detail::VariableArguments arguments(format, list);
    std::u16string result;
    if (detail::appendFormatted(result, TextUnits(format), arguments.args()) < 0) return false;
    units() = std::move(result);
    return true;
  });
}

}  // namespace kpx
