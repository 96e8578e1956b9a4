#pragma once

#include <cstddef>
#include <iterator>
#include <string_view>

#include "kpx/report/Export.h"

namespace kpx {

/// An operation that reports its unexpected failures, and the number by which the error logs and
/// the users' support know it.
struct ErrorEntry {
  int number;
  std::string_view operation;  // function or Class::function; overloads with their parameters
};

/// Every guarded operation of the library but the accessors of settings, whose numbers stand in the
/// settings schema. Ordered by number. A number stands in the logs of users, so it never changes
/// and is never given to another operation.
///
/// 900001 to 909999 belong to settings; what has no number from older modules has one from 910001
/// on, in blocks: 910021 XML documents, 910101 INI files and timers, 910201 registry, text files
/// and times, 910301 application context, 910401 C interface, 910501 texts and observers, 910551
/// text utilities, 910601 processes. A new operation takes the next free number of its block.
inline constexpr ErrorEntry errorTable[] = {
    {42830, "CFGRange::GetElementName"},
    {42832, "CFGRange::serializeXML"},
    {42833, "CFGRange::loadByXML"},
    {42838, "CFGCodedValue::GetElementName"},
    {42840, "CFGCodedValue::serializeXML"},
    {42841, "CFGCodedValue::loadByXML"},
    {42846, "CFGCommand::GetElementName"},
    {42848, "CFGCommand::serializeXML"},
    {42857, "CFGHeader::ResetPos"},
    {42860, "CFGTable::loadByXML"},
    {42861, "CFGTable::serializeXML"},
    {42863, "CFGTable::AddColDef"},
    {42864, "CFGTable::AddColumn"},
    {42866, "CFGTable::GetElementName"},
    {42872, "CFGRow::loadByXML"},
    {42873, "CFGRow::serializeXML"},
    {42874, "CFGRow::AddCell"},
    {42878, "CFGRow::GetElementName"},
    {42884, "CFGConfig::loadByXML"},
    {42885, "CFGConfig::serializeXML"},
    {42886, "CFGConfig::AddSetting"},
    {42887, "CFGConfig::AddColumn"},
    {42892, "CFGClass::loadByXML"},
    {42893, "CFGClass::serializeXML"},
    {42898, "CFGClass::GetElementName"},
    {42904, "CFGCol::loadByXML"},
    {42905, "CFGCol::serializeXML"},
    {42913, "CFGCol::GetElementName"},
    {42919, "CFGValue::loadByXML"},
    {42920, "CFGValue::serializeXML"},
    {42922, "CFGValue::GetElementName"},
    {42926, "CFGCommand::loadByXML"},
    {42927, "CFGConfig::GetElementName"},
    {43087, "CJob::loadByXML"},
    {43088, "CJob::serializeXML"},
    {43090, "CJob::GetElementName"},
    {43091, "CJob::CJob"},
    {43210, "CProject::CProject"},
    {43211, "CProject::GetElementName"},
    {43213, "CProject::serializeXML"},
    {43214, "CProject::loadByXML"},
    {43327, "CUser::loadByXML"},
    {43328, "CUser::serializeXML"},
    {43330, "CUser::GetElementName"},
    {43331, "CUser::CUser"},
    {52040, "CKpxBaseObjectsUtil::GetTimestamp()"},
    {53420, "CKpxBaseObjectsUtil::GetTimestamp(TIME*)"},
    {53428, "CKpxBaseObjectsUtil::Time2Str"},
    {56921, "CFCFieldInfos::Add"},
    {56922, "CFCFieldInfos::GetAt"},
    {70306, "CMarkup::operator="},
    {70311, "CMarkup::DetectUTF8"},
    {71472, "InitMLT"},
    {75068, "CMarkup::x_ParseDoc"},
    {80032, "CFCFieldInfos::RemoveAll"},
    {80033, "CFCFieldInfos::GetCountArt"},
    {80034, "CFCFieldInfos::GetAllByArt"},
    {80035, "CFCFieldInfos::GetCount"},
    {81613, "CAaaAreaCalcResultCache::getAt"},
    {81614, "CAaaAreaCalcResultCache::removeAll"},
    {81615, "CAaaAreaCalcResultCache::getCount"},
    {81616, "CAaaAreaCalcResultCache::add"},
    {753139, "kpxGetProgPath"},
    {910001, "utlDoubleAsText"},
    {910002, "CMarkup::Load"},
    {910003, "CMarkup::Save"},
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
    {910014, "kpxUnzip"},
    {910021, "CMarkup::SetDoc"},
    {910022, "CMarkup::GetError"},
    {910023, "CMarkup::SavePos"},
    {910024, "CMarkup::GetTagName"},
    {910025, "CMarkup::GetChildTagName"},
    {910026, "CMarkup::GetData"},
    {910027, "CMarkup::GetChildData"},
    {910028, "CMarkup::GetAttrib"},
    {910029, "CMarkup::GetChildAttrib"},
    {910030, "CMarkup::GetNthAttrib"},
    {910031, "CMarkup::GetNthChildAttrib"},
    {910032, "CMarkup::GetSubDoc"},
    {910033, "CMarkup::GetChildSubDoc"},
    {910034, "CMarkup::GetElemContent"},
    {910035, "CMarkup::SetTagName"},
    {910036, "CMarkup::SetChildTagName"},
    {910037, "CMarkup::SetData"},
    {910038, "CMarkup::SetChildData"},
    {910039, "CMarkup::SetAttrib"},
    {910040, "CMarkup::SetChildAttrib"},
    {910041, "CMarkup::RemoveAttrib"},
    {910042, "CMarkup::RemoveChildAttrib"},
    {910043, "CMarkup::AddElem"},
    {910044, "CMarkup::InsertElem"},
    {910045, "CMarkup::AddChildElem"},
    {910046, "CMarkup::InsertChildElem"},
    {910047, "CMarkup::AddSubDoc"},
    {910048, "CMarkup::InsertSubDoc"},
    {910049, "CMarkup::AddChildSubDoc"},
    {910050, "CMarkup::InsertChildSubDoc"},
    {910051, "CMarkup::AddNode"},
    {910052, "CMarkup::InsertNode"},
    {910053, "CMarkup::RemoveNode"},
    {910054, "CMarkup::EscapeText"},
    {910055, "CMarkup::UnescapeText"},
    {910056, "CMarkup::x_EncodeCDATASection"},
    {910057, "CMarkup::EncodeBase64"},
    {910058, "CMarkup::GetDeclaredEncoding"},
    {910059, "CMarkup::FindErrorLine"},
    {910060, "CMarkup::UTF16To8"},
    {910101, "CIniEx::ReadFile"},
    {910102, "CIniEx::SaveFile"},
    {910103, "CIniEx::GetKeyData"},
    {910104, "CIniEx::GetSection"},
    {910105, "CIniEx::GetSectionAll"},
    {910106, "CIniEx::AddNewSection"},
    {910107, "CIniEx::AddNewKey"},
    {910108, "CIniEx::UpdateKey"},
    {910109, "CIniEx::UpdateSection"},
    {910110, "CIniEx::DeleteKey"},
    {910111, "CIniEx::DeleteSection"},
    {910112, "CIniEx::DeleteKeyfromSection"},
    {910113, "CIniEx::DeleteSectionfromSections"},
    {910114, "CIniEx::ClearMemory"},
    {910115, "CIniEx::AddKeyTypeSection"},
    {910116, "CIniEx::AddKeyToKeyTypeSection"},
    {910117, "CIniEx::GetDataFromKeyTypeSection"},
    {910118, "CIniEx::DeleteIndexFromKeyTypeSection"},
    {910119, "CIniEx::readBytes"},
    {910120, "CIniEx::GetToken"},
    {910121, "CHiFreqTimer::stopTimer"},
    {910122, "CTimerFactory::getTimer"},
    {910123, "CTimerFactory::dump"},
    {910124, "CTimerFactory::dumpCsv"},
    {910125, "CTimerFactory::dumpSamples"},
    {910126, "CTimerFactory::dumpSamplesCsv"},
    {910127, "CIniEx::BracketsContents"},
    {910128, "CIniEx::ReplaceTo0xD_0xA"},
    {910129, "CIniEx::ReplaceFrom0xD_0xA"},
    {910130, "CTimerFactory::getTimerChecked"},
    {910131, "CTimerFactory::getTimerName"},
    {910132, "CTimerFactory::report"},
    {910133, "CTimerFactory::sampleReport"},
    {910134, "CIniEx::ChangeFile"},
    {910201, "CRegistry::Open"},
    {910202, "CRegistry::OpenReadOnly"},
    {910203, "CRegistry::CreateKey"},
    {910204, "CRegistry::DeleteKey"},
    {910205, "CRegistry::VerifyKey"},
    {910206, "CRegistry::ReadKeyKeys"},
    {910207, "CRegistry::ReadKeyValues"},
    {910208, "CRegistry::VerifyValue"},
    {910209, "CRegistry::DeleteValue"},
    {910210, "CRegistry::ReadString"},
    {910211, "CRegistry::WriteString"},
    {910212, "CRegistry::ReadDWORD"},
    {910213, "CRegistry::WriteDWORD"},
    {910214, "CRegistry::Read(CObject&)"},
    {910215, "CRegistry::Write(CObject&)"},
    {910216, "CRegistry::Read(CWnd*)"},
    {910217, "CRegistry::Write(const CWnd*)"},
    {910221, "CUtf16StdioFile::Open"},
    {910222, "CUtf16StdioFile::Close"},
    {910223, "CUtf16StdioFile::ReadString(CString&)"},
    {910224, "CUtf16StdioFile::ReadString(char16_t*)"},
    {910225, "CUtf16StdioFile::WriteString"},
    {910226, "CUtf16StdioFile::Seek"},
    {910227, "MakeUuidString"},
    {910228, "CKpxBaseObjectsUtil::GetCreationFileTime"},
    {910229, "CKpxBaseObjectsUtil::GetLastAccessFileTime"},
    {910230, "CKpxBaseObjectsUtil::GetLastWriteFileTime"},
    {910231, "CKpxBaseObjectsUtil::Date2Str"},
    {910232, "CKpxBaseObjectsUtil::TimeDouble2Str"},
    {910233, "CKpxBaseObjectsUtil::TrimLeft"},
    {910234, "CKpxBaseObjectsUtil::TrimRight"},
    {910235, "CKpxBaseObjectsUtil::Trim"},
    {910236, "CKpxBaseObjectsUtil::CatPathFile"},
    {910237, "CKpxBaseObjectsUtil::CutSystemPath"},
    {910238, "CKpxBaseObjectsUtil::CutProjectPath"},
    {910239, "CKpxBaseObjectsUtil::LocalTimeDouble2UTCTimeDouble"},
    {910240, "CKpxBaseObjectsUtil::UTCTimeDouble2LocalTimeDouble"},
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
    {910312, "kpxInitHGS"},
    {910313, "kpxInitLGS"},
    {910314, "kpxSetHGS"},
    {910315, "kpxSetLGS"},
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
    {910401, "kpx_c_start_texts"},
    {910402, "kpx_c_text"},
    {910403, "kpx_c_class_count"},
    {910404, "kpx_c_class_name"},
    {910405, "kpx_c_new"},
    {910406, "kpx_c_open"},
    {910407, "kpx_c_open_bytes"},
    {910408, "kpx_c_save"},
    {910409, "kpx_c_save_bytes"},
    {910410, "kpx_c_close"},
    {910411, "kpx_c_count"},
    {910412, "kpx_c_find"},
    {910413, "kpx_c_configuration_class"},
    {910414, "kpx_c_add"},
    {910415, "kpx_c_key_count"},
    {910416, "kpx_c_key"},
    {910417, "kpx_c_type"},
    {910418, "kpx_c_caption"},
    {910419, "kpx_c_group"},
    {910420, "kpx_c_is_stored"},
    {910421, "kpx_c_get_int32"},
    {910422, "kpx_c_get_double"},
    {910423, "kpx_c_get_text"},
    {910424, "kpx_c_set_int32"},
    {910425, "kpx_c_set_double"},
    {910426, "kpx_c_set_text"},
    {910501, "AddMLT"},
    {910502, "readLanguageFile"},
    {910503, "CObservable::addObserver"},
    {910504, "CObservable::notifyObservers"},
    {910551, "utlLongAsText"},
    {910552, "utlTextAsDoubleDecimal"},
    {910553, "utlStringToVar"},
    {910554, "utlVarToString"},
    {910555, "CKpxString::FormatV_l"},
    {910556, "kpxMatchWildcardString"},
    {910557, "kpxRtfEncode"},
    {910558, "kpxUTF8Encode"},
    {910559, "UTF8to16"},
    {910560, "kpxChangeFormat"},
    {910601, "findProcesses"},
    {910602, "endProcesses"},
};

/// The operation of a number; empty when it is none of this table.
KPX_API std::string_view operationOf(int number) noexcept;

namespace detail {

constexpr bool isErrorTableOrdered() noexcept {
  for (std::size_t i = 1; i < std::size(errorTable); ++i) {
    if (errorTable[i - 1].number >= errorTable[i].number) return false;
  }
  return true;
}
static_assert(isErrorTableOrdered(), "a number of the error table stands twice or out of order");

// Not constexpr: naming it in a constant expression is the compiler's message to the caller.
void operationIsNotInErrorTable();

consteval int numberOf(std::string_view operation) {
  for (const ErrorEntry& entry : errorTable) {
    if (entry.operation == operation) return entry.number;
  }
  operationIsNotInErrorTable();
  return 0;
}

}  // namespace detail

/// The error number of an operation, written as its name: the compiler looks it up in the table and
/// refuses a name that is not there.
class OperationNumber {
 public:
  consteval OperationNumber(const char* operation) : value_(detail::numberOf(operation)) {}
  /// A number that the settings schema gives, where it is checked.
  static constexpr OperationNumber ofSetting(int number) noexcept {
    return OperationNumber(number, 0);
  }

  constexpr int value() const noexcept { return value_; }

 private:
  constexpr OperationNumber(int number, int) noexcept : value_(number) {}

  int value_;
};

}  // namespace kpx
