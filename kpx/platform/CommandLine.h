#pragma once

#include <string>
#include <vector>

#include "kpx/report/Export.h"

namespace kpx {

// What a program of the command line needs from the system before its first line.

/// The arguments of the program as UTF-8, without its own name. `count` and `values` are those of
/// `main`, which on Windows lack what the user's code page does not have.
KPX_API std::vector<std::string> programArguments(int count, const char* const* values);

/// Keeps files from taking the place of standard streams that are closed: using those fails. Lets
/// the streams carry the bytes as they are, and a console take them for UTF-8 until the program
/// ends. Without it Windows writes each line feed as CR LF, input ends at a
/// Ctrl-Z, and consoles show umlauts by a code page of their own. To be called before either is
/// used.
KPX_API void prepareStandardStreams() noexcept;

}  // namespace kpx
