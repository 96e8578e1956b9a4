#pragma once

#include <cstdint>

#include "kpx/domain/CAaaPunktortUUID.h"
#include "kpx/report/Export.h"

namespace kpx {

// One map for the whole process, from coordinate-and-height identifiers to the identifiers of
// point locations. It lives until the process ends. Several threads may look up at the same time
// as long as none changes it.

/// Stores the identifier, or replaces the one stored. Answers 1. A failure is reported as 910012,
/// changes nothing and answers 0.
KPX_API int kpxCoordAndHeightIDs2POIDsSetAt(std::int32_t coordAndHeightID, CAaaPunktortUUID uuid);

/// 1, and the identifier, when there is one; else 0, and `uuid` stays as it is.
KPX_API int kpxCoordAndHeightIDs2POIDsLookup(std::int32_t coordAndHeightID,
                                             CAaaPunktortUUID& uuid) noexcept;

/// 1 when the map holds anything, else 0.
KPX_API int kpxCoordAndHeightIDs2POIDsHasData() noexcept;

/// Empties the map.
KPX_API void kpxCoordAndHeightIDs2POIDsRemoveAll() noexcept;

}  // namespace kpx
