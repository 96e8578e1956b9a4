#pragma once

#include <string_view>

#include "kpx/text/CString.h"
#include "kpx/xml/internal/LineTable.h"
#include "kpx/xml/internal/Outcome.h"
#include "kpx/xml/MarkupProblem.h"

namespace kpx::detail {

/// Writes what a parse finds wrong: records and plain lines into a result text, if there is one,
/// and problems into a sink. Its whole cost is linear in the text and in the number of problems.
class ParseReport {
 public:
  /// All three must outlive it; without a result text a hostile document costs no memory for it.
  ParseReport(std::u16string_view text, CString* result, const MarkupProblemSink& sink)
      : result_(result), sink_(sink), lines_(text) {}

  void syntaxError(MarkupProblemKind kind, int offset);
  /// `openType` names what was open.
  void unterminated(std::u16string_view openType, int offset);
  /// A start tag without its end tag, missed at `missedAt`; its record only.
  void unendedRecord(std::u16string_view name, int offset, int missedAt);
  /// The same for the sink, which gets them in the order of the text.
  void unendedProblem(std::u16string_view name, int offset);
  bool hasResult() const noexcept { return result_ != nullptr; }
  void loneEndTag(std::u16string_view name, int offset);
  void noRootElement();
  /// `isReal`: the first root is not just what is left of one that the text ends in.
  void rootHasSibling(int offset, bool isReal);
  /// `what` names the limit: "start_tag", "end_tag", "level" or "text".
  void tooLarge(std::u16string_view what, int offset);

  /// The plain lines, with the number of the line that `lineOffset` lies in, counted from 0.
  void mismatchLine(std::u16string_view endTagName, int endTagOffset, int lineOffset);
  void unterminatedLine(std::u16string_view tagName, int tagOffset, int lineOffset);

 private:
  void record(const Outcome& outcome);
  void tell(MarkupProblemKind kind, std::u16string_view name, int offset);
  void plainLine(std::u16string_view opening, std::u16string_view name, std::u16string_view middle,
                 int offset, std::u16string_view beforeLine, int lineOffset);

  CString* result_;
  const MarkupProblemSink& sink_;
  LineTable lines_;
};

}  // namespace kpx::detail
