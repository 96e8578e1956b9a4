#include "kpx/context/TextStart.h"

#include "kpx/context/ApplicationContext.h"
#include "kpx/context/Folders.h"
#include "kpx/context/internal/SettingsValue.h"
#include "kpx/report/Error.h"
#include "kpx/report/Trace.h"
#include "kpx/settings/CFGProjectSettingsIntern.h"
#include "kpx/support/internal/ZipNames.h"
#include "kpx/support/LanguageFile.h"
#include "kpx/support/TextStore.h"
#include "kpx/text/TextTools.h"

namespace kpx {
namespace {

constexpr std::u16string_view german = u"Deutsch [Default]";
constexpr std::u16string_view englishFile = u"ENG.LNG";

struct Wording {
  std::int32_t id;
  std::u16string_view text;
};

constexpr Wording alkisWording[] = {
    {231, u"GST(L)"},
    {639, u"3 Parametertransformation"},
};

bool isAlkisProject() {
  const CFGProjectSettingsIntern* const settings = kpxGetCurrentPrjSettingsIntern();
  return settings && settings->getIsAlkis() != 0;
}

int fillTexts(const CString& language) {
  addBuiltInTexts();
  useProjectWording(isAlkisProject());
  for (const CString& file : languageFiles(language)) LoadMLTFile(file);
  return 1;
}

}  // namespace

CString chosenLanguage() { return detail::readSettingsValue({}, u"Language").text; }

CString languageFileName(const CString& language) {
  const int open = language.Find(u'[');
  if (open < 0) return {};
  CString name = language.Mid(open + 1);
  name.Remove(u']');
  name.Trim();
  // What may not leave the folder of an archive may not leave this one.
  CString path;
  const bool staysInside =
      name.FindOneOf(u"/\\") < 0 && detail::zipEntryPath(name, path) == ZipStatus::done;
  return staysInside ? name : CString();
}

std::vector<CString> languageFiles(const CString& language) {
  const CString chosen = CString(language).Trim();
  const CString folder = textFolder();
  if (chosen.IsEmpty() || chosen == german || folder.IsEmpty()) return {};
  std::vector<CString> files{joinPath(folder, CString(englishFile))};
  const CString file = languageFileName(chosen);
  if (!file.IsEmpty() && file.CompareNoCase(englishFile) != 0) {
    files.push_back(joinPath(folder, file));
  }
  return files;
}

CString textFolder() {
  const CString programs = kpxGetProgPath();
  // Without a program folder, the current folder is nobody's place for texts.
  return programs.IsEmpty() ? CString() : joinPath(programs, u"MLT");
}

void useProjectWording(bool isAlkis) {
  if (!isAlkis) return;
  for (const Wording& wording : alkisWording) AddMLT(wording.id, CString(wording.text));
}

int initTexts(const CString& language) {
  return Guarded("InitMLT", 0, [&] { return fillTexts(language); });
}

int InitMLT() {
  const TraceScope trace("InitMLT");
  return Guarded("InitMLT", 0, [] { return fillTexts(chosenLanguage()); });
}

}  // namespace kpx
