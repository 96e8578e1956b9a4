#include "kpx/text/PortableName.h"

#include <algorithm>

#include "kpx/text/CaseFold.h"
#include "kpx/text/TextTools.h"

namespace kpx {
namespace {

using View = std::u16string_view;

bool isBadCharacter(char16_t unit) noexcept {
  return unit < 0x20 || unit == 0x7F || View(u"<>:\"/\\|?*").find(unit) != View::npos;
}

bool isPortNumber(char16_t unit) noexcept {
  return (unit >= u'1' && unit <= u'9') || unit == u'\u00B9' || unit == u'\u00B2' ||
         unit == u'\u00B3';
}

// Devices stay devices with any extension: NUL.txt.
bool isReserved(View name) noexcept {
  const View base = detail::withoutTrailingBlanks(name.substr(0, name.find(u'.')));
  for (const View device : {u"con", u"prn", u"aux", u"nul", u"conin$", u"conout$"}) {
    if (detail::compareTextNoCase(base, device) == 0) return true;
  }
  if (base.size() != 4 || !isPortNumber(base.back())) return false;
  return detail::compareTextNoCase(base.substr(0, 3), u"com") == 0 ||
         detail::compareTextNoCase(base.substr(0, 3), u"lpt") == 0;
}

}  // namespace

NameProblem portableNameProblem(View name) noexcept {
  if (name.empty()) return NameProblem::empty;
  if (name == u"..") return NameProblem::parentStep;
  if (std::any_of(name.begin(), name.end(), isBadCharacter)) return NameProblem::badCharacter;
  // ".. " would be a step to the parent where trailing blanks are dropped.
  if (name.back() == u'.' || name.back() == u' ') return NameProblem::trailingUnit;
  return isReserved(name) ? NameProblem::reserved : NameProblem::none;
}

}  // namespace kpx
