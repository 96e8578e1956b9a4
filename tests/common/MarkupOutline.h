#pragma once

#include <string>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/MarkupValidator.h"

namespace kpx {

/// Each element of a document in order with its level, its place and its state.
inline std::string outlineOf(CMarkup document) {
  std::string lines;
  document.ResetPos();
  bool down = document.FindElem();
  while (down || document.GetElemLevel() > 0 || !document.GetTagName().IsEmpty()) {
    int begin = 0;
    int end = 0;
    document.GetOffsets(begin, end);
    lines += std::to_string(document.GetElemLevel()) + document.GetTagName().utf8() + " " +
             std::to_string(begin) + "-" + std::to_string(end) +
             (document.GetElemFlags() & 0x100000 ? " unended\n" : "\n");
    document.IntoElem();
    down = document.FindElem();
    while (!down) {
      if (!document.OutOfElem() || document.GetTagName().IsEmpty()) return lines;
      down = document.FindElem();
    }
  }
  return lines;
}

/// How a document differs from what a parse makes of its text, also of an ill-formed one; empty if
/// it does not.
inline std::string outlineProblem(const CMarkup& document) {
  std::string wrong = MarkupValidator::check(document);
  if (!wrong.empty()) return wrong;
  CMarkup parsed(document.GetDocFlags());
  parsed.SetDoc(document.GetDoc());
  const std::string expected = outlineOf(parsed);
  const std::string found = outlineOf(document);
  return found == expected ? std::string() : "a parse makes\n" + expected + "not\n" + found;
}

}  // namespace kpx
