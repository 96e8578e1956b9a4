#include "kpx/context/Switches.h"

#include <memory>

#include "kpx/context/internal/SettingsValue.h"
#include "kpx/context/Operations.h"
#include "kpx/report/Error.h"
#include "kpx/text/NumberText.h"

namespace kpx {
namespace {

CString keyPath(std::u16string_view subkey) {
  CString path(detail::settingsKey);
  if (!subkey.empty()) {
    path += u'\\';
    path += subkey;
  }
  return path;
}

CString orMissing(const detail::SettingsValue& value, const CString& missing) {
  return value.isFound() ? value.text : missing;
}

int isOn(OperationNumber operation, std::u16string_view name) {
  return Guarded(operation, 0, [&] {
    return detail::textAsLong(detail::readSettingsValue({}, name).text) != 0 ? 1 : 0;
  });
}

}  // namespace

detail::SettingsValue detail::readSettingsValue(std::u16string_view subkey, const CString& name) {
  SettingsValue found;
  const CString path = keyPath(subkey);
  RegistryStatus worst = RegistryStatus::notFound;
  for (const RegistryRoot root : {RegistryRoot::currentUser, RegistryRoot::localMachine}) {
    std::unique_ptr<RegistryKey> key;
    RegistryValue value;
    RegistryResult result = registry().open(root, path, RegistryAccess::read, key);
    if (result) result = key->read(name, value);
    std::uint32_t number = 0;
    if (result && value.asNumber(number)) {
      found.text = detail::longAsText(static_cast<std::int32_t>(number));
    } else if (result && !value.asText(found.text)) {
      result.status = RegistryStatus::wrongType;
    }
    if (found.isFound()) {
      found.root = root;
      found.status = RegistryStatus::ok;
      return found;
    }
    if (!result && result.status != RegistryStatus::notFound) worst = result.status;
  }
  found.status = worst;
  return found;
}

int kpxIsTracing() { return isOn("kpxIsTracing"_context, u"Tracing"); }
int kpxIsTestMode() { return isOn("kpxIsTestMode"_context, u"TestMode"); }
int kpxShowKPXErrorMessages() { return isOn("kpxShowKPXErrorMessages"_context, u"ErrorMessage"); }
int kpxShowConnectingPointsAsHelp() {
  return isOn("kpxShowConnectingPointsAsHelp"_context, u"ShowConnectingPoints");
}
int kpxGetKPXSettingAskOverwriteCells() {
  return isOn("kpxGetKPXSettingAskOverwriteCells"_context, u"OverwriteCells");
}

CString kpxGetKPXSettingFromRegistry(const CString& name, const CString& missing) {
  return Guarded("kpxGetKPXSettingFromRegistry"_context, CString(),
                 [&] { return orMissing(detail::readSettingsValue({}, name), missing); });
}

CString kpxGetDataFromRegistry(const CString& subkey, const CString& name, const CString& missing) {
  return Guarded("kpxGetDataFromRegistry"_context, CString(),
                 [&] { return orMissing(detail::readSettingsValue(subkey, name), missing); });
}

int kpxSetDataToRegistry(const CString& subkey, const CString& name, const CString& text) {
  return Guarded("kpxSetDataToRegistry"_context, 0, [&] {
    std::unique_ptr<RegistryKey> key;
    return registry().create(RegistryRoot::currentUser, keyPath(subkey), RegistryAccess::readWrite,
                             key) &&
                   key->write(name, RegistryValue::ofText(text))
               ? 1
               : 0;
  });
}

}  // namespace kpx
