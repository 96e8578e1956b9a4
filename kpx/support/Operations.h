#pragma once

#include <cstddef>

#include "kpx/report/OperationNumber.h"

namespace kpx {

/// The operations of services that report failures, by number. Those without a number from older
/// modules have one from 910101 on (INI files and timers), 910201 (registry, text files and times)
/// or 910501 (texts and observers); a new one takes the next of its block.
inline constexpr ErrorEntry supportOperations[] = {
    {52040, "CKpxBaseObjectsUtil::GetTimestamp()"},
    {53420, "CKpxBaseObjectsUtil::GetTimestamp(TIME*)"},
    {53428, "CKpxBaseObjectsUtil::Time2Str"},
    {910014, "kpxUnzip"},
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
    {910501, "AddMLT"},
    {910502, "readLanguageFile"},
    {910503, "CObservable::addObserver"},
    {910504, "CObservable::notifyObservers"},
};

/// The number of one of them: "CKpxBaseObjectsUtil::GetTimestamp()"_support.
consteval OperationNumber operator""_support(const char* operation, std::size_t length) {
  return OperationNumber::in(supportOperations, {operation, length});
}

}  // namespace kpx
