#include "kpx/platform/FileTimes.h"

#include <windows.h>

#include "kpx/platform/windows/SystemCall.h"

namespace kpx {
namespace {

DateTime dateTimeOf(const FILETIME& time) noexcept {
  SYSTEMTIME fields = {};
  const bool isKnown = time.dwLowDateTime != 0 || time.dwHighDateTime != 0;
  if (!isKnown || !::FileTimeToSystemTime(&time, &fields)) return {};
  return {fields.wYear, fields.wMonth, fields.wDay, fields.wHour, fields.wMinute, fields.wSecond};
}

}  // namespace

FileResult readFileTimes(const CString& path, FileTimes& times) {
  const detail::SystemPath name(path);
  if (!name.usable()) return {FileStatus::badName, 0};
  const detail::Handle file = detail::openHandle(name, FILE_READ_ATTRIBUTES, detail::shareAll,
                                                 OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS);
  if (!file.isOpen()) return detail::failureAt(name);
  FILETIME created = {};
  FILETIME accessed = {};
  FILETIME written = {};
  if (!::GetFileTime(file.get(), &created, &accessed, &written)) return detail::lastError();
  times = {dateTimeOf(created), dateTimeOf(accessed), dateTimeOf(written)};
  return {};
}

}  // namespace kpx
