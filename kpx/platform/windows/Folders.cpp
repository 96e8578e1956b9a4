#include "kpx/platform/Folders.h"

#include <windows.h>
// The header above comes first: this one builds on it.
#include <shlobj.h>

#include <string>

namespace kpx {
namespace {

CString shellFolder(int which) {
  wchar_t path[MAX_PATH] = {};
  // Whether it exists is not asked: it may lie on a server that does not answer.
  which |= CSIDL_FLAG_DONT_VERIFY;
  return SUCCEEDED(::SHGetFolderPathW(nullptr, which, nullptr, SHGFP_TYPE_CURRENT, path))
             ? CString(path)
             : CString();
}

CString fileOfModule(HMODULE module) {
  for (std::wstring path(MAX_PATH, L'\0');; path.resize(path.size() * 2)) {
    const DWORD length = ::GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    if (length < path.size()) {
      path.resize(length);
      return CString(path);
    }
    if (path.size() > 65536) return {};
  }
}

}  // namespace

CString detail::userHomeFolder() { return shellFolder(CSIDL_PROFILE); }

CString detail::userDataFolder() { return shellFolder(CSIDL_APPDATA); }

CString detail::commonDataFolder() { return shellFolder(CSIDL_COMMON_APPDATA); }

CString detail::debugFolder() { return u"C:\\Temp\\TmvDebug"; }

CString programFile() { return fileOfModule(nullptr); }

CString libraryFile() {
  static const char inThisModule = 0;
  HMODULE module = nullptr;
  ::GetModuleHandleExW(
      GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
      reinterpret_cast<const wchar_t*>(&inThisModule), &module);
  return fileOfModule(module);
}

}  // namespace kpx
