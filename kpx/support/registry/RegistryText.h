#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/platform/Registry.h"
#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// The text form that the system's registry editor exports and imports, version 5.00: keys in
/// brackets, each with its values in lines below it.
///
///     Windows Registry Editor Version 5.00
///
///     [HKEY_CURRENT_USER\Software\KPX\Settings]
///     "Language"="Deutsch [Default]"
///     "Count"=dword:0000002a
///     "Place"=hex:2c,00,00,00
///     "Old"=-
///
///     [-HKEY_CURRENT_USER\Software\KPX\Old]

/// A line of the text form, or what it changes.
struct RegistryStep {
  RegistryRoot root = RegistryRoot::currentUser;
  RegistryChange change;
  int line = 0;  // where it stands, from 1; 0 for a step that was not read from a text
};

/// The first thing that is wrong with a text.
struct RegistryTextProblem {
  int line = 0;          // from 1; 0 when a single line is not to blame
  CString message;       // an English sentence; empty when nothing is wrong
  bool changed = false;  // of `importRegistryText`: something was carried out before it, and stays
};

/// Whether a text is right, by the rules of `readRegistryText`; takes no memory for its steps.
KPX_API bool checkRegistryText(std::string_view bytes, RegistryTextProblem& problem);

/// Reads the text form: UTF-16 with a byte-order mark, or UTF-8 with or without one. False, and no
/// steps, when anything in it is wrong. Removing what is not there is no mistake.
///
/// Texts in quotes may hold line breaks; `\\` and `\"` stand for backslash and quote. `hex(n)` has
/// the bytes of a value of type n, in `hex(1)` and `hex(2)` those of a text with the 0 at its end.
/// Bytes go on in the next line behind a backslash. Names of roots may be written as HKCU and HKLM.
/// A comment begins with ";".
KPX_API bool readRegistryText(std::string_view bytes, std::vector<RegistryStep>& steps,
                              RegistryTextProblem& problem);

/// Writes the text form as the editor does, with CR LF; what reads it gets the same steps, but that
/// the key of each value is created. Texts with line breaks or a 0 are written as `hex(1)`. False,
/// and `text` as it was, for a key that has a line break in its name, for which there is no form.
KPX_API bool writeRegistryText(std::span<const RegistryStep> steps, CString& text);

/// A text as the bytes of a file that the editor takes: UTF-16, little-endian, with a mark.
KPX_API std::string registryTextBytes(const CString& text);

/// Reads the text form and carries it out. Nothing is changed when the text is wrong. When the
/// registry refuses a step, the problem has its line, and tells whether something else is changed:
/// of the machine's root, which comes first, or, on Windows, of the same root.
KPX_API bool importRegistryText(std::string_view bytes, RegistryTextProblem& problem);

/// Root and path of a key that is written with its root in front, as in the text form. False when
/// there is no such root.
KPX_API bool parseRegistryKey(const CString& text, RegistryRoot& root, CString& path);
/// The reverse, with the long name of the root.
KPX_API CString registryKeyText(RegistryRoot root, const CString& path);

}  // namespace kpx
