#include <algorithm>
#include <limits>
#include <utility>

#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/ElementParser.h"
#include "kpx/xml/internal/Outcome.h"
#include "kpx/xml/internal/ParseReport.h"
#include "kpx/xml/internal/Tokenizer.h"
#include "kpx/xml/Operations.h"

namespace kpx {
namespace {

// States of the document flags in which the text is a window on a file.
constexpr int readingStream = 16;
constexpr int writingStream = 32;
constexpr int streaming = readingStream | writingStream;

constexpr std::uint32_t visibleElementFlags =
    ElemPos::callerFlags | ElemPos::unendedFlag | ElemPos::loneEndFlag;

}  // namespace

// --- making, copying and moving
// -------------------------------------------------------------------

CMarkup::CMarkup() = default;

CMarkup::CMarkup(int flags) : docFlags_(flags) {}

CMarkup::CMarkup(MCD_CSTR text) { SetDoc(CString(text.view())); }

CMarkup::CMarkup(const CMarkup& other) { *this = other; }

CMarkup::CMarkup(CMarkup&& other) noexcept { *this = std::move(other); }

CMarkup::~CMarkup() = default;

CMarkup& CMarkup::operator=(const CMarkup& other) {
  if (this == &other || ((docFlags_ | other.docFlags_) & streaming)) return *this;
  Guarded("CMarkup::operator="_xml, [&] {
    // Whatever can fail comes first, so that a failure leaves the target as it was.
    CString doc = other.doc_;
    CString result = other.result_;
    LoadedEncoding loaded = other.loaded_;
    FileOrigin origin = other.origin_;
    auto savedPositions = other.savedPositions_;
    index_ = other.index_;
    doc_ = std::move(doc);
    result_ = std::move(result);
    savedPositions_.swap(savedPositions);
    loaded_ = std::move(loaded);
    origin_ = std::move(origin);
    x_CopyPlace(other);
  });
  return *this;
}

CMarkup& CMarkup::operator=(CMarkup&& other) noexcept {
  if (this == &other || ((docFlags_ | other.docFlags_) & streaming)) return *this;
  doc_ = std::move(other.doc_);
  result_ = std::move(other.result_);
  savedPositions_ = std::move(other.savedPositions_);
  index_ = std::move(other.index_);
  loaded_ = std::move(other.loaded_);
  origin_ = std::move(other.origin_);
  x_CopyPlace(other);
  other.doc_.Empty();
  other.result_.Empty();
  other.x_InitMarkup();
  return *this;
}

void CMarkup::x_InitMarkup() {
  savedPositions_.clear();
  index_ = detail::ElementIndex();
  docFlags_ = 0;
  loaded_ = {};
  origin_ = {};
  lineEnd_ = {};
  x_SetPos(0, 0, 0);
}

void CMarkup::x_CopyPlace(const CMarkup& other) noexcept {
  parentPos_ = other.parentPos_;
  mainPos_ = other.mainPos_;
  childPos_ = other.childPos_;
  nodeType_ = other.nodeType_;
  nodeOffset_ = other.nodeOffset_;
  nodeLength_ = other.nodeLength_;
  nodePreviousElem_ = other.nodePreviousElem_;
  docFlags_ = other.docFlags_;
  lineEnd_ = other.lineEnd_;
  attributeMemory_.forget();
}

// --- text
// -----------------------------------------------------------------------------------------

bool CMarkup::SetDoc(const char16_t* text) {
  return Guarded("CMarkup::SetDoc"_xml, false, [&] { return SetDoc(CString(text)); });
}

bool CMarkup::SetDoc(const CString& text) {
  return Guarded("CMarkup::SetDoc"_xml, false, [&] {
    doc_ = text;  // into the memory that is there
    result_.Empty();
    loaded_ = {};
    return x_ParseDoc();
  });
}

bool CMarkup::SetDoc(CString&& text) {
  doc_ = std::move(text);
  result_.Empty();
  loaded_ = {};
  return x_ParseDoc();
}

CString CMarkup::TakeDoc() {
  CString text = std::move(doc_);
  const int flags = docFlags_;
  doc_.Empty();
  result_.Empty();
  x_InitMarkup();
  docFlags_ = flags;
  return text;
}

// --- parsing
// --------------------------------------------------------------------------------------

bool CMarkup::x_ParseDoc() {
  x_SetPos(0, 0, 0);
  lineEnd_ = {};
  savedPositions_.clear();
  Guarded("CMarkup::x_ParseDoc"_xml, [&] {
    index_.reset();
    detail::ParseReport report(doc_, keepsResult_ ? &result_ : nullptr, problemSink_);
    if (doc_.view().size() > static_cast<std::size_t>(std::numeric_limits<int>::max())) {
      index_[0].setFlag(ElemPos::illFormedFlag);
      report.tooLarge(u"text", 0);
      return;
    }
    index_.x_AllocElemPos(doc_.GetLength() / 64 + 8);
    index_[0].length = doc_.GetLength();
    detail::TokenPos token{doc_, docFlags_};
    if (x_ParseElem(0, token) == 0) {
      report.noRootElement();
    } else if (const ElemPos& root = index_[index_[0].firstChild]; root.next != 0) {
      report.rootHasSibling(index_[root.next].start, !root.hasFlag(ElemPos::unendedFlag));
    }
    index_.releaseSpareSegments();
  });
  x_SetPos(0, 0, 0);
  return IsWellFormed();
}

int CMarkup::x_ParseElem(int parent, detail::TokenPos& token) {
  const int first = index_.usedCount();
  bool complete = false;
  Guarded("CMarkup::x_ParseDoc"_xml, [&] {
    detail::ParseReport report(token.text, keepsResult_ ? &result_ : nullptr, problemSink_);
    detail::ElementParser parser(token.text, token.docFlags, index_, report);
    parser.parse(parent, token.end);
    complete = true;
  });
  if (!complete) index_[parent].setFlag(ElemPos::illFormedFlag);
  return index_.usedCount() > first ? first : 0;
}

void CMarkup::x_SetPos(int parent, int main, int child) noexcept {
  parentPos_ = parent;
  mainPos_ = main;
  childPos_ = child;
  nodeOffset_ = 0;
  nodeLength_ = 0;
  nodePreviousElem_ = 0;
  attributeMemory_.forget();
  nodeType_ = main != 0 ? MarkupNode::element : 0;
}

// --- results
// --------------------------------------------------------------------------------------

bool CMarkup::IsWellFormed() const noexcept {
  if (docFlags_ & writingStream) return true;
  const ElemPos& document = index_[0];
  if (docFlags_ & readingStream) return !document.hasFlag(ElemPos::illFormedFlag);
  return index_.capacity() > 0 && !document.hasFlag(ElemPos::illFormedFlag) &&
         document.firstChild != 0 && index_[document.firstChild].next == 0;
}

CString CMarkup::GetError() const {
  return Guarded("CMarkup::GetError"_xml, CString(),
                 [&] { return detail::outcomeSentences(result_); });
}

void CMarkup::x_AddResult(std::u16string_view record) {
  if (result_.view().size() < detail::outcomeLimit) result_ += record;
}

int CMarkup::FindErrorLine(const char16_t* text, int offset) {
  return text ? FindErrorLine(std::u16string_view(text), offset) : 0;
}

int CMarkup::FindErrorLine(std::u16string_view text, int offset) {
  if (offset < 0) return 0;
  const std::u16string_view counted = text.substr(0, static_cast<std::size_t>(offset) + 1);
  return static_cast<int>(std::count(counted.begin(), counted.end(), u'\n'));
}

int detail::findErrorLine(const wchar_t* text, int offset) {
  return Guarded("CMarkup::FindErrorLine"_xml, 0,
                 [&] { return CMarkup::FindErrorLine(MCD_CSTR(text).view(), offset); });
}

int CMarkup::GetDocElemCount() const noexcept {
  if ((docFlags_ & streaming) || index_.capacity() == 0) return 0;
  return std::max(0, index_.usedCount() - 1 - index_.freeCount());
}

std::size_t CMarkup::GetMemoryBytes() const noexcept {
  return doc_.units().capacity() * sizeof(char16_t) + index_.memoryBytes();
}

// --- level and flags of the main element
// ------------------------------------------------------------

int CMarkup::GetElemLevel() const noexcept {
  return (docFlags_ & streaming) ? 0 : index_[mainPos_].level();
}

int CMarkup::GetElemFlags() const noexcept {
  if (docFlags_ & streaming) return 0;
  return static_cast<int>(index_[mainPos_].levelAndFlags & visibleElementFlags);
}

bool CMarkup::SetElemFlags(int flags) noexcept {
  if ((docFlags_ & streaming) || mainPos_ == 0) return false;
  std::uint32_t& word = index_[mainPos_].levelAndFlags;
  word =
      (word & ~ElemPos::callerFlags) | (static_cast<std::uint32_t>(flags) & ElemPos::callerFlags);
  return true;
}

}  // namespace kpx
