#include "kpx/support/texts/TextCheck.h"

#include <algorithm>
#include <map>
#include <string_view>
#include <unordered_map>
#include <unordered_set>

#include "kpx/support/texts/TextTemplate.h"

namespace kpx {
namespace {

/// The texts that readers of a list end up with. Refers to the list.
using Effective = std::map<std::int32_t, std::u16string_view>;

Effective effectiveTexts(const TextList& list) {
  Effective texts;
  for (const TextEntry& entry : list.entries) {
    if (!entry.text.IsEmpty()) texts[entry.id] = entry.text;
  }
  return texts;
}

/// Whether a text can be meant for formatting. "100 % der Fläche" can not, though the formatter
/// would take its "% d" for a placeholder.
bool isTemplate(std::u16string_view text) noexcept {
  Placeholder found = nextPlaceholder(text);
  while (found.kind == PlaceholderKind::broken ||
         (found.kind != PlaceholderKind::none && found.hasBlank)) {
    found = nextPlaceholder(text, found.end);
  }
  return found.kind != PlaceholderKind::none;
}

bool havePlaceholdersAlike(std::u16string_view text, std::u16string_view german) noexcept {
  return takeSameValues(text, german) || (!isTemplate(text) && !isTemplate(german));
}

/// How many keys are marked: "&&" is one "&" that is shown, and an "&" before a blank or at the
/// end marks nothing.
int acceleratorsOf(std::u16string_view text) noexcept {
  int count = 0;
  for (std::size_t i = 0; i + 1 < text.size(); ++i) {
    if (text[i] != u'&') continue;
    if (text[i + 1] != u'&' && text[i + 1] != u' ') ++count;
    ++i;
  }
  return count;
}

bool haveAcceleratorsAlike(std::u16string_view text, std::u16string_view german) noexcept {
  return acceleratorsOf(text) == acceleratorsOf(german);
}

bool haveLineBreaksAlike(std::u16string_view text, std::u16string_view german) noexcept {
  return std::ranges::count(text, u'\n') == std::ranges::count(german, u'\n') &&
         text.starts_with(u'\n') == german.starts_with(u'\n') &&
         text.ends_with(u'\n') == german.ends_with(u'\n');
}

std::size_t longestLine(std::u16string_view text) noexcept {
  std::size_t longest = 0;
  while (true) {
    const std::size_t length = std::min(text.find(u'\n'), text.size());
    longest = std::max(longest, length);
    if (length == text.size()) return longest;
    text.remove_prefix(length + 1);
  }
}

bool isTooLong(std::u16string_view text, std::u16string_view german,
               const TextRoom& room) noexcept {
  const double most = static_cast<double>(longestLine(german)) * room.percent / 100;
  return static_cast<double>(longestLine(text)) > most + room.extraUnits;
}

using German = std::unordered_map<std::int32_t, std::u16string_view>;

Problems<TextFinding> check(const TextList& list, const German* german, const TextRoom& room,
                            std::size_t limit) {
  ProblemCollector<TextFinding> findings(limit);
  std::unordered_set<std::int32_t> seen;
  for (std::size_t i = 0; i < list.entries.size(); ++i) {
    const std::int32_t id = list.entries[i].id;
    const auto report = [&](TextFindingKind kind) {
      findings.add(i, 0, [&] { return TextFinding{kind, i, id}; });
    };
    if (!seen.insert(id).second) report(TextFindingKind::repeatedId);
    if (list.entries[i].text.IsEmpty()) {
      report(TextFindingKind::emptyText);
      continue;
    }
    if (!german) continue;
    const auto found = german->find(id);
    if (found == german->end()) {
      report(TextFindingKind::unknownId);
      continue;
    }
    // The store has line feeds only.
    CString text = list.entries[i].text;
    text.Replace(u"\r\n", u"\n");
    const std::u16string_view other = found->second;
    if (!havePlaceholdersAlike(text, other)) report(TextFindingKind::placeholders);
    if (!haveAcceleratorsAlike(text, other)) report(TextFindingKind::accelerator);
    if (!haveLineBreaksAlike(text, other)) report(TextFindingKind::lineBreaks);
    if (std::ranges::count(text, u'\t') != std::ranges::count(other, u'\t')) {
      report(TextFindingKind::tabs);
    }
    if (isTooLong(text, other, room)) report(TextFindingKind::tooLong);
  }
  return std::move(findings).finish();
}

}  // namespace

Problems<TextFinding> checkTexts(const TextList& list, const TextList& german, const TextRoom& room,
                                 std::size_t limit) {
  German texts;
  texts.reserve(german.entries.size());
  for (const TextEntry& entry : german.entries) {
    if (!entry.text.IsEmpty()) texts[entry.id] = entry.text;
  }
  return check(list, &texts, room, limit);
}

Problems<TextFinding> checkTexts(const TextList& list, std::size_t limit) {
  return check(list, nullptr, {}, limit);
}

CString describe(TextFindingKind kind) {
  switch (kind) {
    case TextFindingKind::repeatedId:
      return u"has this id again; the later text counts";
    case TextFindingKind::emptyText:
      return u"is empty, so it is left out";
    case TextFindingKind::unknownId:
      return u"has an id that the German list lacks";
    case TextFindingKind::placeholders:
      return u"takes other values than the German text";
    case TextFindingKind::accelerator:
      return u"marks another number of keys than the German text";
    case TextFindingKind::lineBreaks:
      return u"has other line breaks than the German text";
    case TextFindingKind::tabs:
      return u"has another number of tabs than the German text";
    case TextFindingKind::tooLong:
      return u"is much longer than the German text";
  }
  return {};
}

std::u16string_view kindName(TextFindingKind kind) noexcept {
  switch (kind) {
    case TextFindingKind::repeatedId:
      return u"repeated-id";
    case TextFindingKind::emptyText:
      return u"empty-text";
    case TextFindingKind::unknownId:
      return u"unknown-id";
    case TextFindingKind::placeholders:
      return u"placeholders";
    case TextFindingKind::accelerator:
      return u"accelerator";
    case TextFindingKind::lineBreaks:
      return u"line-breaks";
    case TextFindingKind::tabs:
      return u"tabs";
    case TextFindingKind::tooLong:
      return u"too-long";
  }
  return u"";
}

TextCoverage coverageOf(const TextList& list, const TextList& german) {
  const Effective texts = effectiveTexts(list);
  const Effective wanted = effectiveTexts(german);
  TextCoverage coverage;
  coverage.germanIds = wanted.size();
  for (const auto& [id, text] : wanted) {
    const auto found = texts.find(id);
    if (found == texts.end()) {
      coverage.missing.push_back(id);
      continue;
    }
    ++coverage.translated;
    if (found->second == text) ++coverage.sameAsGerman;
  }
  for (const auto& [id, text] : texts) {
    if (!wanted.contains(id)) coverage.unknown.push_back(id);
  }
  return coverage;
}

std::vector<TextDifference> differencesOf(const TextList& before, const TextList& after) {
  const Effective old = effectiveTexts(before);
  const Effective changed = effectiveTexts(after);
  std::vector<TextDifference> differences;
  auto a = old.begin();
  auto b = changed.begin();
  while (a != old.end() || b != changed.end()) {
    if (b == changed.end() || (a != old.end() && a->first < b->first)) {
      differences.push_back({a->first, CString(a->second), CString()});
      ++a;
    } else if (a == old.end() || b->first < a->first) {
      differences.push_back({b->first, CString(), CString(b->second)});
      ++b;
    } else {
      if (a->second != b->second) {
        differences.push_back({a->first, CString(a->second), CString(b->second)});
      }
      ++a;
      ++b;
    }
  }
  return differences;
}

}  // namespace kpx
