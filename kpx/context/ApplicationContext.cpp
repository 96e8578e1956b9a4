#include "kpx/context/ApplicationContext.h"

#include <utility>

#include "kpx/context/internal/ContextState.h"
#include "kpx/context/Operations.h"
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

CString kpxGetAppName() { return get("kpxGetAppName"_context, &ContextState::applicationName); }
void kpxSetAppName(const CString& text) {
  set("kpxSetAppName"_context, &ContextState::applicationName, text);
}
CString kpxGetProjectsFolder() {
  return get("kpxGetProjectsFolder"_context, &ContextState::projectsFolder);
}
void kpxSetProjectsFolder(const CString& text) {
  set("kpxSetProjectsFolder"_context, &ContextState::projectsFolder, text);
}
CString kpxGetProjectSubPath() {
  return get("kpxGetProjectSubPath"_context, &ContextState::projectSubPath);
}
void kpxSetProjectSubPath(const CString& text) {
  set("kpxSetProjectSubPath"_context, &ContextState::projectSubPath, text);
}
CProject kpxGetCurrentProject() {
  return get("kpxGetCurrentProject"_context, &ContextState::project);
}
void kpxSetCurrentProject(const CProject& project) {
  set("kpxSetCurrentProject"_context, &ContextState::project, project);
}
CJob kpxGetCurrentJob() { return get("kpxGetCurrentJob"_context, &ContextState::job); }
void kpxSetCurrentJob(const CJob& job) { set("kpxSetCurrentJob"_context, &ContextState::job, job); }
CUser kpxGetCurrentSysUser() {
  return get("kpxGetCurrentSysUser"_context, &ContextState::systemUser);
}
void kpxSetCurrentSysUser(const CUser& user) {
  set("kpxSetCurrentSysUser"_context, &ContextState::systemUser, user);
}
CUser kpxGetCurrentPrjUser() {
  return get("kpxGetCurrentPrjUser"_context, &ContextState::projectUser);
}
void kpxSetCurrentPrjUser(const CUser& user) {
  set("kpxSetCurrentPrjUser"_context, &ContextState::projectUser, user);
}

CFGProjectSettings* kpxGetCurrentPrjSettings() noexcept {
  return peek(&ContextState::projectSettings);
}
void kpxSetCurrentPrjSettings(CFGProjectSettings* settings) {
  set("kpxSetCurrentPrjSettings"_context, &ContextState::projectSettings, settings);
}
CFGProjectSettingsIntern* kpxGetCurrentPrjSettingsIntern() noexcept {
  return peek(&ContextState::projectSettingsIntern);
}
void kpxSetCurrentPrjSettingsIntern(CFGProjectSettingsIntern* settings) {
  set("kpxSetCurrentPrjSettingsIntern"_context, &ContextState::projectSettingsIntern, settings);
}
CFGSystemSettings* kpxGetCurrentSysSettings() noexcept {
  return peek(&ContextState::systemSettings);
}
void kpxSetCurrentSysSettings(CFGSystemSettings* settings) {
  set("kpxSetCurrentSysSettings"_context, &ContextState::systemSettings, settings);
}
CFGNASExport* kpxGetCurrentNASPointSettings() noexcept {
  return peek(&ContextState::nasPointSettings);
}
void kpxSetCurrentNASPointSettings(CFGNASExport* settings) {
  set("kpxSetCurrentNASPointSettings"_context, &ContextState::nasPointSettings, settings);
}
CFrameWnd* kpxGetCurrentFrameWnd() noexcept { return peek(&ContextState::frameWindow); }
void kpxSetCurrentFrameWnd(CFrameWnd* window) {
  set("kpxSetCurrentFrameWnd"_context, &ContextState::frameWindow, window);
}
WindowHandle kpxGetCurrentAppHWnd() noexcept { return peek(&ContextState::applicationWindow); }
void kpxSetCurrentAppHWnd(WindowHandle window) {
  set("kpxSetCurrentAppHWnd"_context, &ContextState::applicationWindow, window);
}
WindowHandle kpxGetCurrentMainParentHWnd() noexcept {
  return peek(&ContextState::mainParentWindow);
}
void kpxSetCurrentMainParentHWnd(WindowHandle window) {
  set("kpxSetCurrentMainParentHWnd"_context, &ContextState::mainParentWindow, window);
}
WindowHandle kpxGetCurrentDetailDlgHWnd() noexcept { return peek(&ContextState::detailDialog); }
void kpxSetCurrentDetailDlgHWnd(WindowHandle window) {
  set("kpxSetCurrentDetailDlgHWnd"_context, &ContextState::detailDialog, window);
}
WindowHandle kpxGetCurrentLineEditDlgHWnd() noexcept { return peek(&ContextState::lineEditDialog); }
void kpxSetCurrentLineEditDlgHWnd(WindowHandle window) {
  set("kpxSetCurrentLineEditDlgHWnd"_context, &ContextState::lineEditDialog, window);
}
int kpxGetAutoSaveEditSession() noexcept { return peek(&ContextState::autoSave); }
void kpxSetAutoSaveEditSession(int isOn) {
  set("kpxSetAutoSaveEditSession"_context, &ContextState::autoSave, isOn);
}
std::int32_t kpxGetAutoSaveEditSessionIntervall() noexcept {
  return peek(&ContextState::autoSaveInterval);
}
void kpxSetAutoSaveEditSessionIntervall(std::int32_t interval) {
  set("kpxSetAutoSaveEditSessionIntervall"_context, &ContextState::autoSaveInterval, interval);
}

void setHelpFile(const CString& path) { set("setHelpFile"_context, &ContextState::helpFile, path); }

void setBinFolderApplication(const CString& name) {
  set("setBinFolderApplication"_context, &ContextState::binFolderApplication, name);
}

}  // namespace kpx
