#pragma once

#include <cstddef>

#include "kpx/report/OperationNumber.h"

namespace kpx {

/// The operations of cadastral objects and lists that report failures, by number; a new one takes
/// the next number from 910001 on.
inline constexpr ErrorEntry domainOperations[] = {
    {56921, "CFCFieldInfos::Add"},
    {56922, "CFCFieldInfos::GetAt"},
    {80032, "CFCFieldInfos::RemoveAll"},
    {80033, "CFCFieldInfos::GetCountArt"},
    {80034, "CFCFieldInfos::GetAllByArt"},
    {80035, "CFCFieldInfos::GetCount"},
    {81613, "CAaaAreaCalcResultCache::getAt"},
    {81614, "CAaaAreaCalcResultCache::removeAll"},
    {81615, "CAaaAreaCalcResultCache::getCount"},
    {81616, "CAaaAreaCalcResultCache::add"},
    {910004, "CNAS_Punktobjekt::getClassName"},
    {910005, "CNAS_Punktobjekt::serializeXML"},
    {910006, "CNAS_Punktobjekt::loadByXML"},
    {910007, "CNAS_Punktobjekt::sonstigeEigenschaftenAdd"},
    {910008, "CNAS_Punktobjekt::sonstigeEigenschaftenCopy"},
    {910009, "CNAS_Punktobjekt::sonstigeEigenschaftenGetAt"},
    {910010, "CNAS_Punktobjekt::sonstigeEigenschaftenSetAt"},
    {910011, "CNAS_Punktobjekt::sonstigeEigenschaftenGetAsText"},
    {910012, "kpxCoordAndHeightIDs2POIDsSetAt"},
    {910013, "CAaaPunktortUUID::text"},
    {910312, "kpxInitHGS"},
    {910313, "kpxInitLGS"},
    {910314, "kpxSetHGS"},
    {910315, "kpxSetLGS"},
};

/// The number of one of them: "CFCFieldInfos::Add"_domain.
consteval OperationNumber operator""_domain(const char* operation, std::size_t length) {
  return OperationNumber::in(domainOperations, {operation, length});
}

}  // namespace kpx
