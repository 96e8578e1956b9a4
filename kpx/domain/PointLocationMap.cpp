#include "kpx/domain/PointLocationMap.h"

#include <unordered_map>

#include "kpx/domain/Operations.h"
#include "kpx/report/Error.h"

namespace kpx {
namespace {

using Map = std::unordered_map<std::int32_t, CAaaPunktortUUID>;

// Built on first use, so that the order in which modules are loaded does not matter.
Map& pointLocations() noexcept {
  static Map map;
  return map;
}

}  // namespace

int kpxCoordAndHeightIDs2POIDsSetAt(std::int32_t coordAndHeightID, CAaaPunktortUUID uuid) {
  return Guarded("kpxCoordAndHeightIDs2POIDsSetAt"_domain, 0, [&] {
    pointLocations().insert_or_assign(coordAndHeightID, uuid);
    return 1;
  });
}

int kpxCoordAndHeightIDs2POIDsLookup(std::int32_t coordAndHeightID,
                                     CAaaPunktortUUID& uuid) noexcept {
  const Map& map = pointLocations();
  const auto found = map.find(coordAndHeightID);
  if (found == map.end()) return 0;
  uuid = found->second;
  return 1;
}

int kpxCoordAndHeightIDs2POIDsHasData() noexcept { return pointLocations().empty() ? 0 : 1; }

void kpxCoordAndHeightIDs2POIDsRemoveAll() noexcept { pointLocations().clear(); }

}  // namespace kpx
