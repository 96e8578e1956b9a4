#pragma once

#include <string_view>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Fills the text store: the built-in German texts; the wording of the project's kind (see
/// `useProjectWording`); and unless the user works in German, the English language file and that
/// of the user's language over them. So an id that a translation lacks is shown in English, and
/// one that English lacks, too, in German.
///
/// The language is the registry value "Language" under "Software\KPX\Settings", the user's before
/// the machine's, for example "English [ENG.LNG]"; without one, or as "Deutsch [Default]", it is
/// German. Language files lie in the folder "MLT" of the program folder (`kpxGetProgPath`), see
/// `languageFilePath`; one that is missing is left out.
///
/// The application calls it once, on its main thread and before it builds a window. Calling it
/// again gives the same texts. 1 on success. Any failure, such as a language file that ends early,
/// is reported as 71472, behind the number of the operation that met it if that has one, and
/// answered with 0; the texts up to then stay.
KPX_API int InitMLT();

/// The same for a language that the caller names in place of the registry.
KPX_API int initTexts(const CString& language);

/// The language that the registry names for this user; empty for none. Error number 910360.
KPX_API CString chosenLanguage();

/// The file name that a language value has in square brackets. Empty without one, and for a name
/// that leads out of the folder of the texts or to a device, since such a file counts as missing.
/// Error number 910328.
KPX_API CString languageFileName(const CString& language);

/// The paths of the language files that `InitMLT` lays over the German texts for a language, in
/// this order, whether they exist or not: none for German; else the English one, and that of the
/// language when it names another file. Error number 910363.
KPX_API std::vector<CString> languageFiles(const CString& language);

/// Where language files lie; empty when the program folder is not known. Error number 910329.
KPX_API CString textFolder();

/// The path of a language file there: of exactly that name, else of the first that differs from it
/// only in case, since languages are written as Windows finds their files. Where there is neither,
/// the path that it would have; empty without a name or a folder. Error number 910330.
KPX_API CString languageFilePath(const CString& name);

/// Gives the texts whose wording depends on the kind of the project the one of that kind: in ALKIS
/// projects the terms of ALKIS. `InitMLT` asks the current internal project settings
/// (`getIsAlkis`); without any, the project is not of that kind. Error number 910361.
KPX_API void useProjectWording(bool isAlkis);

}  // namespace kpx
