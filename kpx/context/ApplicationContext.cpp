#include "kpx/context/ApplicationContext.h"

#include <utility>

#include "kpx/context/internal/ContextState.h"
#include "kpx/report/Error.h"

namespace kpx {
namespace {

using detail::ContextState;

template <class Value>
Value get(OperationNumber operation, Value ContextState::*member) {
  return Guarded(operation, Value(), [&] {
    const ContextState* const state = detail::contextState();
    return state ? state->*member : Value();
  });
}

template <class Value>
void set(OperationNumber operation, Value ContextState::*member, const Value& value) {
  Guarded(operation, [&] {
    // The copy is the part that can fail; until it is made, the old value stays. It is assigned,
    // since the records' copy constructors answer a failure with an empty record.
    Value copy = Value();
    copy = value;
    detail::changeContextState().*member = std::move(copy);
  });
}

/// Borrowed pointers and numbers: reading them cannot fail.
template <class Value>
Value peek(Value ContextState::*member) noexcept {
  const ContextState* const state = detail::contextState();
  return state ? state->*member : Value();
}

}  // namespace

CString kpxGetAppName() { return get("kpxGetAppName", &ContextState::applicationName); }
void kpxSetAppName(const CString& text) {
  set("kpxSetAppName", &ContextState::applicationName, text);
}
CString kpxGetProjectsFolder() {
  return get("kpxGetProjectsFolder", &ContextState::projectsFolder);
}
void kpxSetProjectsFolder(const CString& text) {
  set("kpxSetProjectsFolder", &ContextState::projectsFolder, text);
}
CString kpxGetProjectSubPath() {
  return get("kpxGetProjectSubPath", &ContextState::projectSubPath);
}
void kpxSetProjectSubPath(const CString& text) {
  set("kpxSetProjectSubPath", &ContextState::projectSubPath, text);
}
CProject kpxGetCurrentProject() { return get("kpxGetCurrentProject", &ContextState::project); }
void kpxSetCurrentProject(const CProject& project) {
  set("kpxSetCurrentProject", &ContextState::project, project);
}
CJob kpxGetCurrentJob() { return get("kpxGetCurrentJob", &ContextState::job); }
void kpxSetCurrentJob(const CJob& job) { set("kpxSetCurrentJob", &ContextState::job, job); }
CUser kpxGetCurrentSysUser() { return get("kpxGetCurrentSysUser", &ContextState::systemUser); }
void kpxSetCurrentSysUser(const CUser& user) {
  set("kpxSetCurrentSysUser", &ContextState::systemUser, user);
}
CUser kpxGetCurrentPrjUser() { return get("kpxGetCurrentPrjUser", &ContextState::projectUser); }
void kpxSetCurrentPrjUser(const CUser& user) {
  set("kpxSetCurrentPrjUser", &ContextState::projectUser, user);
}

CFGProjectSettings* kpxGetCurrentPrjSettings() noexcept {
  return peek(&ContextState::projectSettings);
}
void kpxSetCurrentPrjSettings(CFGProjectSettings* settings) {
  set("kpxSetCurrentPrjSettings", &ContextState::projectSettings, settings);
}
CFGProjectSettingsIntern* kpxGetCurrentPrjSettingsIntern() noexcept {
  return peek(&ContextState::projectSettingsIntern);
}
void kpxSetCurrentPrjSettingsIntern(CFGProjectSettingsIntern* settings) {
  set("kpxSetCurrentPrjSettingsIntern", &ContextState::projectSettingsIntern, settings);
}
CFGSystemSettings* kpxGetCurrentSysSettings() noexcept {
  return peek(&ContextState::systemSettings);
}
void kpxSetCurrentSysSettings(CFGSystemSettings* settings) {
  set("kpxSetCurrentSysSettings", &ContextState::systemSettings, settings);
}
CFGNASExport* kpxGetCurrentNASPointSettings() noexcept {
  return peek(&ContextState::nasPointSettings);
}
void kpxSetCurrentNASPointSettings(CFGNASExport* settings) {
  set("kpxSetCurrentNASPointSettings", &ContextState::nasPointSettings, settings);
}
CFrameWnd* kpxGetCurrentFrameWnd() noexcept { return peek(&ContextState::frameWindow); }
void kpxSetCurrentFrameWnd(CFrameWnd* window) {
  set("kpxSetCurrentFrameWnd", &ContextState::frameWindow, window);
}
WindowHandle kpxGetCurrentAppHWnd() noexcept { return peek(&ContextState::applicationWindow); }
void kpxSetCurrentAppHWnd(WindowHandle window) {
  set("kpxSetCurrentAppHWnd", &ContextState::applicationWindow, window);
}
WindowHandle kpxGetCurrentMainParentHWnd() noexcept {
  return peek(&ContextState::mainParentWindow);
}
void kpxSetCurrentMainParentHWnd(WindowHandle window) {
  set("kpxSetCurrentMainParentHWnd", &ContextState::mainParentWindow, window);
}
WindowHandle kpxGetCurrentDetailDlgHWnd() noexcept { return peek(&ContextState::detailDialog); }
void kpxSetCurrentDetailDlgHWnd(WindowHandle window) {
  set("kpxSetCurrentDetailDlgHWnd", &ContextState::detailDialog, window);
}
WindowHandle kpxGetCurrentLineEditDlgHWnd() noexcept { return peek(&ContextState::lineEditDialog); }
void kpxSetCurrentLineEditDlgHWnd(WindowHandle window) {
  set("kpxSetCurrentLineEditDlgHWnd", &ContextState::lineEditDialog, window);
}
int kpxGetAutoSaveEditSession() noexcept { return peek(&ContextState::autoSave); }
void kpxSetAutoSaveEditSession(int isOn) {
  set("kpxSetAutoSaveEditSession", &ContextState::autoSave, isOn);
}
std::int32_t kpxGetAutoSaveEditSessionIntervall() noexcept {
  return peek(&ContextState::autoSaveInterval);
}
void kpxSetAutoSaveEditSessionIntervall(std::int32_t interval) {
  set("kpxSetAutoSaveEditSessionIntervall", &ContextState::autoSaveInterval, interval);
}

void setHelpFile(const CString& path) { set("setHelpFile", &ContextState::helpFile, path); }

void setBinFolderApplication(const CString& name) {
  set("setBinFolderApplication", &ContextState::binFolderApplication, name);
}

}  // namespace kpx
