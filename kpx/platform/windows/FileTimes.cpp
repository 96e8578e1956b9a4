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
  if (path.IsEmpty() || path.Find(u'\0') != -1) return {FileStatus::badName, 0};
  const HANDLE file =
      ::CreateFileW(reinterpret_cast<const wchar_t*>(path.GetString()), FILE_READ_ATTRIBUTES,
                    FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr, OPEN_EXISTING,
                    FILE_FLAG_BACKUP_SEMANTICS, nullptr);
  if (file == INVALID_HANDLE_VALUE) return detail::lastError();
  FILETIME created = {};
  FILETIME accessed = {};
  FILETIME written = {};
  const bool done = ::GetFileTime(file, &created, &accessed, &written) != 0;
  const FileResult result = done ? FileResult{} : detail::lastError();
  ::CloseHandle(file);
  if (done) times = {dateTimeOf(created), dateTimeOf(accessed), dateTimeOf(written)};
  return result;
}

}  // namespace kpx
