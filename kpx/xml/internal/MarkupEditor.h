#pragma once

#include <string>
#include <string_view>

#include "kpx/xml/CMarkup.h"

namespace kpx::detail {

/// Some pieces of text that are written one behind the other. Points to them only.
class TextPieces {
 public:
  TextPieces() noexcept = default;
  explicit TextPieces(std::u16string_view piece) noexcept { add(piece); }

  void add(std::u16string_view piece) noexcept {
    pieces_[count_++] = piece;
    length_ += piece.size();
  }
  void add(const TextPieces& others) noexcept {
    for (int i = 0; i < others.count_; ++i) add(others.pieces_[i]);
  }
  std::size_t length() const noexcept { return length_; }
  /// Writes all of them; `out` has room for them.
  void writeTo(char16_t* out) const noexcept {
    for (int i = 0; i < count_; ++i) out += pieces_[i].copy(out, pieces_[i].size());
  }

 private:
  std::u16string_view pieces_[12];
  int count_ = 0;
  std::size_t length_ = 0;
};

/// Where a new element or node goes: the text in front of `offset`, and the record behind its
/// sibling `previous` (0: as the first child of `parent`).
struct EditPlace {
  int parent = 0;
  int previous = 0;
  int offset = 0;
};

/// Changes the text of a document and its records together.
///
/// Each change first finds out whether it can be made, then gets all the memory it needs, and
/// only then changes anything; from there on nothing can fail. So a change that is refused
/// (answers false or 0) or runs out of memory leaves the document as it was. The current elements
/// are the caller's to set; saved positions and the current node move with the text.
class MarkupEditor {
 public:
  explicit MarkupEditor(CMarkup& document) noexcept
      : document_(document), text_(document.doc_.units()), index_(document.index_) {}

  // --- places of new elements: MarkupEditor.cpp --------------------------------------------------

  /// On the line behind (before) an element or the current node; in text at once.
  EditPlace behind(int element) noexcept;
  EditPlace before(int element) noexcept;
  EditPlace behindNode() noexcept;
  EditPlace beforeNode() noexcept;
  /// As the last of all in a parent, or as its first element.
  EditPlace asLast(int parent) noexcept;
  EditPlace asFirst(int parent) noexcept;

  // --- elements: MarkupEditElements.cpp ----------------------------------------------------------

  /// Answers the record of the new element; 0 if it was refused.
  int addElement(EditPlace place, std::u16string_view name, std::u16string_view data, int flags);
  /// `isWritten`: by the library itself, with right names, quotes and references.
  int addMarkup(EditPlace place, std::u16string_view markup, bool isWritten);
  void removeElement(int element) noexcept;
  bool setContent(int element, std::u16string_view data, int flags);

  // --- tags: MarkupEditTags.cpp ------------------------------------------------------------------

  bool setTagName(int element, std::u16string_view name);
  bool setAttribute(int element, std::u16string_view name, std::u16string_view value);
  bool removeAttribute(int element, std::u16string_view name);

  // --- nodes that are no elements: MarkupEditNodes.cpp -------------------------------------------

  /// Adds a node behind (before) the current position and makes it the current one.
  bool addNode(int type, std::u16string_view text, bool before);
  bool setNode(std::u16string_view text, int flags);
  /// Answers false where the document needs it.
  bool removeNode();

  /// The line break of the document, or of a new one.
  std::u16string_view lineEnd() noexcept;

 private:
  struct Surroundings;

  // --- what may stand where: MarkupEditRules.cpp -------------------------------------------------

  bool holdsText(int parent) noexcept;
  int documentStart() const noexcept;
  int declarationEnd() const noexcept;
  bool hasDocumentType(int begin, int end) const noexcept;
  bool mayStandAt(int type, int offset) const noexcept;
  bool isRightNode(int type, std::u16string_view text, std::u16string_view markup, EditPlace place,
                   int removed) const;
  bool keepsRight(int offset, int removed, std::u16string_view markup) const;
  void keepFromClosing(std::u16string& markup, int offset) const;
  bool wouldClose(int begin, int end) const noexcept;

  // --- text and records: MarkupEditor.cpp --------------------------------------------------------

  bool makeRoom(std::size_t added, std::size_t removed);
  void change(int parent, int previous, int offset, int removed, const TextPieces& pieces) noexcept;
  void moveRecords(int parent, int previous, int by) noexcept;
  void movePositions(int offset, int removed, int inserted) noexcept {
    if (document_.nodeLength_ == 0 && document_.savedPositions_.empty()) return;
    moveNodes(offset, removed, inserted);
  }
  void moveNodes(int offset, int removed, int inserted) noexcept;
  void settleNode(CMarkup::NodePos& node) const noexcept;
  void linkElement(int element, int parent, int previous) noexcept;
  void unlinkElement(int element) noexcept;
  void releaseElements(int top) noexcept;
  bool isWithin(int element, int top) const noexcept;
  void forgetPositionsIn(int element) noexcept;
  template <class Body>
  void forEachNode(Body body) noexcept;

  bool isLineEnd(int offset) const noexcept;
  int behindLineEnd(int offset) const noexcept;
  int lineBeginOf(int offset) const noexcept;
  int contentEnd(int parent) const noexcept;
  int lastChild(int parent) const noexcept;
  CMarkup::NodePos nodeEndingAt(EditPlace place) const noexcept;

  char16_t unitAt(int offset) const noexcept { return text_[static_cast<std::size_t>(offset)]; }
  int size() const noexcept { return static_cast<int>(text_.size()); }
  std::u16string_view textOf(int begin, int end) const noexcept {
    return document_.x_Text(begin, end);
  }
  std::u16string_view keepApart(std::u16string_view text, std::u16string& copy) const;

  // --- parts of the changes ----------------------------------------------------------------------

  bool surround(EditPlace place, bool ownLine, Surroundings& around);
  void changeAround(const Surroundings& around, const TextPieces& pieces) noexcept;
  int insertElement(EditPlace place, const TextPieces& body, int startTag, int endTag,
                    const ElementIndex* source);
  bool composeData(std::u16string_view data, int flags, std::u16string& composed) const;
  static bool isReferenceData(int flags) noexcept {
    return (flags & MarkupFlag::dataFlags) == MarkupFlag::withReferences;
  }
  bool changeStartTag(int element, int from, int removed, const TextPieces& pieces, bool checked);
  bool addAttribute(int element, std::u16string_view name, std::u16string_view value, bool checked);
  void changeNames(int element, int oldLength, std::u16string_view name, int oldEndLength,
                   std::u16string_view endName) noexcept;
  EditPlace nodePlace(bool before) const noexcept;
  EditPlace asFirstNode(int parent) const noexcept;

  CMarkup& document_;
  std::u16string& text_;
  ElementIndex& index_;
};

/// What has to be written around a new element or node, and what it replaces: a parent that is
/// only a start tag gets an end tag, and an element its own line.
struct MarkupEditor::Surroundings {
  EditPlace place;
  int removed = 0;  // the "/>" of the parent
  bool opensParent = false;
  std::u16string_view before;     // ">" or " >" of the parent
  std::u16string_view lineBreak;  // in front of the new element
  std::u16string_view behind;     // the line break behind it
  std::u16string parentEnd;       // "</parent>"

  std::size_t length() const noexcept {
    return before.size() + lineBreak.size() + behind.size() + parentEnd.size();
  }
  int bodyStart() const noexcept {
    return place.offset + static_cast<int>(before.size() + lineBreak.size());
  }
};

}  // namespace kpx::detail
