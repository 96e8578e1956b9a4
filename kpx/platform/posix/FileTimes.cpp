#include "kpx/platform/FileTimes.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <string>

#include "kpx/platform/posix/SystemCall.h"
#include "kpx/platform/posix/UnixTime.h"

namespace kpx {
namespace {

DateTime dateTimeOf(std::int64_t seconds) noexcept {
  DateTime fields;
  return detail::dateTimeOfUnixTime(seconds, fields) ? fields : DateTime();
}

}  // namespace

FileResult readFileTimes(const CString& path, FileTimes& times) {
  const std::string name = path.utf8();
  if (name.empty() || name.find('\0') != std::string::npos) return {FileStatus::badName, 0};
#ifdef STATX_BTIME
  struct statx status = {};
  constexpr unsigned wanted = STATX_ATIME | STATX_MTIME | STATX_BTIME;
  if (::statx(AT_FDCWD, name.c_str(), 0, wanted, &status) != 0) return detail::lastError();
  times.created =
      (status.stx_mask & STATX_BTIME) != 0 ? dateTimeOf(status.stx_btime.tv_sec) : DateTime();
  times.accessed = dateTimeOf(status.stx_atime.tv_sec);
  times.written = dateTimeOf(status.stx_mtime.tv_sec);
#else
  struct stat status = {};
  if (::stat(name.c_str(), &status) != 0) return detail::lastError();
  times.created = DateTime();
  times.accessed = dateTimeOf(status.st_atime);
  times.written = dateTimeOf(status.st_mtime);
#endif
  return {};
}

}  // namespace kpx
