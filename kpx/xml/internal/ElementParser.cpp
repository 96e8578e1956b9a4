#include "kpx/xml/internal/ElementParser.h"

#include <algorithm>

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/TagScan.h"

namespace kpx::detail {
namespace {

// So many open elements are compared one by one before the search by name begins.
constexpr int shortSearch = 8;

}  // namespace

ElementParser::ElementParser(std::u16string_view text, int docFlags, ElementIndex& index,
                             ParseReport& report)
    : ignoreCase_((docFlags & MarkupFlag::ignoreCase) != 0), index_(index), report_(report) {
  token_.text = text;
  token_.docFlags = docFlags;
  state_.text = text.data();
  state_.size = static_cast<int>(text.size());
}

ElementParser::~ElementParser() = default;

void parseSilently(const CString& text, int docFlags, ElementIndex& index) {
  const MarkupProblemSink nobody;
  ParseReport report(text, nullptr, nobody);
  index.reset();
  index.x_AllocElemPos(text.GetLength() / 64 + 8);
  index[0].length = text.GetLength();
  ElementParser(text, docFlags, index, report).parse(0, 0);
  index.releaseSpareSegments();
}

std::u16string_view ElementParser::nameOf(const OpenElement& element) const noexcept {
  return tagNameAt(token_.text, element.start + 1);
}

void ElementParser::parse(int parent, int position) {
  begin(parent, position);
  // Leaves complete records behind on every way out.
  struct Finisher {
    ElementParser& parser;
    ~Finisher() { parser.finish(); }
  } finisher{*this};
  const auto scan = activeTagScan().scan;
  do {
    if (!scan || inRefused()) continue;
    state_.maxDepth =
        std::min(static_cast<int>(stack_.size()), ElemPos::maxLevel - state_.baseLevel + 2);
    scan(state_);
  } while (step());
}

void ElementParser::begin(int parent, int position) {
  parent_ = parent;
  firstMade_ = index_.usedCount();
  stack_.resize(64);
  state_.stack = stack_.data();
  state_.depth = 1;
  state_.position = position;
  state_.used = firstMade_;
  state_.capacity = index_.capacity();
  state_.segments = index_.segments();
  state_.baseLevel = parent == 0 ? 0 : record(parent).level() + 1;
  const int firstChild = record(parent).firstChild;
  stack_[0] = OpenElement{};
  stack_[0].index = parent;
  if (firstChild != 0) stack_[0].lastChild = record(firstChild).previous;
}

void ElementParser::finish() noexcept {
  closeUnended(0);
  const OpenElement& bottom = state_.stack[0];
  ElemPos& parent = record(parent_);
  parent.setFlag(bottom.flags);
  index_.setUsedCount(state_.used);
  if (state_.used == firstMade_) return;
  if (parent.firstChild == 0) {
    parent.firstChild = firstMade_;
  } else {
    record(record(parent.firstChild).previous).next = firstMade_;
  }
  record(parent.firstChild).previous = bottom.lastChild;
  record(bottom.lastChild).next = 0;
  if (!levelsMoved_) return;
  // A parent's record always stands before those of its children.
  for (int index = firstMade_; index < state_.used; ++index) {
    const int above = record(index).parent;
    record(index).setLevel(above == parent_ ? state_.baseLevel : record(above).level() + 1);
  }
}

int ElementParser::lastMadeEnd() noexcept {
  const int last = state_.used - 1;
  if (last < firstMade_) return 0;
  // The last one has no record yet if it is still open.
  const OpenElement& open = state_.stack[(inRefused() ? refusedFrom_ : state_.depth) - 1];
  if (open.index == last) return open.start + open.startTagLength;
  return record(last).end();
}

bool ElementParser::step() {
  token_.end = state_.position;
  const int kind = nextMarkup(token_);
  state_.position = token_.end;
  switch (kind) {
    case MarkupNode::element:
      startTag();
      return true;
    case TokenKind::endTag:
      endTag();
      return true;
    case TokenKind::syntaxError:
      state_.stack[0].flags |= ElemPos::illFormedFlag;
      report_.syntaxError(token_.problem, token_.start);
      return true;
    case TokenKind::unterminated:
      state_.stack[0].flags |= ElemPos::illFormedFlag;
      top().flags |= ElemPos::loneEndFlag;
      report_.unterminated(token_.openType, token_.start);
      report_.unterminatedLine(token_.name(), token_.start, lastMadeEnd());
      [[fallthrough]];
    case TokenKind::endOfText:
      reportUnended(0, {}, state_.size, state_.size - 1);
      return false;
    default:
      return true;
  }
}

void ElementParser::makeRoom() {
  if (state_.used < state_.capacity) return;
  index_.setUsedCount(state_.used);
  index_.x_AllocElemPos(0);
  state_.capacity = index_.capacity();
  state_.segments = index_.segments();
}

void ElementParser::pushOpen(const OpenElement& element) {
  const auto depth = static_cast<std::size_t>(state_.depth);
  if (depth == stack_.size()) {
    stack_.resize(2 * depth);
    state_.stack = stack_.data();
  }
  stack_[depth] = element;
  ++state_.depth;
}

const char16_t* ElementParser::exceededLimit() noexcept {
  if (token_.length() > ElemPos::maxStartTag) return u"start_tag";
  if (state_.baseLevel + state_.depth - 1 > ElemPos::maxLevel) return u"level";
  return nullptr;
}

void ElementParser::startTag() {
  // An element that its record could not hold gets none, and neither does anything in it.
  const char16_t* const limit = inRefused() ? nullptr : exceededLimit();
  if (limit) {
    state_.stack[0].flags |= ElemPos::illFormedFlag;
    report_.tooLarge(limit, token_.start);
  }
  if (limit || inRefused()) {
    if (token_.isEmptyElement()) return;
    if (!inRefused()) refusedFrom_ = state_.depth;
    pushOpen({.index = OpenElement::refused, .start = token_.start});
    return;
  }
  makeRoom();
  const int lastChild = top().lastChild;
  pushOpen({.index = state_.used,
            .previous = lastChild != 0 ? lastChild : state_.used,
            .start = token_.start,
            .startTagLength = token_.length()});
  state_.stack[state_.depth - 2].lastChild = state_.used++;
  if (token_.isEmptyElement()) closeTop(token_.end, 0);
}

void ElementParser::endTag() {
  if (token_.length() > ElemPos::maxEndTag) {
    // No record can hold it, so it ends nothing.
    state_.stack[0].flags |= ElemPos::illFormedFlag;
    report_.tooLarge(u"end_tag", token_.start);
    return;
  }
  const std::u16string_view name = token_.name();
  const int found = findOpen(name);
  if (found < 0) {
    state_.stack[0].flags |= ElemPos::illFormedFlag;
    top().flags |= ElemPos::loneEndFlag;
    report_.loneEndTag(name, token_.start);
    report_.mismatchLine(name, token_.start, lastMadeEnd());
    return;
  }
  if (found < state_.depth - 1) {
    reportUnended(found, name, token_.start, token_.start - 1);
    closeUnended(found);
  }
  closeTop(token_.end, token_.length());
}

int ElementParser::findOpen(std::u16string_view endTagName) {
  const int lowest = std::max(1, state_.depth - shortSearch);
  for (int depth = state_.depth - 1; depth >= lowest; --depth) {
    const int position = state_.stack[depth].start + 1;
    if (closesTagAt(token_.text, position, endTagName, ignoreCase_)) return depth;
  }
  if (lowest == 1) return -1;
  if (!openNames_) openNames_ = std::make_unique<OpenNames>(token_.text, stack_, ignoreCase_);
  while (openNames_->depth() < state_.depth) openNames_->push();
  // Elements it knows are closed on the plain road only.
  state_.minDepth = openNames_->depth();
  return openNames_->find(endTagName);
}

void ElementParser::pop() noexcept {
  --state_.depth;
  if (state_.depth == refusedFrom_) refusedFrom_ = 0;
  if (openNames_ && openNames_->depth() > state_.depth) {
    openNames_->pop();
    state_.minDepth = std::max(1, openNames_->depth());
  }
}

void ElementParser::writeRecord(int depth, int length, int endTagLength) noexcept {
  const OpenElement& open = state_.stack[depth];
  ElemPos& element = record(open.index);
  element.start = open.start;
  element.length = length;
  element.setTagLengths(open.startTagLength, endTagLength);
  element.levelAndFlags = static_cast<std::uint32_t>(state_.baseLevel + depth - 1) | open.flags;
  if (open.previous == open.index) element.setFlag(ElemPos::firstChildFlag);
  element.parent = state_.stack[depth - 1].index;
  element.firstChild = open.lastChild != 0 ? open.index + 1 : 0;
  element.next = state_.used;
  element.previous = open.previous;
}

void ElementParser::closeTop(int end, int endTagLength) noexcept {
  const OpenElement open = top();
  if (open.index != OpenElement::refused) {
    writeRecord(state_.depth - 1, end - open.start, endTagLength);
    if (open.lastChild != 0) {
      record(open.lastChild).next = 0;
      record(open.index + 1).previous = open.lastChild;
    }
  }
  pop();
}

void ElementParser::reportUnended(int depth, std::u16string_view endTagName, int endTagOffset,
                                  int missedAt) {
  const int lineOffset = lastMadeEnd();
  for (int each = state_.depth - 1; report_.hasResult() && each > depth; --each) {
    const OpenElement& open = state_.stack[each];
    report_.unendedRecord(nameOf(open), open.start, missedAt);
    report_.mismatchLine(endTagName, endTagOffset, lineOffset);
  }
  for (int each = depth + 1; each < state_.depth; ++each) {
    report_.unendedProblem(nameOf(state_.stack[each]), state_.stack[each].start);
  }
}

void ElementParser::closeUnended(int depth) noexcept {
  if (state_.depth - 1 <= depth) return;
  state_.stack[0].flags |= ElemPos::illFormedFlag;
  OpenElement& remaining = state_.stack[depth];
  remaining.flags |= ElemPos::loneEndFlag;
  // From the outermost on, each of them is followed by what was inside it. So the lists of
  // children need only be joined, and every child is moved once.
  for (int each = depth + 1; each < state_.depth; ++each) {
    OpenElement& open = state_.stack[each];
    if (open.index == OpenElement::refused) break;
    open.flags = ElemPos::unendedFlag;
    if (each > depth + 1 && open.previous == open.index) {
      open.previous = state_.stack[each - 1].index;
    }
    writeRecord(each, open.startTagLength, 0);
    ElemPos& element = record(open.index);
    element.parent = remaining.index;
    element.firstChild = 0;
    element.next = open.index + 1;
    remaining.lastChild = open.index;
    if (open.lastChild == 0) continue;
    // The last child of all but the innermost is itself one of the open ones.
    const bool innermost =
        each == state_.depth - 1 || state_.stack[each + 1].index == OpenElement::refused;
    for (int child = open.index + 1; innermost || child != open.lastChild;) {
      ElemPos& moved = record(child);
      moved.parent = remaining.index;
      if (child == open.index + 1) {
        moved.clearFlag(ElemPos::firstChildFlag);
        moved.previous = open.index;
      }
      remaining.lastChild = child;
      if (child == open.lastChild) break;
      child = moved.next;
    }
    levelsMoved_ = true;
  }
  levelsMoved_ = true;
  while (state_.depth - 1 > depth) pop();
}

}  // namespace kpx::detail
