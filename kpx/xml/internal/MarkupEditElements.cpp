#include <algorithm>
#include <limits>
#include <vector>

#include "kpx/xml/internal/ElementParser.h"
#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/internal/MarkupEditor.h"
#include "kpx/xml/internal/NameUnits.h"
#include "kpx/xml/internal/PieceCheck.h"
#include "kpx/xml/internal/XmlCharacters.h"

namespace kpx::detail {
namespace {

// Gets all or none.
std::vector<int> getRecords(ElementIndex& index, int count) {
  std::vector<int> records;
  records.reserve(static_cast<std::size_t>(count));
  try {
    while (count-- > 0) records.push_back(index.x_GetFreePos());
  } catch (...) {
    for (const int record : records) index.x_ReleasePos(record);
    throw;
  }
  return records;
}

}  // namespace

// --- what stands around a new element or node ----------------------------------------------------

// False if the end tag that the parent needs is longer than a record can hold.
bool MarkupEditor::surround(EditPlace place, bool ownLine, Surroundings& around) {
  around.place = place;
  ownLine = ownLine && !holdsText(place.parent);
  const std::u16string_view lineBreak = ownLine ? lineEnd() : std::u16string_view();
  around.behind = lineBreak;
  const ElemPos& parent = index_[place.parent];
  if (place.parent == 0 || !parent.isTagOnly()) {
    if (place.offset > 0 && unitAt(place.offset - 1) == u'>') around.lineBreak = lineBreak;
    return true;
  }
  around.opensParent = true;
  around.place.offset = parent.contentStart();
  if (unitAt(parent.contentStart() - 2) == u'/') {
    around.removed = 2;
    around.place.offset -= 2;
    // Another "/" in front, as of an address without quotes, must not make the tag empty again.
    around.before = unitAt(around.place.offset - 1) == u'/' ? u" >" : u">";
  }
  around.lineBreak = lineBreak;
  const std::u16string_view name = tagNameOf(textOf(parent.start, parent.contentStart()));
  if (name.size() + 3 > static_cast<std::size_t>(ElemPos::maxEndTag)) return false;
  around.parentEnd.reserve(name.size() + 3);
  around.parentEnd.append(u"</").append(name).append(u">");
  return true;
}

// Writes the pieces with their surroundings. There is room for it.
void MarkupEditor::changeAround(const Surroundings& around, const TextPieces& pieces) noexcept {
  TextPieces whole;
  whole.add(around.before);
  whole.add(around.lineBreak);
  whole.add(pieces);
  whole.add(around.behind);
  whole.add(around.parentEnd);
  const EditPlace place = around.place;
  change(place.parent, place.previous, place.offset, around.removed, whole);
  if (!around.opensParent) return;
  ElemPos& parent = index_[place.parent];
  parent.setTagLengths(
      parent.startTagLength() - around.removed + static_cast<int>(around.before.size()),
      static_cast<int>(around.parentEnd.size()));
  parent.clearFlag(ElemPos::unendedFlag);
}

// --- adding --------------------------------------------------------------------------------------

// Writes an element whose text is `body`. The records of it and all in it are those of a
// document that has just been parsed, if one is given.
int MarkupEditor::insertElement(EditPlace place, const TextPieces& body, int startTag, int endTag,
                                const ElementIndex* source) {
  const int level = place.parent != 0 ? index_[place.parent].level() + 1 : 0;
  int deepest = level;
  const int count = source ? source->usedCount() - 1 : 1;
  for (int i = 1; source && i <= count; ++i) {
    deepest = std::max(deepest, level + (*source)[i].level());
  }
  Surroundings around;
  if (deepest > ElemPos::maxLevel || startTag > ElemPos::maxStartTag ||
      endTag > ElemPos::maxEndTag ||
      (place.parent == 0 && !mayStandAt(MarkupNode::element, place.offset)) ||
      !surround(place, true, around) ||
      !makeRoom(body.length() + around.length(), static_cast<std::size_t>(around.removed))) {
    return 0;
  }

  const auto fill = [&](int element, int start) {
    ElemPos& record = index_[element];
    record = ElemPos{};
    record.start = start;
    record.length = static_cast<int>(body.length());
    record.setTagLengths(startTag, endTag);
    record.setLevel(level);
  };
  if (!source) {
    const int element = index_.x_GetFreePos();
    changeAround(around, body);
    fill(element, around.bodyStart());
    linkElement(element, place.parent, place.previous);
    return element;
  }

  const std::vector<int> records = getRecords(index_, count);
  changeAround(around, body);
  const int rootStart = (*source)[(*source)[0].firstChild].start;
  const auto copied = [&](int link) {
    return link != 0 ? records[static_cast<std::size_t>(link) - 1] : 0;
  };
  for (int i = 1; i <= count; ++i) {
    ElemPos record = (*source)[i];
    record.start += around.bodyStart() - rootStart;
    record.setLevel(level + record.level());
    record.parent = copied(record.parent);
    record.firstChild = copied(record.firstChild);
    record.next = copied(record.next);
    record.previous = copied(record.previous);
    index_[copied(i)] = record;
  }
  const int root = copied((*source)[0].firstChild);
  linkElement(root, place.parent, place.previous);
  return root;
}

// The markup of an element's data; answers false if there is none to be written.
bool MarkupEditor::composeData(std::u16string_view data, int flags,
                               std::u16string& composed) const {
  if ((flags & MarkupFlag::withCData) != 0) {
    appendCDataSection(composed, data);
  } else {
    escapeInto(composed, data, flags & MarkupFlag::withReferences);
  }
  return !composed.empty();
}

int MarkupEditor::addElement(EditPlace place, std::u16string_view name, std::u16string_view data,
                             int flags) {
  if (!isXmlName(name)) return 0;
  std::u16string nameCopy;
  name = keepApart(name, nameCopy);
  std::u16string content;
  const auto nameLength = static_cast<int>(name.size());
  TextPieces body;
  body.add(u"<");
  body.add(name);
  if (data.empty()) {
    body.add(u"/>");
    return insertElement(place, body, nameLength + 3, 0, nullptr);
  }
  composeData(data, flags, content);
  if (isReferenceData(flags) && !hasRightReferences(content, DocumentRules(text_))) return 0;
  body.add(u">");
  body.add(content);
  body.add(u"</");
  body.add(name);
  body.add(u">");
  return insertElement(place, body, nameLength + 2, nameLength + 3, nullptr);
}

int MarkupEditor::addMarkup(EditPlace place, std::u16string_view markup, bool isWritten) {
  if (markup.size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) return 0;
  const CString piece(markup);
  ElementIndex index;
  parseSilently(piece, document_.docFlags_, index);
  const ElemPos& root = index[index[0].firstChild];
  const bool isOne = index[0].firstChild != 0 && root.next == 0;
  if (!isOne || index[0].hasFlag(ElemPos::illFormedFlag)) return 0;
  const auto element = piece.view().substr(static_cast<std::size_t>(root.start),
                                           static_cast<std::size_t>(root.length));
  if (!isWritten && !isRightElement(element, DocumentRules(text_))) return 0;
  return insertElement(place, TextPieces(element), root.startTagLength(), root.endTagLength(),
                       &index);
}

// --- removing and replacing ----------------------------------------------------------------------

void MarkupEditor::removeElement(int element) noexcept {
  const int parent = index_[element].parent;
  const int previous = document_.x_ElemBefore(element);
  int begin = index_[element].start;
  int end = index_[element].end();
  const int lineBegin = lineBeginOf(begin);
  const int behindLine = behindLineEnd(end);
  // A line that would stay empty goes with the element, unless it is part of a text.
  const bool standsAlone = behindLine != end && (lineBegin == 0 || isLineEnd(lineBegin - 1));
  if (standsAlone && !holdsText(parent)) {
    begin = lineBegin;
    end = behindLine;
  }
  forgetPositionsIn(element);
  unlinkElement(element);
  releaseElements(element);
  const bool isClosing = wouldClose(begin, end);
  change(parent, previous, begin, end - begin + isClosing,
         isClosing ? TextPieces(u"&gt;") : TextPieces());
}

bool MarkupEditor::setContent(int element, std::u16string_view data, int flags) {
  const ElemPos& record = index_[element];
  if (record.firstChild != 0) return false;
  std::u16string content;
  const bool hasContent = composeData(data, flags, content);
  if (isReferenceData(flags) && !hasRightReferences(content, DocumentRules(text_))) return false;
  Surroundings around;
  if (record.isTagOnly()) {
    if (!hasContent) return true;
    if (!surround({element, 0, 0}, false, around)) return false;
  } else {
    around.place = {element, 0, record.contentStart()};
    around.removed = record.contentEnd() - record.contentStart();
    if (textOf(record.contentStart(), record.contentEnd()) == content) return true;
  }
  if (!makeRoom(content.size() + around.length(), static_cast<std::size_t>(around.removed))) {
    return false;
  }
  std::erase_if(document_.savedPositions_,
                [&](const auto& saved) { return saved.second.parent == element; });
  changeAround(around, TextPieces(content));
  // Lone end tags went with the old content.
  index_[element].clearFlag(ElemPos::loneEndFlag | ElemPos::noTextFlag);
  return true;
}

}  // namespace kpx::detail
