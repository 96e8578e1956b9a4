#pragma once

#include <string_view>

#include "kpx/text/CString.h"

namespace kpx::detail {

/// The text of bytes in code page 437, in which zip archives carry names by default. Every byte
/// has its own unit, so different names stay different; bytes below 128 are as in ASCII.
CString textOfCodePage437(std::string_view bytes);

}  // namespace kpx::detail
