#pragma once

#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// One fact about the installation, in English, for a support request.
struct DiagnosisLine {
  CString topic;    // "folders"
  CString name;     // "system folder"
  CString value;    // as it is in force; empty if there is none
  CString source;   // where it comes from: "HKEY_CURRENT_USER", "set by the program", ...
  CString problem;  // what is wrong with it; empty if nothing is
};

/// Versions, folders, switches, language and logs as this process sees them, grouped by topic.
/// Nothing is changed or created. No line holds a password or the value of an unknown setting.
KPX_API std::vector<DiagnosisLine> diagnose();

}  // namespace kpx
