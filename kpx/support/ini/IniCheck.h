#pragma once

#include <cstdint>
#include <string_view>

#include "kpx/report/Export.h"
#include "kpx/support/Problems.h"
#include "kpx/text/CString.h"

namespace kpx {

/// What readers of an INI file trip over.
enum class IniProblemKind : std::uint8_t {
  repeatedSection,       // the keys of the second one are never found
  repeatedKey,           // nor is the second key
  sectionDiffersInCase,  // some readers take the two for one, others do not
  keyDiffersInCase,
  keyBeforeSection,  // above the first section header
  withoutMeaning,    // neither comment nor header nor key, or a key without a name
  lineBreakInPath,   // a path whose backslash and "n" are read as a line break
  tooLong,           // more than 4,000 units: read as several lines
  carriageReturn,    // inside a line, so it is no line end
  nullCharacter,
  notInEncoding,   // bytes that are no text in the encoding that the mark tells
  mixedEncodings,  // read as Windows-1252, but here stands UTF-8
  noMark,          // UTF-16 without a byte-order mark
  tooLarge,        // 2^31 bytes or more, which no INI file can have
};

/// One finding. Lines and columns count from 1, columns in UTF-16 units.
struct IniProblem {
  IniProblemKind kind;
  int line = 1;
  int column = 1;
  CString name;       // of the section or key; empty where there is none
  int otherLine = 0;  // where the first of the two stands
};

/// Everything in the bytes of an INI file that readers trip over, in the order of the file.
KPX_API Problems<IniProblem> checkIni(std::string_view bytes,
                                      std::size_t limit = usualProblemLimit);

/// The finding as an English sentence without its place.
KPX_API CString describe(const IniProblem& problem);
/// A word for programs that stays the same: "repeated-key".
KPX_API std::u16string_view kindName(IniProblemKind kind) noexcept;

/// The encoding that the bytes of an INI file are read in, for messages: "UTF-8".
KPX_API CString iniEncodingName(std::string_view bytes);

}  // namespace kpx
