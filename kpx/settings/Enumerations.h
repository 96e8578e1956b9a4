#pragma once

#include <cstdint>

namespace kpx {

// The enumerated types of settings. The schema may use each type that is declared here. They are
// stored as their integers; the numbers belong to the modules that use them, and a setting
// accepts and keeps any.

/// The kind of a project: `CFGProjectSettings::getProjectType`.
enum enumKPXProjectType : std::int32_t {};
/// Which standard deviation of averaged positions is kept: `CFGGNSSEvalMask::getStdDevAverage`.
enum enumGNSSStdDevAverage : std::int32_t {};
/// Which documents are exported: `CFGConfigDXFExport::getExportDocuments`.
enum eDxfExportDocumentsState : std::int32_t {};
/// How line kinds are imported: `CFGConfigLandXMLImport::getUseLineArt`.
enum eLandXMLLineImportState : std::int32_t {};
/// How images are imported: `CFGConfigLandXMLImport::getImportTypeImage`.
enum eLandXMLImageImportState : std::int32_t {};

}  // namespace kpx
