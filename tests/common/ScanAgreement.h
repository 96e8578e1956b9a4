#pragma once

#include <cstring>
#include <string>
#include <utility>

#include "kpx/xml/internal/ElementParser.h"
#include "kpx/xml/internal/TagScan.h"

namespace kpx {

/// Every fast scan must make the records that the plain road makes, to the last bit: the name of
/// one that does not, or empty.
inline std::string disagreeingScan(const CString& text, int docFlags) {
  const auto parse = [&](const detail::TagScan& scan) {
    std::pair<detail::ElementIndex, CString> parsed;
    const MarkupProblemSink noSink;
    detail::ParseReport report(text, &parsed.second, noSink);
    parsed.first.reset();
    const detail::TagScan& before = detail::activeTagScan();
    detail::setActiveTagScan(scan);
    detail::ElementParser(text, docFlags, parsed.first, report).parse(0, 0);
    detail::setActiveTagScan(before);
    return parsed;
  };
  const auto [plain, plainResult] = parse(detail::tagScans().back());
  for (const detail::TagScan& scan : detail::tagScans()) {
    const auto [fast, result] = parse(scan);
    bool agrees = result == plainResult && fast.usedCount() == plain.usedCount();
    for (int i = 0; agrees && i < plain.usedCount(); ++i) {
      agrees = std::memcmp(&fast[i], &plain[i], sizeof(ElemPos)) == 0;
    }
    if (!agrees) return scan.name;
  }
  return {};
}

}  // namespace kpx
