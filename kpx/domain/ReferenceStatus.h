#pragma once

#include <cstdint>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

// How the height (HGS) and the position (LGS) of a point came about, as lists for choice boxes.
//
// | value | height                      | position          |
// |-------|-----------------------------|-------------------|
// |    -1 | "Auto" Automatisch          | the same          |
// |     0 | "0" Unbekannt               | the same          |
// |     1 | "D" Topgraphische Höhe      | "D" Digitalisiert |
// |     2 | "M" Tachymetrische Höhe     | "M" Messwert      |
// |     3 | "N" Nivellierte Höhe        | absent: positions |
// |       |                             | keep the numbers  |
// |       |                             | of heights        |
// |     4 | "R" Gerechnete Höhe         | "R" Rechenwert    |
// |     5 | "S" Sollhöhe                | "S" Sollwert      |
//
// "Auto" is only known where `withAutomatic` says so. `limit` is the highest value that is known;
// 0 stands for no limit.

/// Fills both lists, in place of what they held, in the order above: for each status its code, a
/// blank and its text in the user's language, and its value. Error numbers 910312, 910313; both
/// lists are empty then.
KPX_API void kpxInitHGS(std::vector<CString>& texts, std::vector<std::int32_t>& values,
                        bool withAutomatic, int limit);
KPX_API void kpxInitLGS(std::vector<CString>& texts, std::vector<std::int32_t>& values,
                        bool withAutomatic, int limit);

/// The value of a code, with case; 0 for one that is not known.
KPX_API std::int32_t kpxGetHGS(const CString& code, bool withAutomatic) noexcept;
KPX_API std::int32_t kpxGetLGS(const CString& code, bool withAutomatic) noexcept;

/// The code of a value; "0" for one that is not known. Error numbers 910314, 910315.
KPX_API CString kpxSetHGS(int value, bool withAutomatic, int limit);
KPX_API CString kpxSetLGS(int value, bool withAutomatic, int limit);

}  // namespace kpx
