#include "kpx/platform/Folders.h"

#include <dlfcn.h>
#include <pwd.h>
#include <unistd.h>

#include <climits>
#include <cstdlib>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/platform/Environment.h"

namespace kpx {
namespace {

CString withoutLastSeparators(CString path) {
  while (path.GetLength() > 1 && path.EndsWith(u"/")) path.Truncate(path.GetLength() - 1);
  return path;
}

}  // namespace

CString detail::userHomeFolder() {
  const CString home = environmentVariable(u"HOME");
  if (!home.IsEmpty()) return withoutLastSeparators(home);
  passwd entry = {};
  passwd* found = nullptr;
  std::vector<char> buffer(16384);
  const int code = ::getpwuid_r(::geteuid(), &entry, buffer.data(), buffer.size(), &found);
  if (code != 0 || found == nullptr) return {};
  return withoutLastSeparators(CString::fromUtf8(found->pw_dir));
}

CString detail::userDataFolder() {
  // The convention for this variable has relative paths passed over.
  const CString configured = environmentVariable(u"XDG_CONFIG_HOME");
  if (configured.StartsWith(u"/")) return withoutLastSeparators(configured);
  CString home = detail::userHomeFolder();
  return home.IsEmpty() ? home : home == u"/" ? u"/.config" : home + u"/.config";
}

CString detail::commonDataFolder() { return u"/etc"; }

CString detail::debugFolder() {
  const CString folder = detail::userDataFolder();
  return folder.IsEmpty() ? folder : folder + u"/KPX/TmvDebug";
}

CString programFile() {
  char path[PATH_MAX];
  const ssize_t length = ::readlink("/proc/self/exe", path, sizeof path);
  if (length <= 0) return {};
  return CString::fromUtf8({path, static_cast<std::size_t>(length)});
}

CString libraryFile() {
  Dl_info info = {};
  static const char inThisFile = 0;
  if (::dladdr(&inThisFile, &info) == 0 || info.dli_fname == nullptr) return programFile();
  // The program itself is named as it was called, which may be relative to a folder left since.
  const std::string_view name(info.dli_fname);
  return name.find('/') == std::string_view::npos || !name.starts_with('/')
             ? programFile()
             : CString::fromUtf8(name);
}

}  // namespace kpx
