#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "kpx/report/Export.h"
#include "kpx/support/Problems.h"
#include "kpx/support/texts/LanguageFile.h"
#include "kpx/text/CString.h"

namespace kpx {

/// What is wrong with a text of a translation, or may be.
enum class TextFindingKind : std::uint8_t {
  repeatedId,    // the id stands there twice; the later text counts
  emptyText,     // left out when it is read, so the text below shows through
  unknownId,     // the German list has no such text
  placeholders,  // they take other values than the German ones; not used for formatting
  accelerator,   // one of the two has a key marked with "&", the other has none, or has two
  lineBreaks,    // another number of line breaks, or another beginning or end
  tabs,          // another number of tabs, which part a menu text from its key
  tooLong,       // a line needs much more room than the longest German one
};

struct TextFinding {
  TextFindingKind kind = TextFindingKind::repeatedId;
  std::size_t index = 0;  // of the entry in the list
  std::int32_t id = 0;
};

/// How much longer the longest line of a translation may be than that of the German text: labels
/// have fixed places.
struct TextRoom {
  int percent = 200;
  int extraUnits = 10;  // for short texts, where a percentage means little
};

/// Compares a translation with the German list, entry by entry in its order. In the German list,
/// the last text of an id counts.
KPX_API Problems<TextFinding> checkTexts(const TextList& list, const TextList& german,
                                         const TextRoom& room = {},
                                         std::size_t limit = usualProblemLimit);

/// What a list says about itself alone: ids that stand there twice, and empty texts.
KPX_API Problems<TextFinding> checkTexts(const TextList& list,
                                         std::size_t limit = usualProblemLimit);

/// A short English clause for messages: "takes other values than the German text".
KPX_API CString describe(TextFindingKind kind);
/// A word for programs that stays the same: "empty-text".
KPX_API std::u16string_view kindName(TextFindingKind kind) noexcept;

/// How much of the German list a translation holds.
struct TextCoverage {
  std::size_t germanIds = 0;          // distinct, with a text
  std::size_t translated = 0;         // of them, those with a text in the list
  std::size_t sameAsGerman = 0;       // of those, the ones whose text is the German one
  std::vector<std::int32_t> missing;  // ascending
  std::vector<std::int32_t> unknown;  // ids with a text that the German list lacks; ascending

  double percent() const noexcept {
    return germanIds == 0
               ? 100.0
               : 100.0 * static_cast<double>(translated) / static_cast<double>(germanIds);
  }
};
KPX_API TextCoverage coverageOf(const TextList& list, const TextList& german);

/// A difference between what two lists say about an id.
struct TextDifference {
  std::int32_t id = 0;
  CString before;  // empty: the first list has no text for it
  CString after;   // empty: the second list has none
};
/// Ascending by id. The last text of an id counts, and an empty text is none, as for readers.
KPX_API std::vector<TextDifference> differencesOf(const TextList& before, const TextList& after);

}  // namespace kpx
