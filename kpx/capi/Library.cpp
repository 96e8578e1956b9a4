#include <algorithm>

#include "kpx/capi/internal/Answer.h"
#include "kpx/capi/Operations.h"
#include "kpx/context/Folders.h"
#include "kpx/context/Operations.h"
#include "kpx/context/TextStart.h"
#include "kpx/settings/Catalogue.h"
#include "kpx/support/texts/TextStore.h"

using namespace kpx;        // NOLINT(google-build-using-namespace): the functions are global
using namespace kpx::capi;  // NOLINT(google-build-using-namespace)

int32_t kpx_c_version() { return KPX_C_VERSION; }

int32_t kpx_c_last_error(int32_t* code, int32_t* number, int32_t* line, int32_t* column) {
  const LastError& last = lastError();
  if (code) *code = last.code;
  if (number) *number = last.number;
  if (line) *line = last.line;
  if (column) *column = last.column;
  return KPX_C_OK;
}

int32_t kpx_c_last_error_text(kpx_c_unit* buffer, int32_t capacity, int32_t* length) {
  if (!clearBuffer(buffer, capacity, length)) return KPX_C_BAD_ARGUMENT;
  const LastError& last = lastError();
  return store({last.text, static_cast<std::size_t>(last.length)}, buffer, capacity, length);
}

int32_t kpx_c_start_texts(const kpx_c_unit* programFolder, int32_t programFolderLength,
                          const kpx_c_unit* language, int32_t languageLength) {
  return answer("kpx_c_start_texts"_capi, [&] {
    const TextArgument folder(programFolder, programFolderLength);
    const TextArgument chosen(language, languageLength);
    if (!folder.isValid || !chosen.isValid) return failArgument();
    needTexts();  // so that nothing later takes them for missing
    if (!folder.text.empty()) kpxSetProgPath(folder.text);
    const int done = language ? initTexts(chosen.text) : InitMLT();
    constexpr OperationNumber start = "InitMLT"_context;
    return done == 1 ? KPX_C_OK : fail(KPX_C_FAILED, u"the texts are not complete", start.value());
  });
}

int32_t kpx_c_text(int32_t number, kpx_c_unit* buffer, int32_t capacity, int32_t* length) {
  return answer("kpx_c_text"_capi, [&] {
    if (!clearBuffer(buffer, capacity, length)) return failArgument();
    needTexts();
    const std::u16string_view text = storedText(number);
    if (text.empty()) return fail(KPX_C_NO_TEXT, u"there is no text of this number");
    return store(text, buffer, capacity, length);
  });
}

int32_t kpx_c_class_count(int32_t* count) {
  return answer("kpx_c_class_count"_capi, [&] {
    if (!count) return failArgument();
    *count = static_cast<int32_t>(
        std::ranges::count_if(settingsClasses(), &SettingsClass::isConfiguration));
    return KPX_C_OK;
  });
}

int32_t kpx_c_class_name(int32_t number, const kpx_c_unit** name, int32_t* length) {
  return answer("kpx_c_class_name"_capi, [&] {
    if (name) *name = nullptr;
    if (length) *length = 0;
    if (!name || !length || number < 0) return failArgument();
    for (const SettingsClass* const each : settingsClasses()) {
      if (!each->isConfiguration() || number-- > 0) continue;
      return lend(each->name, name, length);
    }
    return failArgument();
  });
}
