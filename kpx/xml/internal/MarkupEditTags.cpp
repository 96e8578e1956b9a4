#include <cstdint>
#include <cstring>

#include "kpx/xml/internal/ElementParser.h"
#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/internal/MarkupEditor.h"
#include "kpx/xml/internal/NameUnits.h"
#include "kpx/xml/internal/XmlCharacters.h"

namespace kpx::detail {
namespace {

// Whether a text is one start tag, and an empty element or not as it is wanted.
bool readsAsStartTag(std::u16string_view tag, bool isEmpty) noexcept {
  TokenPos token;
  token.text = tag;
  return nextToken(token) == MarkupNode::element &&
         static_cast<std::size_t>(token.end) == tag.size() && token.isEmptyElement() == isEmpty;
}

bool isEmptyTag(std::u16string_view tag) noexcept { return tag[tag.size() - 2] == u'/'; }

// The same as needsEscape for attribute values, for short texts.
bool hasSpecial(std::u16string_view text) noexcept {
  if (text.size() > 32) return needsEscape(text, MarkupFlag::attributeValue);
  constexpr std::uint64_t specials = std::uint64_t{1} << u'"' | std::uint64_t{1} << u'&' |
                                     std::uint64_t{1} << u'\'' | std::uint64_t{1} << u'<' |
                                     std::uint64_t{1} << u'>';
  for (const char16_t unit : text) {
    if (unit < 64 && (specials >> unit & 1) != 0) return true;
  }
  return false;
}

// Copies a short text without a call, and answers the end of the copy.
char16_t* copyUnits(char16_t* out, std::u16string_view text) noexcept {
  const char16_t* from = text.data();
  std::size_t left = text.size();
  for (; left >= 4; left -= 4, from += 4, out += 4) std::memcpy(out, from, 4 * sizeof(char16_t));
  for (; left > 0; --left) *out++ = *from++;
  return out;
}

// Tags whose end depends on more than their attributes: a change in them is read back first.
bool isOddTag(std::u16string_view tag) noexcept { return tagNameOf(tag).find(u'=') != tag.npos; }

// The record that follows in the order of the document, 0 behind the last.
int following(const ElementIndex& index, int element) noexcept {
  if (index[element].firstChild != 0) return index[element].firstChild;
  while (element != 0 && index[element].next == 0) element = index[element].parent;
  return index[element].next;
}

// Whether both have the same elements in the same places.
bool haveSameElements(const ElementIndex& left, const ElementIndex& right) noexcept {
  int a = left[0].firstChild;
  int b = right[0].firstChild;
  for (; a != 0 && b != 0; a = following(left, a), b = following(right, b)) {
    const ElemPos& first = left[a];
    const ElemPos& second = right[b];
    if (first.start != second.start || first.length != second.length ||
        first.tagLengths != second.tagLengths || first.level() != second.level()) {
      return false;
    }
  }
  return a == b;
}

}  // namespace

// Replaces a part of a start tag. `checked`: reads the new tag back first. There is room only
// when this answers true.
bool MarkupEditor::changeStartTag(int element, int from, int removed, const TextPieces& pieces,
                                  bool checked) {
  const ElemPos& record = index_[element];
  const int length = record.startTagLength() - removed;
  if (pieces.length() > static_cast<std::size_t>(ElemPos::maxStartTag - length)) return false;
  if (checked) {
    const std::u16string_view tag = document_.x_StartTag(element);
    std::u16string changed(tag.substr(0, static_cast<std::size_t>(from)));
    changed.resize(changed.size() + pieces.length());
    pieces.writeTo(changed.data() + from);
    changed.append(textOf(record.start + from + removed, record.contentStart()));
    if (!readsAsStartTag(changed, isEmptyTag(tag))) return false;
  }
  if (!makeRoom(pieces.length(), static_cast<std::size_t>(removed))) return false;
  change(element, 0, index_[element].start + from, removed, pieces);
  index_[element].setTagLengths(length + static_cast<int>(pieces.length()),
                                index_[element].endTagLength());
  return true;
}

// --- names ---------------------------------------------------------------------------------------

// Writes other names into the tags of an element. There is room for them.
void MarkupEditor::changeNames(int element, int oldLength, std::u16string_view name,
                               int oldEndLength, std::u16string_view endName) noexcept {
  const int by = static_cast<int>(name.size()) - oldLength;
  change(element, 0, index_[element].start + 1, oldLength, TextPieces(name));
  ElemPos& record = index_[element];
  int endTag = record.endTagLength();
  record.setTagLengths(record.startTagLength() + by, endTag);
  if (endTag == 0) return;
  change(element, lastChild(element), record.contentEnd() + 2, oldEndLength, TextPieces(endName));
  endTag += static_cast<int>(endName.size()) - oldEndLength;
  record.setTagLengths(record.startTagLength(), endTag);
}

bool MarkupEditor::setTagName(int element, std::u16string_view name) {
  if (!isXmlName(name)) return false;
  const std::u16string newName(name);
  const ElemPos record = index_[element];
  const std::u16string_view tag = document_.x_StartTag(element);
  const std::u16string oldName(tagNameOf(tag));
  const std::u16string_view rest = tag.substr(1 + oldName.size());
  const std::u16string_view endTag = textOf(record.contentEnd(), record.end());
  const std::u16string oldEndName(endTag.empty() ? endTag : tagNameOf(endTag.substr(1)));
  const auto length = static_cast<int>(newName.size());
  const auto oldLength = static_cast<int>(oldName.size());
  const auto oldEndLength = static_cast<int>(oldEndName.size());
  if (record.startTagLength() - oldLength > ElemPos::maxStartTag - length ||
      (!endTag.empty() && record.endTagLength() - oldEndLength > ElemPos::maxEndTag - length) ||
      !readsAsStartTag(u"<" + newName + std::u16string(rest), isEmptyTag(tag))) {
    return false;
  }

  // In an ill-formed document, a new name could meet an end tag that was meant for another
  // element. Parsed before anything is changed, because that needs memory.
  const bool isIllFormed = index_[0].hasFlag(ElemPos::illFormedFlag);
  ElementIndex parsed;
  if (isIllFormed) {
    std::u16string text(textOf(0, record.start + 1));
    text.append(newName).append(textOf(record.start + 1 + oldLength, record.contentEnd()));
    if (!endTag.empty()) {
      text.append(u"</").append(newName).append(endTag.substr(2 + oldEndName.size()));
    }
    text.append(textOf(record.end(), size()));
    parseSilently(CString(std::move(text)), document_.docFlags_, parsed);
  }
  if (!makeRoom(2 * newName.size(), 0)) return false;
  changeNames(element, oldLength, newName, oldEndLength, newName);
  if (!isIllFormed || haveSameElements(index_, parsed)) return true;
  changeNames(element, length, oldName, length, oldEndName);
  return false;
}

// --- attributes ----------------------------------------------------------------------------------

// Adds an attribute that the tag does not have, behind the others. The value is escaped. Made
// for many short attributes in a row: no call for each piece of text, and none for positions
// that are not there.
bool MarkupEditor::addAttribute(int element, std::u16string_view name, std::u16string_view value,
                                bool checked) {
  ElemPos& record = index_[element];
  const int startTag = record.startTagLength();
  const int close = record.start + startTag - 1;
  int end = unitAt(close - 1) == u'/' ? close - 1 : close;
  while (isMarkupSpace(unitAt(end - 1))) --end;
  const std::size_t length = name.size() + value.size() + 4;
  const bool isOpen = unitAt(end - 1) == u'=';
  constexpr std::size_t shortLength = 256;
  if (checked || isOpen || length > shortLength) {
    // Behind an "=" without a value it would become that value.
    const auto behindName = 1 + static_cast<int>(tagNameOf(document_.x_StartTag(element)).size());
    TextPieces pieces;
    pieces.add(u" ");
    pieces.add(name);
    pieces.add(u"=\"");
    pieces.add(value);
    pieces.add(u"\"");
    return changeStartTag(element, isOpen ? behindName : end - record.start, 0, pieces,
                          checked || isOpen);
  }
  const auto by = static_cast<int>(length);
  if (startTag > ElemPos::maxStartTag - by) return false;
  if (text_.capacity() - text_.size() < length && !makeRoom(length, 0)) return false;
  text_.insert(static_cast<std::size_t>(end), length, u' ');
  char16_t* out = copyUnits(text_.data() + end + 1, name);
  *out++ = u'=';
  *out++ = u'"';
  *copyUnits(out, value) = u'"';
  record.tagLengths += static_cast<std::uint32_t>(by);
  moveRecords(element, 0, by);
  movePositions(end, 0, by);
  return true;
}

bool MarkupEditor::setAttribute(int element, std::u16string_view name, std::u16string_view value) {
  if (!isXmlName(name)) return false;
  std::u16string nameCopy;
  std::u16string valueCopy;
  name = keepApart(name, nameCopy);
  if (hasSpecial(value)) {
    escapeInto(valueCopy, value, MarkupFlag::attributeValue);
    value = valueCopy;
  } else {
    value = keepApart(value, valueCopy);
  }
  AttributeMemory& memory = document_.attributeMemory_;
  if (memory.isAbout(element) && memory.addNew(name)) {
    return addAttribute(element, name, value, false);
  }

  const std::u16string_view tag = document_.x_StartTag(element);
  const bool isOdd = isOddTag(tag);
  AttributeReader attribute(tag);
  if (attribute.find(name)) {
    const bool isQuoted = attribute.isQuoted();
    TextPieces pieces;
    if (attribute.valueBegin() == attribute.nameEnd()) pieces.add(u"=");
    if (!isQuoted) pieces.add(u"\"");
    pieces.add(value);
    if (!isQuoted) pieces.add(u"\"");
    return changeStartTag(element, attribute.valueBegin(),
                          attribute.valueEnd() - attribute.valueBegin(), pieces,
                          !isQuoted || isOdd);
  }
  if (!memory.isAbout(element) && !isOdd) {
    memory.begin(element);
    while (attribute.next()) memory.addNew(attribute.name());
    memory.addNew(name);
  }
  return addAttribute(element, name, value, isOdd);
}

bool MarkupEditor::removeAttribute(int element, std::u16string_view name) {
  const std::u16string_view tag = document_.x_StartTag(element);
  AttributeReader attribute(tag);
  int begin = 1 + static_cast<int>(tagNameOf(tag).size());
  for (;;) {
    if (!attribute.next()) return false;
    if (attribute.name() == name) break;
    begin = attribute.end();
  }
  const int end = attribute.end();
  // What separates it goes with it, unless the rest would then grow together with what is before.
  const char16_t before = tag[static_cast<std::size_t>(begin) - 1];
  const char16_t behind = tag[static_cast<std::size_t>(end)];
  const bool growsTogether = !endsName(behind) || before == u'/' || before == u'=';
  return changeStartTag(element, growsTogether ? attribute.nameBegin() : begin,
                        end - (growsTogether ? attribute.nameBegin() : begin), {}, true);
}

}  // namespace kpx::detail
