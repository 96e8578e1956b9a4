#include <gtest/gtest.h>

#include <array>

#include "kpx/context/WindowTitle.h"
#include "kpx/platform/Folders.h"
#include "kpx/settings/AllSettings.h"
#include "kpx/support/files/CKpxBaseObjectsUtil.h"
#include "kpx/support/texts/TextStore.h"
#include "tests/common/FailingAllocations.h"
#include "tests/common/TextPrinter.h"
#include "tests/context/ContextScope.h"

namespace kpx {
namespace {

constexpr std::u16string_view installKey = u"Software\\KPX\\Settings\\Install";

TEST(Context, RecordsAreCopiedInAndOut) {
  ContextScope scope;
  CProject project = kpxGetCurrentProject();
  project.Name = u"changed after setting";
  EXPECT_EQ(kpxGetCurrentProject().Name, u"Aue");
  CUser user;
  user.Name = u"Projektnutzer";
  kpxSetCurrentPrjUser(user);
  EXPECT_EQ(kpxGetCurrentSysUser().Name, u"Möller");
  EXPECT_EQ(kpxGetCurrentPrjUser().Name, u"Projektnutzer");
}

TEST(Context, SetterWithoutMemoryLeavesTheOldValue) {
  ContextScope scope;
  CProject project;
  project.Name = CString(u'x', 1000);
  {
    FailingAllocations failing(0);
    kpxSetCurrentProject(project);
  }
  EXPECT_EQ(kpxGetCurrentProject().Name, u"Aue");
}

template <class Pointer>
Pointer address(int number) {
  static std::array<char, 16> places;
  return reinterpret_cast<Pointer>(&places[static_cast<std::size_t>(number)]);
}

TEST(Context, NoGetterAnswersTheValueOfAnotherSetter) {
  ContextScope scope;
  kpxSetProjectsFolder(u"a");
  kpxSetProjectSubPath(u"b");
  kpxSetCurrentPrjSettings(address<CFGProjectSettings*>(0));
  kpxSetCurrentPrjSettingsIntern(address<CFGProjectSettingsIntern*>(1));
  kpxSetCurrentSysSettings(address<CFGSystemSettings*>(2));
  kpxSetCurrentNASPointSettings(address<CFGNASExport*>(3));
  kpxSetCurrentFrameWnd(address<CFrameWnd*>(4));
  kpxSetCurrentAppHWnd(address<WindowHandle>(5));
  kpxSetCurrentMainParentHWnd(address<WindowHandle>(6));
  kpxSetCurrentDetailDlgHWnd(address<WindowHandle>(7));
  kpxSetCurrentLineEditDlgHWnd(address<WindowHandle>(8));
  kpxSetAutoSaveEditSession(1);
  kpxSetAutoSaveEditSessionIntervall(600);
  EXPECT_EQ(kpxGetProjectsFolder(), u"a");
  EXPECT_EQ(kpxGetProjectSubPath(), u"b");
  EXPECT_EQ(kpxGetCurrentPrjSettings(), address<CFGProjectSettings*>(0));
  EXPECT_EQ(kpxGetCurrentPrjSettingsIntern(), address<CFGProjectSettingsIntern*>(1));
  EXPECT_EQ(kpxGetCurrentSysSettings(), address<CFGSystemSettings*>(2));
  EXPECT_EQ(kpxGetCurrentNASPointSettings(), address<CFGNASExport*>(3));
  EXPECT_EQ(kpxGetCurrentFrameWnd(), address<CFrameWnd*>(4));
  EXPECT_EQ(kpxGetCurrentAppHWnd(), address<WindowHandle>(5));
  EXPECT_EQ(kpxGetCurrentMainParentHWnd(), address<WindowHandle>(6));
  EXPECT_EQ(kpxGetCurrentDetailDlgHWnd(), address<WindowHandle>(7));
  EXPECT_EQ(kpxGetCurrentLineEditDlgHWnd(), address<WindowHandle>(8));
  EXPECT_EQ(kpxGetAutoSaveEditSession(), 1);
  EXPECT_EQ(kpxGetAutoSaveEditSessionIntervall(), 600);
}

// --- folders ------------------------------------------------------------------------------------

TEST(Context, ProgramFolderIsTheFirstThatIsFound) {
  const auto end = std::u16string_view(programFile()).find_last_of(u"/\\");
  const CString fromProgramFile = programFile().Left(static_cast<int>(end));
  const struct {
    const char* what;
    const char16_t *set, *environment, *user, *machine, *help, *application;
    CString expected;
  } cases[] = {
      {"set", u"/set", u"/env", u"/user", u"/machine", u"/help/a.hlp", u"Kiebitz", u"/set"},
      {"environment", u"", u"/env", u"/user", u"/machine", u"/help/a.hlp", u"", u"/env"},
      {"user", u"", u"", u"/user", u"/machine", u"/help/a.hlp", u"", u"/user"},
      {"machine", u"", u"", u"", u"/machine", u"/help/a.hlp", u"", u"/machine"},
      {"help file", u"", u"", u"", u"", u"C:\\help\\a.hlp", u"Kiebitz", u"C:\\help"},
      {"program file", u"", u"", u"", u"", u"", u"", fromProgramFile},
      {"bin", u"", u"/env", u"", u"", u"", u"Kiebitz", u"/env/bin"},
      {"bin after separator", u"", u"", u"C:\\kpx\\", u"", u"", u"Kiebitz", u"C:\\kpx\\bin"},
      {"bin of another", u"", u"", u"/user", u"", u"", u"Milan", u"/user"},
  };
  for (const auto& each : cases) {
    ContextScope scope;
    const auto store = [&](RegistryRoot root, const char16_t* value) {
      if (*value) scope.store(root, CString(installKey), u"ProgPath", RegistryValue::ofText(value));
    };
    kpxSetProgPath(each.set);
    if (*each.environment) setVariable("KPX_INI", each.environment);
    store(RegistryRoot::currentUser, each.user);
    store(RegistryRoot::localMachine, each.machine);
    setHelpFile(each.help);
    setBinFolderApplication(each.application);
    EXPECT_EQ(kpxGetProgPath(), each.expected) << each.what;
    // What was found is kept; the empty text has it looked for anew.
    setVariable("KPX_INI", u"/later");
    EXPECT_EQ(kpxGetProgPath(), each.expected) << each.what;
    setBinFolderApplication(u"");
    kpxSetProgPath(u"");
    EXPECT_EQ(kpxGetProgPath(), u"/later") << each.what;
  }
}

TEST(Context, SystemFolderComesFromTheRegistryElseFromTheIniFile) {
  ContextScope scope;
  kpxSetSystemPath(u"");
  kpxSetProgPath(scope.folder / "system");
  EXPECT_EQ(kpxGetSystemPath(), u"");
  EXPECT_EQ(kpxGetSystemPathFromRegistryOrIniFile(), u"");
  // The reader of INI files takes a backslash and "n" for a line break.
  scope.folder.write("system/KPX.INI", "[KPX]\r\nSYSTEM_PATH=D:\\neu\\nord\r\n");
  EXPECT_EQ(kpxGetSystemPathFromRegistryOrIniFile(), u"D:\\neu\\nord");
  EXPECT_EQ(kpxGetSystemPath(), u"");
  scope.store(RegistryRoot::localMachine, CString(installKey), u"SysPath",
              RegistryValue::ofText(u"/machine"));
  EXPECT_EQ(kpxGetSystemPathFromRegistryOrIniFile(), u"/machine");
  scope.store(RegistryRoot::currentUser, CString(installKey), u"SysPath",
              RegistryValue::ofText(u"/user"));
  EXPECT_EQ(kpxGetSystemPathFromRegistryOrIniFile(), u"/user");
  EXPECT_EQ(kpxGetSystemPath(), u"/user");
  EXPECT_EQ(CKpxBaseObjectsUtil::CutSystemPath(u"/user/a.cfg"), u"a.cfg");
}

TEST(Context, ProjectFolder) {
  const struct {
    const char16_t *projects, *path, *expected;
  } cases[] = {
      {u"/projects", u"", u""},
      {u"/projects", u"aue", u"/projects/aue"},
      {u"/projects", u"/elsewhere/aue", u"/elsewhere/aue"},
      {u"C:\\Projekte", u"D:\\aue", u"D:\\aue"},
      {u"", u"aue", u"aue"},
  };
  for (const auto& each : cases) {
    ContextScope scope;
    kpxSetProjectsFolder(each.projects);
    CProject project;
    project.Path = each.path;
    kpxSetCurrentProject(project);
    EXPECT_EQ(kpxGetCurrentProjectPath(), each.expected);
  }
}

TEST(Context, FileSizeIsThatOfAFileThatCanBeRead) {
  ContextScope scope;
  scope.folder.write("a", "12345");
  EXPECT_EQ(kpxGetFileSize(scope.folder / "a"), 5);
  EXPECT_EQ(kpxGetFileSize(scope.folder / "none"), 0);
  EXPECT_EQ(kpxGetFileSize(scope.folder / "system"), 0);
}

// --- switches -----------------------------------------------------------------------------------

TEST(Context, SwitchesAreTheUsersElseTheMachines) {
  ContextScope scope;
  const CString key(u"Software\\KPX\\Settings");
  EXPECT_EQ(kpxIsTestMode(), 0);
  EXPECT_EQ(kpxGetKPXSettingAskOverwriteCells(), 0);
  scope.store(RegistryRoot::localMachine, key, u"TestMode", RegistryValue::ofNumber(1));
  EXPECT_EQ(kpxIsTestMode(), 1);
  scope.store(RegistryRoot::currentUser, key, u"TestMode", RegistryValue::ofText(u"0"));
  EXPECT_EQ(kpxIsTestMode(), 0);
  scope.store(RegistryRoot::currentUser, key, u"TestMode", RegistryValue::ofText(u""));
  EXPECT_EQ(kpxIsTestMode(), 1) << "an empty value counts as none";
  scope.store(RegistryRoot::currentUser, key, u"TestMode", RegistryValue::ofBytes("\1\0"));
  EXPECT_EQ(kpxIsTestMode(), 1) << "a value that is neither text nor number counts as none";
  EXPECT_EQ(kpxIsTracing() + kpxShowKPXErrorMessages() + kpxShowConnectingPointsAsHelp(), 0);
}

TEST(Context, DataOfModulesComesBack) {
  ContextScope scope;
  EXPECT_EQ(kpxGetDataFromRegistry(u"Modul\\A", u"Name", u"none"), u"none");
  EXPECT_EQ(kpxSetDataToRegistry(u"Modul\\A", u"Name", u"Wert ä"), 1);
  EXPECT_EQ(kpxGetDataFromRegistry(u"modul\\a", u"NAME"), u"Wert ä");
  EXPECT_EQ(kpxGetKPXSettingFromRegistry(u"Name"), u"");
  EXPECT_EQ(kpxSetDataToRegistry(u"", u"Language", u"English [ENG.LNG]"), 1);
  EXPECT_EQ(kpxGetKPXSettingFromRegistry(u"Language"), u"English [ENG.LNG]");
}

// --- titles -------------------------------------------------------------------------------------

CString lastTitle;

TEST(Context, WindowTitle) {
  ContextScope scope;
  EXPECT_EQ(kpxSetWindowTitle(), 0) << "nobody is there to set it";
  setWindowTitleHandler([](WindowHandle window, const CString& title) {
    lastTitle = title;
    return window == address<WindowHandle>(5);
  });
  kpxSetCurrentAppHWnd(address<WindowHandle>(5));
  EXPECT_EQ(kpxSetWindowTitleProject(), 1);
  EXPECT_EQ(lastTitle, u"Kiebitz - Aue");
  kpxSetCurrentProject(CProject());
  EXPECT_EQ(kpxSetWindowTitleProject(), 1);
  EXPECT_EQ(lastTitle, u"Kiebitz");
  EXPECT_EQ(kpxSetWindowTitle(), 1);
  setWindowTitleHandler(nullptr);
}

}  // namespace
}  // namespace kpx
