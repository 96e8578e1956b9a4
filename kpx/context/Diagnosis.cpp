#include "kpx/context/Diagnosis.h"

#include "kpx/context/Folders.h"
#include "kpx/context/internal/FoundFolder.h"
#include "kpx/context/internal/SettingsValue.h"
#include "kpx/context/Switches.h"
#include "kpx/context/TextStart.h"
#include "kpx/context/Trace.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/platform/Folders.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/TextTools.h"

namespace kpx {
namespace {

using detail::FolderSource;
using detail::FoundFolder;
using detail::SettingsValue;

CString rootName(RegistryRoot root) {
  return root == RegistryRoot::currentUser ? u"HKEY_CURRENT_USER" : u"HKEY_LOCAL_MACHINE";
}

CString sourceName(FolderSource source) {
  switch (source) {
    case FolderSource::none:
      break;
    case FolderSource::setByProgram:
      return u"set by the program";
    case FolderSource::environment:
      return u"environment variable KPX_INI";
    case FolderSource::currentUser:
      return u"HKEY_CURRENT_USER";
    case FolderSource::localMachine:
      return u"HKEY_LOCAL_MACHINE";
    case FolderSource::helpFile:
      return u"folder of the program";
    case FolderSource::iniFile:
      return u"KPX.INI";
  }
  return u"not set";
}

/// The clause that a failure gives, with the beginning that says what was tried.
CString failure(std::u16string_view what, const FileResult& result) {
  if (result) return {};
  CString text(what);
  text += u": ";
  text += result.message();
  return text;
}

CString folderProblem(const CString& path) {
  if (path.IsEmpty()) return u"no such folder is known";
  if (!detail::isAbsolutePath(path)) return u"the path is relative";
  FileInfo info;
  if (const FileResult result = fileSystem().info(path, info); !result) {
    return failure(u"cannot be looked at", result);
  }
  return info.kind == FileKind::folder ? CString() : u"that is no folder";
}

class Report {
 public:
  void topic(std::u16string_view name) { topic_ = name; }
  void add(std::u16string_view name, const CString& value, const CString& source,
           const CString& problem = CString()) {
    lines_.push_back({topic_, CString(name), value, source, problem});
  }
  void folder(std::u16string_view name, const FoundFolder& found) {
    add(name, found.path, sourceName(found.source), folderProblem(found.path));
  }
  std::vector<DiagnosisLine> take() { return std::move(lines_); }

 private:
  CString topic_;
  std::vector<DiagnosisLine> lines_;
};

void addRegistry(Report& report) {
  report.topic(u"registry");
  for (const RegistryRoot root : {RegistryRoot::currentUser, RegistryRoot::localMachine}) {
    std::unique_ptr<RegistryKey> key;
    const RegistryResult result =
        registry().open(root, CString(detail::settingsKey), RegistryAccess::read, key);
    // Most machines have the key in one root only.
    const bool isMissing = result.status == RegistryStatus::notFound;
    report.add(rootName(root),
               result      ? u"readable"
               : isMissing ? u"no settings"
                           : u"not readable",
               CString(detail::settingsKey), result || isMissing ? CString() : result.message());
  }
}

void addSwitches(Report& report) {
  report.topic(u"switches");
  for (const char16_t* const name :
       {u"Tracing", u"TestMode", u"ErrorMessage", u"ShowConnectingPoints", u"OverwriteCells"}) {
    const SettingsValue value = detail::readSettingsValue({}, name);
    const bool isOn = textAsLong(value.text) != 0;
    CString problem;
    if (value.isFound() && value.text != utlLongAsText(textAsLong(value.text))) {
      problem = u"'" + value.text + u"' is no number";
    } else if (value.status == RegistryStatus::wrongType) {
      problem = u"the value is neither text nor number";
    }
    report.add(name, isOn ? u"on" : u"off", value.isFound() ? rootName(value.root) : u"not set",
               problem);
  }
}

void addTexts(Report& report) {
  report.topic(u"texts");
  const SettingsValue language = detail::readSettingsValue({}, u"Language");
  CString value = language.text;
  value.Trim();
  const CString source = language.isFound() ? rootName(language.root) : u"not set";
  if (value.IsEmpty() || value == u"Deutsch [Default]") {
    report.add(u"language", u"Deutsch [Default]", source);
    return;
  }
  const CString file = languageFileName(value);
  report.add(u"language", value, source,
             file.IsEmpty() ? u"names no usable file in square brackets; the texts stay as they are"
                            : CString());
  for (const CString& name : {CString(u"ENG.LNG"), file}) {
    if (name.IsEmpty()) continue;
    const CString path = joinPath(textFolder(), name);
    FileInfo info;
    report.add(u"language file", path, u"program folder",
               failure(u"cannot be read", fileSystem().info(path, info)));
  }
}

void addLog(Report& report, std::u16string_view name, const CString& folder) {
  if (folder.IsEmpty()) {
    report.add(name, CString(), u"not set", u"the folder is not known");
    return;
  }
  const CString path = joinPath(folder, u"Error.log");
  FileInfo info;
  const FileResult result = fileSystem().info(path, info);
  CString problem;
  if (!result && result.status != FileStatus::notFound) {
    problem = failure(u"cannot be looked at", result);
  } else if (result && info.kind == FileKind::folder) {
    problem = u"that is a folder";
  } else if (result && !info.writable) {
    problem = u"this user may not write it";
  }
  CString source;
  if (result) {
    source.Format(u"%lld bytes", static_cast<long long>(info.size));
  } else {
    source = u"not there yet";
  }
  report.add(name, path, source, problem);
}

}  // namespace

std::vector<DiagnosisLine> diagnose() {
  Report report;
  report.topic(u"program");
  report.add(u"program file", programFile(), u"system");
  report.add(u"library file", libraryFile(), u"system");
  report.add(u"computer", kpxGetComputerName(), u"system");
  report.add(u"user", kpxGetUserName(), u"system");
  report.add(u"memory in MB", utlLongAsText(kpxGetMemSizeMB()), u"system");

  report.topic(u"folders");
  const FoundFolder programs = detail::findProgramFolder();
  const FoundFolder system = detail::findSystemFolder();
  const FoundFolder systemOrIni = detail::findSystemFolderOrIni();
  report.folder(u"program folder", programs);
  report.folder(u"system folder", system);
  if (systemOrIni.path != system.path) report.folder(u"system folder for set-up", systemOrIni);
  const CString project = kpxGetCurrentProjectPath();
  if (!project.IsEmpty()) {
    report.folder(u"project folder", {project, FolderSource::setByProgram});
  }
  report.add(u"home folder", kpxGetUserHomePath(), u"system", folderProblem(kpxGetUserHomePath()));
  // Not there until a program keeps something in it.
  report.add(u"user's data folder", kpxGetUserAppDataPath(), u"system");
  report.add(u"common data folder", kpxGetCommonAppDataPath(), u"system");

  addRegistry(report);
  addSwitches(report);
  addTexts(report);

  report.topic(u"logs");
  addLog(report, u"error log", system.path);
  if (!project.IsEmpty()) addLog(report, u"project's error log", project);
  const CString trace = traceFilePath();
  CString problem;
  if (kpxIsTracing()) {
    const int separator = trace.ReverseFind(trace.Find(u'\\') >= 0 ? u'\\' : u'/');
    problem = folderProblem(trace.Left(separator));
  }
  report.add(u"trace", trace, isTraceOpen() ? u"open" : u"not open", problem);
  return report.take();
}

}  // namespace kpx
