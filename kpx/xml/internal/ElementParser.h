#pragma once

#include <memory>
#include <string_view>
#include <vector>

#include "kpx/xml/internal/ElementIndex.h"
#include "kpx/xml/internal/OpenNames.h"
#include "kpx/xml/internal/ParseReport.h"
#include "kpx/xml/internal/ParseState.h"
#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {

/// Fills an index from a text: one record for each element, in the order of their start tags.
///
/// Regular stretches are read by a fast scan (TagScan.h). At everything else - comments, single
/// quotes, errors, a full index - the fast scan stops and the plain road below reads one token.
/// Either road can read any regular token, with the same outcome.
class ElementParser {
 public:
  /// The text needs a unit 0 behind its end, and all four must outlive the parser.
  ElementParser(std::u16string_view text, int docFlags, ElementIndex& index, ParseReport& report);
  ~ElementParser();

  /// Parses the text from `position` under a record; the first element made, if any, has the
  /// number that was the used count before.
  /// Records are taken behind the last one used. When it throws, the records made so far are
  /// complete and linked.
  void parse(int parent, int position);

 private:
  ElemPos& record(int index) noexcept { return index_[index]; }
  OpenElement& top() noexcept { return state_.stack[state_.depth - 1]; }
  std::u16string_view nameOf(const OpenElement& element) const noexcept;
  bool inRefused() const noexcept { return refusedFrom_ != 0; }
  /// The end of the element made last, up to which plain lines count.
  int lastMadeEnd() noexcept;

  void begin(int parent, int position);
  void finish() noexcept;
  /// Reads one token; false at the end of the text.
  bool step();
  void startTag();
  void endTag();
  void pushOpen(const OpenElement& element);
  void makeRoom();
  const char16_t* exceededLimit() noexcept;

  int findOpen(std::u16string_view endTagName);
  void pop() noexcept;
  void closeTop(int end, int endTagLength) noexcept;
  void reportUnended(int depth, std::u16string_view endTagName, int endTagOffset, int missedAt);
  void closeUnended(int depth) noexcept;
  void writeRecord(int depth, int length, int endTagLength) noexcept;

  const bool ignoreCase_;
  ElementIndex& index_;
  ParseReport& report_;
  TokenPos token_;
  ParseState state_;
  std::vector<OpenElement> stack_;
  std::unique_ptr<OpenNames> openNames_;  // made for the first end tag that needs it
  int refusedFrom_ = 0;  // the lowest entry of the stack that has no record; 0: all have one
  int firstMade_ = 0;
  int parent_ = 0;
  bool levelsMoved_ = false;
};

/// Parses a whole text into an index and tells nobody what is wrong with it.
void parseSilently(const CString& text, int docFlags, ElementIndex& index);

}  // namespace kpx::detail
