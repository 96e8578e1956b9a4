#pragma once

#include <chrono>
#include <string>
#include <vector>

#include "kpx/context/ApplicationContext.h"
#include "kpx/context/ErrorReport.h"
#include "kpx/context/Folders.h"
#include "kpx/context/internal/ContextState.h"
#include "kpx/context/Switches.h"
#include "kpx/platform/Clock.h"
#include "kpx/platform/Environment.h"
#include "kpx/platform/ExclusiveFile.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/platform/MessageBox.h"
#include "kpx/platform/Registry.h"
#include "tests/common/TemporaryFolder.h"
#include "tests/common/TestEnvironment.h"

namespace kpx {

/// A clock that always shows the same second.
class StoppedClock final : public Clock {
 public:
  StoppedClock() { setClock(this); }
  ~StoppedClock() override { setClock(nullptr); }
  DateTime localNow() override { return {2021, 3, 5, 8, 3, 4}; }
  ZoneResult localToUtc(const DateTime&, DateTime&) override { return ZoneResult::unknownZone; }
  ZoneResult utcToLocal(const DateTime&, DateTime&) override { return ZoneResult::unknownZone; }
  std::uint64_t counter() override { return count; }
  std::uint64_t counterFrequency() override { return 1000; }

  std::uint64_t count = 0;
};

/// A context of its own: a registry, a system folder and a project folder below a temporary one,
/// and a project, job and user to report. Everything is as before afterwards.
class ContextScope {
 public:
  ContextScope() {
    removeVariable("KPX_INI");
    fileSystem().createFolder(systemFolder());
    fileSystem().createFolder(projectFolder());
    kpxSetAppName(u"Kiebitz");
    kpxSetSystemPath(systemFolder());
    CProject project;
    project.Name = u"Aue";
    project.Path = projectFolder();
    kpxSetCurrentProject(project);
    CJob job;
    job.Name = u"Tag 1";
    kpxSetCurrentJob(job);
    CUser user;
    user.Name = u"Möller";
    kpxSetCurrentSysUser(user);
  }
  ~ContextScope() {
    detail::releaseContext();
    setLogPatience(std::chrono::milliseconds(250));
    setMessageBoxHandler(nullptr);
    removeVariable("KPX_INI");
  }
  ContextScope(const ContextScope&) = delete;
  ContextScope& operator=(const ContextScope&) = delete;

  CString systemFolder() const { return folder / "system"; }
  CString projectFolder() const { return folder / "project"; }

  static void store(RegistryRoot root, const CString& key, const CString& name,
                    const RegistryValue& value) {
    std::unique_ptr<RegistryKey> open;
    registry().create(root, key, RegistryAccess::readWrite, open);
    open->write(name, value);
  }
  static void switchOn(const CString& name) { kpxSetDataToRegistry(CString(), name, u"1"); }

  /// The lines of a log, without their ends; what follows the last line feed is one, too.
  std::vector<std::string> log(const char* place) const {
    const std::string bytes = folder.read(std::string(place) + "/Error.log");
    std::vector<std::string> lines;
    for (std::size_t from = 0; from < bytes.size();) {
      const std::size_t end = std::min(bytes.find('\n', from), bytes.size());
      lines.push_back(bytes.substr(from, end - from));
      if (systemLineEnd == "\r\n" && lines.back().ends_with('\r')) lines.back().pop_back();
      from = end + 1;
    }
    return lines;
  }

  /// The user as each line of a log ends with it.
  static std::string userField() {
    return "Möller (" + kpxGetComputerName().utf8() + ", " + std::to_string(kpxGetMemSizeMB()) +
           " MB)";
  }

  TemporaryFolder folder;

 private:
  TemporaryRegistry registry_;
};

}  // namespace kpx
