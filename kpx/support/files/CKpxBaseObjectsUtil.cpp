#include "kpx/support/files/CKpxBaseObjectsUtil.h"

#include <atomic>

#include "kpx/platform/Clock.h"
#include "kpx/platform/FileTimes.h"
#include "kpx/report/Error.h"
#include "kpx/report/Exceptions.h"
#include "kpx/support/Operations.h"
#include "kpx/text/TextTools.h"

namespace kpx {
namespace {

using FolderProvider = CKpxBaseObjectsUtil::FolderProvider;
constinit std::atomic<FolderProvider> systemFolder{nullptr};
constinit std::atomic<FolderProvider> projectFolder{nullptr};

CString folderOf(const std::atomic<FolderProvider>& provider) {
  const FolderProvider known = provider.load(std::memory_order_acquire);
  return known ? known() : CString();
}

using Conversion = ZoneResult (Clock::*)(const DateTime&, DateTime&);

double convertZone(double value, Conversion conversion) {
  DateTime converted;
  const DateTime fields = unpackTime(detail::timeOfDouble(value));
  if ((currentClock().*conversion)(fields, converted) != ZoneResult::converted) return value;
  return detail::doubleOfTime(packTime(converted));
}

double localFileTime(const CString& path, DateTime FileTimes::*which) {
  FileTimes times;
  if (!readFileTimes(path, times)) return 0.0;
  return convertZone(detail::doubleOfTime(packTime(times.*which)), &Clock::utcToLocal);
}

}  // namespace

double CKpxBaseObjectsUtil::Time2Double(const TIME& time) noexcept {
  return detail::doubleOfTime(time);
}

TIME CKpxBaseObjectsUtil::Double2Time(double value) noexcept { return detail::timeOfDouble(value); }

double CKpxBaseObjectsUtil::Time2DoubleEx(const TIME& time) noexcept {
  return detail::doubleOfTimeEx(time);
}

TIME CKpxBaseObjectsUtil::Double2TimeEx(double value) noexcept {
  return detail::timeOfDoubleEx(value);
}

void CKpxBaseObjectsUtil::correctTimeSeconds(TIME& time) noexcept {
  kpx::detail::correctTimeSeconds(time);
}

CString CKpxBaseObjectsUtil::Date2Str(const TIME& time) {
  return Guarded("CKpxBaseObjectsUtil::Date2Str"_support, CString(),
                 [&] { return detail::dateText(time); });
}

CString CKpxBaseObjectsUtil::Time2Str(const TIME& time) {
  return Guarded("CKpxBaseObjectsUtil::Time2Str"_support, CString(),
                 [&] { return detail::clockText(time); });
}

CString CKpxBaseObjectsUtil::TimeDouble2Str(double value) {
  return Guarded("CKpxBaseObjectsUtil::TimeDouble2Str"_support, CString(),
                 [&] { return detail::timeDoubleText(value); });
}

TIME CKpxBaseObjectsUtil::Str2Date(const CString& text) noexcept {
  return detail::dateOfText(text);
}

TIME CKpxBaseObjectsUtil::Str2Time(const CString& text) noexcept {
  return detail::clockOfText(text);
}

double CKpxBaseObjectsUtil::Str2TimeDouble(const CString& text) noexcept {
  return detail::timeDoubleOf(text);
}

void CKpxBaseObjectsUtil::GetTimestamp(TIME* time) noexcept {
  Guarded("CKpxBaseObjectsUtil::GetTimestamp(TIME*)"_support, [&] {
    if (!time) throw InvalidArgException();
    *time = packTime(currentClock().localNow());
  });
}

double CKpxBaseObjectsUtil::GetTimestamp() noexcept {
  return Guarded("CKpxBaseObjectsUtil::GetTimestamp()"_support, 0.0,
                 [] { return detail::doubleOfTime(packTime(currentClock().localNow())); });
}

double CKpxBaseObjectsUtil::LocalTimeDouble2UTCTimeDouble(double value) {
  return Guarded("CKpxBaseObjectsUtil::LocalTimeDouble2UTCTimeDouble"_support, value,
                 [&] { return convertZone(value, &Clock::localToUtc); });
}

double CKpxBaseObjectsUtil::UTCTimeDouble2LocalTimeDouble(double value) {
  return Guarded("CKpxBaseObjectsUtil::UTCTimeDouble2LocalTimeDouble"_support, value,
                 [&] { return convertZone(value, &Clock::utcToLocal); });
}

double CKpxBaseObjectsUtil::GetCreationFileTime(const CString& path) noexcept {
  return Guarded("CKpxBaseObjectsUtil::GetCreationFileTime"_support, 0.0,
                 [&] { return localFileTime(path, &FileTimes::created); });
}

double CKpxBaseObjectsUtil::GetLastAccessFileTime(const CString& path) noexcept {
  return Guarded("CKpxBaseObjectsUtil::GetLastAccessFileTime"_support, 0.0,
                 [&] { return localFileTime(path, &FileTimes::accessed); });
}

double CKpxBaseObjectsUtil::GetLastWriteFileTime(const CString& path) noexcept {
  return Guarded("CKpxBaseObjectsUtil::GetLastWriteFileTime"_support, 0.0,
                 [&] { return localFileTime(path, &FileTimes::written); });
}

double CKpxBaseObjectsUtil::TimeDouble2OleDate(double value) noexcept {
  return detail::oleDateOfTimeDouble(value);
}

double CKpxBaseObjectsUtil::OleDate2TimeDouble(double days) noexcept {
  return detail::timeDoubleOfOleDate(days);
}

CString CKpxBaseObjectsUtil::TrimLeft(const CString& text) {
  return Guarded("CKpxBaseObjectsUtil::TrimLeft"_support, CString(),
                 [&] { return CString(detail::withoutLeadingBlanks(text)); });
}

CString CKpxBaseObjectsUtil::TrimRight(const CString& text) {
  return Guarded("CKpxBaseObjectsUtil::TrimRight"_support, CString(),
                 [&] { return CString(detail::withoutTrailingBlanks(text)); });
}

CString CKpxBaseObjectsUtil::Trim(const CString& text) {
  return Guarded("CKpxBaseObjectsUtil::Trim"_support, CString(),
                 [&] { return CString(detail::withoutBlanks(text)); });
}

CString CKpxBaseObjectsUtil::CatPathFile(const CString& folder, const CString& file) {
  return Guarded("CKpxBaseObjectsUtil::CatPathFile"_support, CString(),
                 [&] { return detail::joinPath(folder, file); });
}

CString CKpxBaseObjectsUtil::CutSystemPath(const CString& path) {
  return Guarded("CKpxBaseObjectsUtil::CutSystemPath"_support, CString(),
                 [&] { return detail::pathBelow(path, folderOf(systemFolder)); });
}

CString CKpxBaseObjectsUtil::CutProjectPath(const CString& path) {
  return Guarded("CKpxBaseObjectsUtil::CutProjectPath"_support, CString(),
                 [&] { return detail::pathBelow(path, folderOf(projectFolder)); });
}

FolderProvider CKpxBaseObjectsUtil::setSystemFolderProvider(FolderProvider provider) noexcept {
  return systemFolder.exchange(provider, std::memory_order_acq_rel);
}

FolderProvider CKpxBaseObjectsUtil::setProjectFolderProvider(FolderProvider provider) noexcept {
  return projectFolder.exchange(provider, std::memory_order_acq_rel);
}

}  // namespace kpx
