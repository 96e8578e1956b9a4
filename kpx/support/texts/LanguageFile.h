#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/text/CString.h"

namespace kpx {

/// Lays the texts of a language file (".LNG") over the texts of the store.
///
/// The file is an archive (see Archive.h) of a 32-bit word and a title, which are passed over, the
/// number of its texts, and for each an id and the text. CR LF in a text is stored as LF; an empty
/// text leaves the one of the store; ids that the store lacks are added.
///
/// 1 when the file was read; 0, with the store as it was and no report, when it could not be
/// opened. A file that ends early raises ArchiveEndException; the texts before its end are applied.
KPX_API int LoadMLTFile(const CString& path);

/// A text and its id.
struct TextEntry {
  std::int32_t id = 0;
  CString text;

  bool operator==(const TextEntry&) const = default;
};

/// The content of a language file, or of another list of texts, in its order. An id may occur
/// again; its last text counts.
struct TextList {
  std::uint32_t header = 0;  // the first word of a language file; readers pass over it
  CString title;
  std::vector<TextEntry> entries;

  bool operator==(const TextList&) const = default;
};

/// How far a language file could be read.
struct LanguageFileResult {
  bool isWhole = true;         // everything that it announces is there
  bool hasFailed = false;      // without memory, which says nothing about the file; see below
  std::size_t end = 0;         // offset of the first byte that was not read
  std::int32_t announced = 0;  // the number of texts that the file says it holds
};

/// Reads a language file as it is: CR LF and empty texts stay. What is there before an early end is
/// kept. Never takes more memory than a small multiple of the file. Nothing is thrown: missing
/// memory is reported as 910502, and the result says that reading has failed.
KPX_API LanguageFileResult readLanguageFile(std::string_view bytes, TextList& list);

/// The bytes of a language file. Requires fewer than 2^31 texts.
KPX_API std::string languageFileBytes(const TextList& list);

}  // namespace kpx
