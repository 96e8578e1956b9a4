#pragma once

#include "kpx/report/Export.h"

namespace kpx {

/// Whether a person sees standard error as it is written, so that a progress bar makes sense;
/// false for files, pipes and a closed one.
KPX_API bool errorOutputIsTerminal() noexcept;

}  // namespace kpx
