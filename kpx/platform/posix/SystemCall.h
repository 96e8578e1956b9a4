#pragma once

#include <cerrno>

#include "kpx/platform/FileSystem.h"

namespace kpx::detail {

/// What a system call's error code means for a file operation.
inline FileResult resultOf(int code) noexcept {
  switch (code) {
    case 0:
      return {};
    case ENOENT:
      return {FileStatus::notFound, code};
    case EACCES:
    case EPERM:
    case EROFS:
    case ETXTBSY:
      return {FileStatus::noPermission, code};
    case EEXIST:
      return {FileStatus::exists, code};
    case EISDIR:
      return {FileStatus::isFolder, code};
    case ENOTDIR:
    case ENOTEMPTY:
      return {FileStatus::notFolder, code};
    case ENAMETOOLONG:
    case ELOOP:
    case EILSEQ:
      return {FileStatus::badName, code};
    case EFBIG:
      return {FileStatus::tooLarge, code};
    case ENOSPC:
    case EDQUOT:
      return {FileStatus::noSpace, code};
    case ENOMEM:
      return {FileStatus::noMemory, code};
    default:
      return {FileStatus::failed, code};
  }
}

inline FileResult lastError() noexcept { return resultOf(errno); }

/// Repeats a call that a signal interrupted.
template <class Call>
auto uninterrupted(Call call) {
  decltype(call()) answer;
  do {
    answer = call();
  } while (answer == -1 && errno == EINTR);
  return answer;
}

}  // namespace kpx::detail
