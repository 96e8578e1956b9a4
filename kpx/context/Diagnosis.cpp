#include "kpx/context/Diagnosis.h"

#include <filesystem>

#include "kpx/context/Folders.h"
#include "kpx/context/internal/FoundFolder.h"
#include "kpx/context/internal/SettingsValue.h"
#include "kpx/context/Switches.h"
#include "kpx/context/TextStart.h"
#include "kpx/context/Trace.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/platform/Folders.h"
#include "kpx/support/texts/LanguageFile.h"
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
    const CString file = registry().fileOf(root);
    report.add(rootName(root),
               result      ? u"has settings"
               : isMissing ? u"no settings"
                           : u"not readable",
               file.IsEmpty() ? CString(detail::settingsKey) : file,
               result || isMissing ? CString() : result.message());
  }
}

void addSwitches(Report& report) {
  report.topic(u"switches");
  for (const char16_t* const name :
       {u"Tracing", u"TestMode", u"ErrorMessage", u"ShowConnectingPoints", u"OverwriteCells"}) {
    const SettingsValue value = detail::readSettingsValue({}, name);
    const bool isOn = detail::textAsLong(value.text) != 0;
    CString problem;
    if (value.isFound() && value.text != detail::longAsText(detail::textAsLong(value.text))) {
      problem = u"'" + value.text + u"' is no number";
    } else if (value.status == RegistryStatus::wrongType) {
      problem = u"the value is neither text nor number";
    }
    report.add(name, isOn ? u"on" : u"off", value.isFound() ? rootName(value.root) : u"not set",
               problem);
  }
}

/// What the start-up of the texts makes of a language file that is not as it should be.
CString languageProblem(const CString& path) {
  FileBytes bytes;
  if (const FileResult result = fileSystem().read(path, bytes); !result) {
    return failure(u"is left out", result);
  }
  TextList list;
  if (readLanguageFile(bytes.view(), list).isWhole) return {};
  return u"ends early, so the start-up stops here and reports error 71472";
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
  report.add(u"language", value, source,
             languageFileName(value).IsEmpty()
                 ? u"names no file that a language can have, so the texts are English"
                 : CString());
  for (const CString& path : languageFiles(value)) {
    report.add(u"language file", path, u"program folder", languageProblem(path));
  }
}

void addLog(Report& report, std::u16string_view name, const CString& folder) {
  // An error log is written whether its folder is known or not.
  CString top = folder;
  top.TrimRight(u"/\\");
  top += static_cast<char16_t>(std::filesystem::path::preferred_separator);
  const CString path = top + u"Error.log";
  FileInfo info;
  const FileResult result = fileSystem().info(path, info);
  CString source(u"not there yet");
  CString problem;
  if (result) {
    source.Format(u"%lld bytes", static_cast<long long>(info.size));
    problem = info.kind == FileKind::folder ? u"that is a folder"
              : !info.writable              ? u"this user may not write it"
                                            : u"";
  } else if (result.status != FileStatus::notFound) {
    problem = failure(u"cannot be looked at", result);
  } else if (const FileResult above = fileSystem().info(top, info); !above) {
    problem = failure(u"its folder cannot be looked at", above);
  } else if (!info.writable) {
    problem = u"this user may not create it";
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
  report.add(u"memory in MB", detail::longAsText(kpxGetMemSizeMB()), u"system");

  report.topic(u"folders");
  const FoundFolder programs = detail::findProgramFolder();
  const FoundFolder system = detail::findSystemFolder();
  const FoundFolder systemOrIni = detail::findSystemFolderOrIni();
  report.folder(u"program folder", programs);
  if (system.path.IsEmpty()) {
    report.add(u"system folder", {}, sourceName(system.source),
               u"the registry value SysPath below Software\\KPX\\Settings\\Install is missing");
  } else {
    report.folder(u"system folder", system);
  }
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
