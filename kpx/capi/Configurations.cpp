#include "kpx/capi/internal/Answer.h"
#include "kpx/capi/Operations.h"
#include "kpx/settings/Catalogue.h"
#include "kpx/support/texts/TextStore.h"

using namespace kpx;        // NOLINT(google-build-using-namespace): the functions are global
using namespace kpx::capi;  // NOLINT(google-build-using-namespace)

namespace {

/// The class of a name whose objects are configurations; nullptr, and a failure, if there is none.
const SettingsClass* classNamed(std::u16string_view name) {
  const SettingsClass* const found = findSettingsClass(name);
  if (found && found->isConfiguration()) return found;
  fail(KPX_C_UNKNOWN_CLASS,
       u"'" + CString(name) +
           (found ? u"' is the class of rows or tables, not of configurations" : u"' is no class"));
  return nullptr;
}

/// KPX_C_OK when the document has such a configuration and its class is known.
std::int32_t checkConfiguration(const kpx_c_document* document, std::int32_t configuration) {
  if (!isDocument(document)) return failDocument();
  if (configuration < 0 || configuration >= document->document.count()) {
    return fail(KPX_C_NO_CONFIGURATION, u"the document has no configuration of this number");
  }
  if (!document->document.classOf(configuration)) {
    return fail(KPX_C_UNKNOWN_CLASS, u"the class of the configuration is not known");
  }
  return KPX_C_OK;
}

/// Which setting a call is about.
struct Place {
  const kpx_c_document* document;
  std::int32_t configuration;
  const kpx_c_unit* key;
  std::int32_t keyLength;
};

/// Calls `body` with the key, once document, configuration and key are found to be arguments. It
/// answers a DocumentResult.
template <class Body>
std::int32_t atSetting(const Place& place, Body&& body) {
  if (const std::int32_t code = checkConfiguration(place.document, place.configuration)) {
    return code;
  }
  const TextArgument key(place.key, place.keyLength);
  if (!key.isValid) return failArgument();
  const DocumentResult result = body(key.text);
  if (result.ok()) return KPX_C_OK;
  CString subject(place.document->document.classOf(place.configuration)->name);
  subject += u'.';
  subject += key.text;
  return fail(result, subject);
}

/// Calls `body` with the definition of a setting and answers its code.
template <class Body>
std::int32_t atDefinition(const Place& place, Body&& body) {
  std::int32_t code = KPX_C_OK;
  const std::int32_t found = atSetting(place, [&](std::u16string_view key) {
    const SettingDef* const setting =
        place.document->document.findSetting(place.configuration, key);
    if (!setting) return DocumentResult{DocumentOutcome::unknownKey};
    code = body(*setting);
    return DocumentResult{};
  });
  return found != KPX_C_OK ? found : code;
}

std::int32_t typeOf(ValueKind kind) noexcept {
  switch (kind) {
    case ValueKind::integer:
      return KPX_C_INTEGER;
    case ValueKind::flag:
      return KPX_C_FLAG;
    case ValueKind::enumeration:
      return KPX_C_ENUMERATION;
    case ValueKind::real:
      return KPX_C_REAL;
    case ValueKind::text:
      return KPX_C_TEXT;
  }
  return KPX_C_TEXT;
}

/// Many captions and groups are stored as the number of a text.
CString currentText(CString stored) {
  constexpr int mostDigits = 9;  // fits into 32 bits
  std::int32_t number = 0;
  if (stored.IsEmpty() || stored.GetLength() > mostDigits) return stored;
  for (const char16_t unit : stored.view()) {
    if (unit < u'0' || unit > u'9') return stored;
    number = 10 * number + (unit - u'0');
  }
  const std::u16string_view text = storedText(number);
  return text.empty() ? stored : CString(text);
}

}  // namespace

// --- configurations ----------------------------------------------------------------------------

int32_t kpx_c_count(const kpx_c_document* document, int32_t* count) {
  return answer("kpx_c_count"_capi, [&] {
    if (count) *count = 0;
    if (!isDocument(document)) return failDocument();
    if (!count) return failArgument();
    *count = document->document.count();
    return KPX_C_OK;
  });
}

int32_t kpx_c_find(const kpx_c_document* document, const kpx_c_unit* className,
                   int32_t classNameLength, int32_t index, int32_t* configuration) {
  return answer("kpx_c_find"_capi, [&] {
    if (configuration) *configuration = -1;
    if (!isDocument(document)) return failDocument();
    const TextArgument name(className, classNameLength);
    if (!configuration || !name.isValid || index < 0) return failArgument();
    const SettingsClass* const settingsClass = classNamed(name.text);
    if (!settingsClass) return KPX_C_UNKNOWN_CLASS;
    *configuration = document->document.find(*settingsClass, index);
    if (*configuration >= 0) return KPX_C_OK;
    return fail(KPX_C_NO_CONFIGURATION,
                u"the document has not so many configurations of the class " + CString(name.text));
  });
}

int32_t kpx_c_configuration_class(const kpx_c_document* document, int32_t configuration,
                                  const kpx_c_unit** name, int32_t* length) {
  return answer("kpx_c_configuration_class"_capi, [&] {
    if (name) *name = nullptr;
    if (length) *length = 0;
    if (!name || !length) return failArgument();
    if (const std::int32_t code = checkConfiguration(document, configuration)) return code;
    return lend(document->document.classOf(configuration)->name, name, length);
  });
}

int32_t kpx_c_add(kpx_c_document* document, const kpx_c_unit* className, int32_t classNameLength,
                  int32_t* configuration) {
  return answer("kpx_c_add"_capi, [&] {
    if (configuration) *configuration = -1;
    if (!isDocument(document)) return failDocument();
    const TextArgument name(className, classNameLength);
    if (!configuration || !name.isValid) return failArgument();
    const SettingsClass* const settingsClass = classNamed(name.text);
    if (!settingsClass) return KPX_C_UNKNOWN_CLASS;
    const DocumentResult result = document->document.add(*settingsClass);
    if (!result.ok()) return fail(result, name.text);
    *configuration = document->document.count() - 1;
    return KPX_C_OK;
  });
}

// --- which settings there are ------------------------------------------------------------------

int32_t kpx_c_key_count(const kpx_c_document* document, int32_t configuration, int32_t* count) {
  return answer("kpx_c_key_count"_capi, [&] {
    if (count) *count = 0;
    if (!count) return failArgument();
    if (const std::int32_t code = checkConfiguration(document, configuration)) return code;
    *count = document->document.keyCount(configuration);
    return KPX_C_OK;
  });
}

int32_t kpx_c_key(const kpx_c_document* document, int32_t configuration, int32_t number,
                  const kpx_c_unit** key, int32_t* length) {
  return answer("kpx_c_key"_capi, [&] {
    if (key) *key = nullptr;
    if (length) *length = 0;
    if (!key || !length) return failArgument();
    if (const std::int32_t code = checkConfiguration(document, configuration)) return code;
    if (number < 0 || number >= document->document.keyCount(configuration)) return failArgument();
    return lend(document->document.settingAt(configuration, number).key.text(), key, length);
  });
}

int32_t kpx_c_type(const kpx_c_document* document, int32_t configuration, const kpx_c_unit* key,
                   int32_t keyLength, int32_t* type, int32_t* typeCode) {
  return answer("kpx_c_type"_capi, [&] {
    if (type) *type = 0;
    if (typeCode) *typeCode = 0;
    if (!type) return failArgument();
    return atDefinition({document, configuration, key, keyLength}, [&](const SettingDef& setting) {
      *type = typeOf(setting.kind);
      if (typeCode) *typeCode = setting.type;
      return KPX_C_OK;
    });
  });
}

int32_t kpx_c_caption(const kpx_c_document* document, int32_t configuration, const kpx_c_unit* key,
                      int32_t keyLength, kpx_c_unit* buffer, int32_t capacity, int32_t* length) {
  return answer("kpx_c_caption"_capi, [&] {
    if (!clearBuffer(buffer, capacity, length)) return failArgument();
    return atDefinition({document, configuration, key, keyLength}, [&](const SettingDef& setting) {
      return store(currentText(setting.caption.get()), buffer, capacity, length);
    });
  });
}

int32_t kpx_c_group(const kpx_c_document* document, int32_t configuration, const kpx_c_unit* key,
                    int32_t keyLength, kpx_c_unit* buffer, int32_t capacity, int32_t* length) {
  return answer("kpx_c_group"_capi, [&] {
    if (!clearBuffer(buffer, capacity, length)) return failArgument();
    return atDefinition({document, configuration, key, keyLength}, [&](const SettingDef& setting) {
      return store(currentText(setting.group.get()), buffer, capacity, length);
    });
  });
}

// --- values ------------------------------------------------------------------------------------

int32_t kpx_c_is_stored(const kpx_c_document* document, int32_t configuration,
                        const kpx_c_unit* key, int32_t keyLength, int32_t* isStored) {
  return answer("kpx_c_is_stored"_capi, [&] {
    if (isStored) *isStored = 0;
    if (!isStored) return failArgument();
    return atDefinition({document, configuration, key, keyLength}, [&](const SettingDef& setting) {
      *isStored = document->document.isStored(configuration, setting.key.text()) ? 1 : 0;
      return KPX_C_OK;
    });
  });
}

int32_t kpx_c_get_int32(const kpx_c_document* document, int32_t configuration,
                        const kpx_c_unit* key, int32_t keyLength, int32_t* value) {
  return answer("kpx_c_get_int32"_capi, [&] {
    if (!value) return failArgument();
    *value = 0;
    return atSetting({document, configuration, key, keyLength}, [&](std::u16string_view name) {
      return document->document.getInteger(configuration, name, *value);
    });
  });
}

int32_t kpx_c_get_double(const kpx_c_document* document, int32_t configuration,
                         const kpx_c_unit* key, int32_t keyLength, double* value) {
  return answer("kpx_c_get_double"_capi, [&] {
    if (!value) return failArgument();
    *value = 0;
    return atSetting({document, configuration, key, keyLength}, [&](std::u16string_view name) {
      return document->document.getReal(configuration, name, *value);
    });
  });
}

int32_t kpx_c_get_text(const kpx_c_document* document, int32_t configuration, const kpx_c_unit* key,
                       int32_t keyLength, kpx_c_unit* buffer, int32_t capacity, int32_t* length) {
  return answer("kpx_c_get_text"_capi, [&] {
    if (!clearBuffer(buffer, capacity, length)) return failArgument();
    CString value;
    const std::int32_t code =
        atSetting({document, configuration, key, keyLength}, [&](std::u16string_view name) {
          return document->document.getText(configuration, name, value);
        });
    return code != KPX_C_OK ? code : store(value, buffer, capacity, length);
  });
}

int32_t kpx_c_set_int32(kpx_c_document* document, int32_t configuration, const kpx_c_unit* key,
                        int32_t keyLength, int32_t value) {
  return answer("kpx_c_set_int32"_capi, [&] {
    return atSetting({document, configuration, key, keyLength}, [&](std::u16string_view name) {
      return document->document.setInteger(configuration, name, value);
    });
  });
}

int32_t kpx_c_set_double(kpx_c_document* document, int32_t configuration, const kpx_c_unit* key,
                         int32_t keyLength, double value) {
  return answer("kpx_c_set_double"_capi, [&] {
    return atSetting({document, configuration, key, keyLength}, [&](std::u16string_view name) {
      return document->document.setReal(configuration, name, value);
    });
  });
}

int32_t kpx_c_set_text(kpx_c_document* document, int32_t configuration, const kpx_c_unit* key,
                       int32_t keyLength, const kpx_c_unit* value, int32_t valueLength) {
  return answer("kpx_c_set_text"_capi, [&] {
    const TextArgument text(value, valueLength);
    if (!text.isValid) return failArgument();
    return atSetting({document, configuration, key, keyLength}, [&](std::u16string_view name) {
      return document->document.setText(configuration, name, text.text);
    });
  });
}
