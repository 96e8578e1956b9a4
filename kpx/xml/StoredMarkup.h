#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <utility>

#include "kpx/report/Export.h"
#include "kpx/support/Problems.h"
#include "kpx/text/CString.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"

namespace kpx {

/// What can be wrong with the bytes of a stored document.
enum class EncodingProblemKind : std::uint8_t {
  tooLarge,
  binary,
  notInEncoding,     // bytes that are no text in the encoding they are read in
  wrongDeclaration,  // the encoding that is declared is unknown or not that of the bytes
  missingMark,       // UTF-16 or UTF-32 that only the library recognises
  undeclared,        // neither UTF-8 nor declared to be anything else
  maybeUtf8,         // a warning: declared as something else
};

/// A word for programs that stays the same: "not-in-encoding".
KPX_API std::u16string_view kindName(EncodingProblemKind kind) noexcept;

/// Something wrong at a place of a stored document, as a sentence for people who know the place.
/// Line and column count from 1, columns in UTF-16 units; in bytes where the bytes are no text.
struct PlacedProblem {
  int line = 1;
  int column = 1;
  CString sentence;
  bool isWarning = false;
  // A word for programs: the `kindName` of a MarkupProblemKind or an EncodingProblemKind.
  std::u16string_view kind = {};
};

/// A document as it was read from the bytes of a file, with everything that is wrong with it: for
/// programs that change a file and must keep the rest of it.
struct StoredMarkup {
  CMarkup document;        // empty when the bytes are not readable; without a result text
  MarkupEncoding storage;  // how to write it back the same way
  bool readable = false;   // false: the bytes are no text; `problems` tells why
  // Bytes that are read well but would be written otherwise, and the offset of the first of them.
  std::size_t respelled = 0;
  std::size_t firstRespelled = 0;
  Problems<PlacedProblem> problems;
  std::size_t warnings = 0;  // of the problems

  /// Whether the bytes are text and the document is well formed. Else there is a problem, unless
  /// the parse ran out of memory, which it reports itself.
  bool usable() const noexcept { return readable && document.IsWellFormed(); }
};

/// Reads a document from bytes. Where `CMarkup::Load` reads whatever makes sense, bytes that are no
/// text in their encoding make the document unreadable here, since they would be lost on writing.
/// So many problems are kept as `limit` says; the others are only counted.
KPX_API StoredMarkup readMarkup(std::string_view bytes, std::size_t limit = usualProblemLimit);

/// The same for documents that go to other programs: with everything that these would refuse, or
/// read as something else: an encoding that is not declared as it must be, and what `MarkupCheck`
/// tells. Of its warnings, line breaks in values are left out, which the suite itself writes.
KPX_API StoredMarkup checkMarkup(std::string_view bytes, std::size_t limit = usualProblemLimit);

/// The line and column, from 1, of a byte; columns count bytes.
KPX_API std::pair<int, int> placeOfByte(std::string_view bytes, std::size_t offset) noexcept;
/// The same of a unit of a text.
KPX_API std::pair<int, int> placeOfUnit(std::u16string_view text, std::size_t offset) noexcept;

}  // namespace kpx
