#pragma once

#include <cstddef>

#include "kpx/report/OperationNumber.h"

namespace kpx {

/// The operations of the application context that report failures, by number; a new one takes the
/// next number from 910301 on.
inline constexpr ErrorEntry contextOperations[] = {
    {71472, "InitMLT"},
    {753139, "kpxGetProgPath"},
    {910302, "utlMessageBox"},
    {910303, "kpxShowSoccetErrorMessage"},
    {910304, "kpxShowSystemErrorMessage"},
    {910305, "kpxGetSystemPath"},
    {910306, "kpxGetSystemPathFromRegistryOrIniFile"},
    {910307, "kpxGetCurrentProjectPath"},
    {910308, "kpxGetDataFromRegistry"},
    {910309, "kpxSetDataToRegistry"},
    {910310, "kpxGetKPXSettingFromRegistry"},
    {910311, "kpxIsTracing"},
    {910316, "kpxSetWindowTitle"},
    {910317, "kpxSetWindowTitleProject"},
    {910318, "kpxGetFileSize"},
    {910319, "kpxGetComputerName"},
    {910320, "kpxGetUserName"},
    {910321, "kpxGetUserHomePath"},
    {910322, "kpxGetUserAppDataPath"},
    {910323, "kpxGetCommonAppDataPath"},
    {910324, "kpxIsTestMode"},
    {910325, "kpxShowKPXErrorMessages"},
    {910326, "kpxShowConnectingPointsAsHelp"},
    {910327, "kpxGetKPXSettingAskOverwriteCells"},
    {910328, "languageFileName"},
    {910329, "textFolder"},
    {910330, "languageFilePath"},
    {910331, "kpxGetAppName"},
    {910332, "kpxSetAppName"},
    {910333, "kpxGetProjectsFolder"},
    {910334, "kpxSetProjectsFolder"},
    {910335, "kpxGetProjectSubPath"},
    {910336, "kpxSetProjectSubPath"},
    {910337, "kpxGetCurrentProject"},
    {910338, "kpxSetCurrentProject"},
    {910339, "kpxGetCurrentJob"},
    {910340, "kpxSetCurrentJob"},
    {910341, "kpxGetCurrentSysUser"},
    {910342, "kpxSetCurrentSysUser"},
    {910343, "kpxGetCurrentPrjUser"},
    {910344, "kpxSetCurrentPrjUser"},
    {910345, "kpxSetCurrentPrjSettings"},
    {910346, "kpxSetCurrentPrjSettingsIntern"},
    {910347, "kpxSetCurrentSysSettings"},
    {910348, "kpxSetCurrentNASPointSettings"},
    {910349, "kpxSetCurrentFrameWnd"},
    {910350, "kpxSetCurrentAppHWnd"},
    {910351, "kpxSetCurrentMainParentHWnd"},
    {910352, "kpxSetCurrentDetailDlgHWnd"},
    {910353, "kpxSetCurrentLineEditDlgHWnd"},
    {910354, "kpxSetAutoSaveEditSession"},
    {910355, "kpxSetAutoSaveEditSessionIntervall"},
    {910356, "setHelpFile"},
    {910357, "setBinFolderApplication"},
    {910358, "kpxSetProgPath"},
    {910359, "kpxSetSystemPath"},
    {910360, "chosenLanguage"},
    {910361, "useProjectWording"},
    {910362, "traceFilePath"},
    {910363, "languageFiles"},
};

/// The number of one of them: "InitMLT"_context.
consteval OperationNumber operator""_context(const char* operation, std::size_t length) {
  return OperationNumber::in(contextOperations, {operation, length});
}

}  // namespace kpx
