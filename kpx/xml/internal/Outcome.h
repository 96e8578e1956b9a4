#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "kpx/text/CString.h"

namespace kpx::detail {

/// What became of a parse, a load or a save, as one small record of the result text: an empty
/// element named after the outcome, with a text, a number and a second number ("offset2") as
/// attributes, each as far as it has one.
struct Outcome {
  std::u16string_view name;
  std::u16string_view textName = {};  // "type", "encoding", "msg" or "tagname"
  std::u16string_view text = {};
  std::u16string_view numberName = {};  // "n", "count", "length" or "offset"
  std::int64_t number = 0;
  std::optional<std::int64_t> offset2 = {};
};

/// Outcomes begin in the first 1,000 units of a result text; later ones are left out.
inline constexpr std::size_t outcomeLimit = 1000;

/// Appends the record of an outcome, unless the result text has reached the limit.
void addOutcome(CString& result, const Outcome& outcome);

/// The records of a result text as sentences, one a line; what is no record is passed over.
CString outcomeSentences(std::u16string_view result);

void appendNumber(std::u16string& text, std::int64_t number);

}  // namespace kpx::detail
