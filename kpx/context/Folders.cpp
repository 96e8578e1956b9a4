#include "kpx/context/Folders.h"

#include <limits>
#include <memory>

#include "kpx/context/internal/ContextState.h"
#include "kpx/context/internal/FoundFolder.h"
#include "kpx/context/internal/SettingsValue.h"
#include "kpx/context/Operations.h"
#include "kpx/context/Trace.h"
#include "kpx/platform/Environment.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/platform/Folders.h"
#include "kpx/report/Error.h"
#include "kpx/support/ini/CIniEx.h"
#include "kpx/text/TextTools.h"

namespace kpx {
namespace {

using detail::FolderSource;
using detail::FoundFolder;

FoundFolder fromRegistry(const CString& name) {
  detail::SettingsValue value = detail::readSettingsValue(detail::installSubkey, name);
  if (!value.isFound()) return {};
  return {std::move(value.text), value.root == RegistryRoot::currentUser
                                     ? FolderSource::currentUser
                                     : FolderSource::localMachine};
}

CString folderOf(const CString& file) {
  const std::size_t last = file.view().find_last_of(u"/\\");
  return last == std::u16string_view::npos ? CString() : file.Left(static_cast<int>(last));
}

void addBinFolder(CString& folder) {
  const detail::ContextState* const state = detail::contextState();
  if (!state || state->applicationName.IsEmpty() ||
      state->applicationName != state->binFolderApplication) {
    return;
  }
  folder = detail::joinPath(folder, u"bin");
}

FoundFolder fromEnvironmentOrRegistry() {
  CString folder = environmentVariable(u"KPX_INI");
  traceLine("kpxGetProgPath Umgebungsvariable ProgPath: %s \n", folder);
  if (!folder.IsEmpty()) return {std::move(folder), FolderSource::environment};
  FoundFolder found = fromRegistry(u"ProgPath");
  traceLine("kpxGetProgPath Registry ProgPath: %s \n", found.path);
  return found;
}

}  // namespace

FoundFolder detail::findProgramFolder() {
  const CString* const known = programFolder.get();
  traceLine("kpxGetProgPath m_strProgPath: %s \n", known ? known->view() : std::u16string_view());
  if (known) return {*known, FolderSource::setByProgram};
  FoundFolder found = fromEnvironmentOrRegistry();
  if (!found.path.IsEmpty()) {
    addBinFolder(found.path);
    return found;
  }
  const ContextState* const state = contextState();
  const CString helpFile = state ? state->helpFile : CString();
  found = {folderOf(helpFile.IsEmpty() ? programFile() : helpFile), FolderSource::helpFile};
  traceLine("kpxGetProgPath Pfad der Hilfedatei ProgPath: %s \n", found.path);
  return found;
}

FoundFolder detail::findSystemFolder() {
  if (const CString* const known = systemFolder.get()) return {*known, FolderSource::setByProgram};
  return fromRegistry(u"SysPath");
}

FoundFolder detail::findSystemFolderOrIni() {
  FoundFolder found = fromRegistry(u"SysPath");
  if (!found.path.IsEmpty()) return found;
  CIniEx ini;
  CString value;
  if (!ini.ReadFile(detail::joinPath(kpxGetProgPath(), u"KPX.INI")) ||
      !ini.GetKeyData(u"KPX", u"SYSTEM_PATH", value)) {
    return {};
  }
  // Values are handed out with a line break for a backslash and "n", with which the names of
  // folders may well begin; no path has a line break.
  value.Replace(u" \n", u"\\n");
  return {std::move(value), FolderSource::iniFile};
}

CString kpxGetProgPath() {
  return Guarded("kpxGetProgPath"_context, CString(), [] {
    FoundFolder found = detail::findProgramFolder();
    if (!found.path.IsEmpty() && found.source != FolderSource::setByProgram) {
      detail::programFolder.keep(found.path);
    }
    return std::move(found.path);
  });
}

void kpxSetProgPath(const CString& path) {
  Guarded("kpxSetProgPath"_context, [&] { detail::programFolder.set(path); });
}

CString kpxGetSystemPath() {
  return Guarded("kpxGetSystemPath"_context, CString(), [] {
    FoundFolder found = detail::findSystemFolder();
    if (!found.path.IsEmpty() && found.source != FolderSource::setByProgram) {
      detail::systemFolder.keep(found.path);
    }
    return std::move(found.path);
  });
}

void kpxSetSystemPath(const CString& path) {
  Guarded("kpxSetSystemPath"_context, [&] { detail::systemFolder.set(path); });
}

CString kpxGetSystemPathFromRegistryOrIniFile() {
  return Guarded("kpxGetSystemPathFromRegistryOrIniFile"_context, CString(),
                 [] { return detail::findSystemFolderOrIni().path; });
}

CString kpxGetCurrentProjectPath() {
  return Guarded("kpxGetCurrentProjectPath"_context, CString(), [] {
    const detail::ContextState* const state = detail::contextState();
    if (!state) return CString();
    if (detail::isAbsolutePath(state->project.Path)) return state->project.Path;
    return state->project.Path.IsEmpty()
               ? CString()
               : detail::joinPath(state->projectsFolder, state->project.Path);
  });
}

CString kpxGetComputerName() {
  return Guarded("kpxGetComputerName"_context, CString(), [] { return detail::computerName(); });
}
CString kpxGetUserName() {
  return Guarded("kpxGetUserName"_context, CString(), [] { return detail::userName(); });
}
CString kpxGetUserHomePath() {
  return Guarded("kpxGetUserHomePath"_context, CString(), [] { return detail::userHomeFolder(); });
}
CString kpxGetUserAppDataPath() {
  return Guarded("kpxGetUserAppDataPath"_context, CString(),
                 [] { return detail::userDataFolder(); });
}
CString kpxGetCommonAppDataPath() {
  return Guarded("kpxGetCommonAppDataPath"_context, CString(),
                 [] { return detail::commonDataFolder(); });
}

std::int32_t kpxGetMemSizeMB() noexcept {
  constexpr std::uint64_t limit = std::numeric_limits<std::int32_t>::max();
  const std::uint64_t megabytes = detail::physicalMemoryBytes() >> 20;
  return static_cast<std::int32_t>(megabytes < limit ? megabytes : limit);
}

std::int64_t kpxGetFileSize(const CString& path) {
  return Guarded("kpxGetFileSize"_context, std::int64_t{0}, [&] {
    std::unique_ptr<InputFile> file;
    return fileSystem().openInput(path, file) ? static_cast<std::int64_t>(file->size())
                                              : std::int64_t{0};
  });
}

}  // namespace kpx
