#include "kpx/xml/internal/Outcome.h"

#include <algorithm>
#include <charconv>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/internal/Tokenizer.h"

namespace kpx::detail {
namespace {

void appendAttribute(std::u16string& record, std::u16string_view name, std::u16string_view value) {
  record.append(u" ").append(name).append(u"=\"");
  escapeInto(record, value, MarkupFlag::attributeValue);
  record.append(u"\"");
}

void appendAttribute(std::u16string& record, std::u16string_view name, std::int64_t value) {
  record.append(u" ").append(name).append(u"=\"");
  appendNumber(record, value);
  record.append(u"\"");
}

// The sentence of an outcome. "{name}" stands for the attribute of that name; what stands in
// square brackets is left out when the attribute in it is missing.
struct Sentence {
  std::u16string_view outcome;
  std::u16string_view text;
};

constexpr Sentence sentences[] = {
    {u"first_tag_syntax", u"tag syntax error at offset {offset} expecting tag name / ! or ?"},
    {u"exclamation_tag_syntax",
     u"tag syntax error at offset {offset} expecting markup declaration"},
    {u"doctype_tag_syntax", u"tag syntax error at offset {offset} expecting 'DOCTYPE' [ or -"},
    {u"comment_tag_syntax", u"tag syntax error at offset {offset} expecting - to begin comment"},
    {u"cdata_section_syntax", u"tag syntax error at offset {offset} expecting 'CDATA'"},
    {u"unterminated_tag_syntax", u"unterminated tag at offset {offset}"},
    {u"unended_start_tag",
     u"start tag '{tagname}' at offset {offset} expecting end tag at offset {offset2}"},
    {u"lone_end_tag", u"lone end tag '{tagname}' at offset {offset}"},
    {u"root_has_sibling", u"root element has sibling"},
    {u"no_root_element", u"no root element"},
    {u"limit_exceeded", u"{type} at offset {offset} exceeds what a document can hold"},
    {u"read", u"read[ {encoding}][, {length} units]"},
    {u"write", u"wrote[ {encoding}][, {length} units]"},
    {u"bom", u"byte-order mark[ {encoding}]"},
    {u"file_error", u"file error[: {msg}]"},
    {u"converted_from", u"converted from {encoding}[ to {length} units]"},
    {u"converted_to", u"converted to {encoding}[, {length} units]"},
    {u"conversion_loss",
     u"characters get lost in the conversion[ to {encoding}][: {count}][, the first at offset "
     u"{offset2}]"},
    {u"respelled",
     u"bytes would be written otherwise[ in {encoding}][: {count}][, the first at offset "
     u"{offset2}]"},
    {u"nulls_removed", u"removed {count} nulls"},
    {u"truncation_error", u"the text ends in the middle of a character"},
    {u"endian_swap", u"byte order was swapped"},
    {u"utf8_detection", u"detected as UTF-8"},
};

// The value of an attribute as it stands in the tag; records write them in one way only.
std::u16string_view rawAttribute(std::u16string_view tag, std::u16string_view name) {
  std::u16string opening(u" ");
  opening.append(name).append(u"=\"");
  std::size_t start = tag.find(opening);
  if (start == tag.npos) return {};
  start += opening.size();
  return tag.substr(start, tag.find(u'"', start) - start);
}

// Appends the pattern with values put in. Answers false when one was missing.
bool appendFilled(std::u16string& out, std::u16string_view pattern, std::u16string_view tag) {
  bool complete = true;
  for (std::size_t i = 0; i < pattern.size(); ++i) {
    if (pattern[i] == u'[' && pattern.find(u']', i) != pattern.npos) {
      const std::size_t close = pattern.find(u']', i);
      std::u16string part;
      if (appendFilled(part, pattern.substr(i + 1, close - i - 1), tag)) out.append(part);
      i = close;
    } else if (pattern[i] == u'{') {
      const std::size_t close = pattern.find(u'}', i);
      const std::u16string_view value = rawAttribute(tag, pattern.substr(i + 1, close - i - 1));
      complete = complete && !value.empty();
      unescapeInto(out, value);
      i = close;
    } else {
      out.push_back(pattern[i]);
    }
  }
  return complete;
}

}  // namespace

void appendNumber(std::u16string& text, std::int64_t number) {
  char digits[24];
  const auto end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  text.append(digits, end);
}

void addOutcome(CString& result, const Outcome& outcome) {
  std::u16string& text = result.units();
  if (text.size() >= outcomeLimit) return;
  text.append(u"<").append(outcome.name);
  if (!outcome.textName.empty()) appendAttribute(text, outcome.textName, outcome.text);
  if (!outcome.numberName.empty()) appendAttribute(text, outcome.numberName, outcome.number);
  if (outcome.offset2) appendAttribute(text, u"offset2", *outcome.offset2);
  text.append(u"/>");
}

CString outcomeSentences(std::u16string_view result) {
  CString joined;
  const auto end = static_cast<int>(std::min(result.size(), outcomeLimit));
  for (TokenPos token{result}; token.end < end;) {
    // Names stand in plain lines as they are, so these are passed over line by line.
    if (result[static_cast<std::size_t>(token.end)] != u'<') {
      token.end = findUnit(result, token.end, '\n') + 1;
      continue;
    }
    nextToken(token);
    const std::u16string_view tag = result.substr(static_cast<std::size_t>(token.start),
                                                  static_cast<std::size_t>(token.length()));
    for (const Sentence& sentence : sentences) {
      if (sentence.outcome != token.name()) continue;
      if (!joined.IsEmpty()) joined += u"\n";
      appendFilled(joined.units(), sentence.text, tag);
      break;
    }
  }
  return joined;
}

}  // namespace kpx::detail
