#pragma once

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Whether a person sees standard error as it is written, so that a progress bar makes sense;
/// false for files, pipes and a closed one.
KPX_API bool errorOutputIsTerminal() noexcept;

/// Writes to standard error, at once: to a terminal as it takes text, elsewhere as UTF-8. What
/// cannot be written is lost.
KPX_API void writeErrorOutput(const CString& text);

}  // namespace kpx
