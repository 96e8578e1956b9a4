#pragma once

#include <cstdint>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// The value of an environment variable; false, and `value` as it was, when it is not set.
KPX_API bool readEnvironmentVariable(const CString& name, CString& value);
/// The same, empty when it is not set.
KPX_API CString environmentVariable(const CString& name);

namespace detail {

/// The name of this computer in its network; empty if the system does not tell.
CString computerName();

/// The name that the user of this process logs in with; empty if the system does not tell.
CString userName();

/// Bytes of physical memory; 0 if the system does not tell.
std::uint64_t physicalMemoryBytes() noexcept;

}  // namespace detail

/// The system's text for one of its error codes in the user's language, without a line break at its
/// end.
KPX_API CString systemMessage(int code);

}  // namespace kpx
