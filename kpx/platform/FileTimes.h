#pragma once

#include "kpx/platform/FileSystem.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/text/TimeValue.h"

namespace kpx {

/// When something happened to a file, in UTC; all zero when its volume does not tell.
struct FileTimes {
  DateTime created;
  DateTime accessed;
  DateTime written;
};

/// The times of a file or folder, links followed.
KPX_API FileResult readFileTimes(const CString& path, FileTimes& times);

}  // namespace kpx
