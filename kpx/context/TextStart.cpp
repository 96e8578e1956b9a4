#include "kpx/context/TextStart.h"

#include <algorithm>
#include <vector>

#include "kpx/context/ApplicationContext.h"
#include "kpx/context/Folders.h"
#include "kpx/context/internal/SettingsValue.h"
#include "kpx/context/Operations.h"
#include "kpx/platform/FileSystem.h"
#include "kpx/report/Error.h"
#include "kpx/report/TraceScope.h"
#include "kpx/settings/CFGProjectSettingsIntern.h"
#include "kpx/support/texts/LanguageFile.h"
#include "kpx/support/texts/TextStore.h"
#include "kpx/text/PortableName.h"
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

void fillTexts(const CString& language) {
  addBuiltInTexts();
  useProjectWording(isAlkisProject());
  for (const CString& file : languageFiles(language)) LoadMLTFile(file);
}

/// The name as the folder has it: exactly so, else the first that differs in its case only. As it
/// is when there is neither.
CString nameInFolder(const CString& folder, const CString& name) {
  std::vector<CString> names;
  if (!fileSystem().list(folder, names)) return name;  // files may be read there all the same
  if (std::ranges::binary_search(names, name)) return name;
  const auto found = std::ranges::find_if(
      names, [&](const CString& each) { return each.CompareNoCase(name) == 0; });
  return found != names.end() ? *found : name;
}

}  // namespace

CString chosenLanguage() {
  return Guarded("chosenLanguage"_context, CString(),
                 [] { return detail::readSettingsValue({}, u"Language").text; });
}

CString languageFileName(const CString& language) {
  return Guarded("languageFileName"_context, CString(), [&] {
    const int open = language.Find(u'[');
    if (open < 0) return CString();
    CString name = language.Mid(open + 1);
    name.Remove(u']');
    name.Trim();
    // A setting must not lead out of the folder of the language files.
    return portableNameProblem(name) == NameProblem::none ? name : CString();
  });
}

std::vector<CString> languageFiles(const CString& language) {
  return Guarded("languageFiles"_context, std::vector<CString>(), [&] {
    const CString chosen = CString(language).Trim();
    std::vector<CString> files;
    if (chosen.IsEmpty() || chosen == german) return files;
    for (const CString& name : {CString(englishFile), languageFileName(chosen)}) {
      CString path = languageFilePath(name);
      const bool isNew = files.empty() || files.front() != path;
      if (!path.IsEmpty() && isNew) files.push_back(std::move(path));
    }
    return files;
  });
}

CString textFolder() {
  return Guarded("textFolder"_context, CString(), [] {
    const CString programs = kpxGetProgPath();
    // Without a program folder, the current folder is nobody's place for texts.
    return programs.IsEmpty() ? CString() : detail::joinPath(programs, u"MLT");
  });
}

CString languageFilePath(const CString& name) {
  return Guarded("languageFilePath"_context, CString(), [&] {
    const CString folder = textFolder();
    if (folder.IsEmpty() || name.IsEmpty()) return CString();
    return detail::joinPath(folder, nameInFolder(folder, name));
  });
}

void useProjectWording(bool isAlkis) {
  if (!isAlkis) return;
  Guarded("useProjectWording"_context, [] {
    const GuardWatch watch;
    for (const Wording& wording : alkisWording) AddMLT(wording.id, CString(wording.text));
    watch.passOn();
  });
}

int initTexts(const CString& language) {
  return Guarded("InitMLT"_context, 0, [&] {
    const GuardWatch watch;
    fillTexts(language);
    watch.passOn();
    return 1;
  });
}

int InitMLT() {
  const TraceScope trace("InitMLT");
  return Guarded("InitMLT"_context, 0, [] {
    const GuardWatch watch;
    fillTexts(chosenLanguage());
    watch.passOn();
    return 1;
  });
}

}  // namespace kpx
