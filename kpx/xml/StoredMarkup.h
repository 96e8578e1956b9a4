#pragma once

#include <cstddef>
#include <string_view>
#include <utility>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/Encoding.h"

namespace kpx {

/// Something wrong at a place of a stored document, as a sentence for people who know the place.
/// Line and column count from 1, columns in UTF-16 units; in bytes where the bytes are no text.
struct PlacedProblem {
  int line = 1;
  int column = 1;
  CString sentence;
};

/// A document as it was read from the bytes of a file, with everything that is wrong with it: for
/// programs that change a file and must keep the rest of it.
struct StoredMarkup {
  CMarkup document;        // empty when the bytes are not readable
  MarkupEncoding storage;  // how to write it back the same way
  CString wrongEncoding;   // what the declaration says, when the bytes are not in that
  bool readable = false;   // false: the bytes are no text; `problems` tells why
  std::vector<PlacedProblem> problems;

  /// Whether the bytes are text and the document is well formed. Else there is a problem, unless
  /// the parse ran out of memory, which it reports itself.
  bool usable() const noexcept { return readable && document.IsWellFormed(); }
};

/// Reads a document from bytes. Where `CMarkup::Load` reads whatever makes sense, bytes that are no
/// text in their encoding make the document unreadable here, since they would be lost on writing.
KPX_API StoredMarkup readMarkup(std::string_view bytes);

/// The line and column, from 1, of a byte; columns count bytes.
KPX_API std::pair<int, int> placeOfByte(std::string_view bytes, std::size_t offset) noexcept;

}  // namespace kpx
