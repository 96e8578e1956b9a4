#include <utility>

#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/internal/NameUnits.h"
#include "kpx/xml/internal/Tokenizer.h"
#include "kpx/xml/Operations.h"

namespace kpx {

std::u16string_view CMarkup::x_Text(int begin, int end) const noexcept {
  return doc_.view().substr(static_cast<std::size_t>(begin), static_cast<std::size_t>(end - begin));
}

std::u16string_view CMarkup::x_StartTag(int element) const noexcept {
  const ElemPos& record = index_[element];
  return x_Text(record.start, record.contentStart());
}

// --- names and data ------------------------------------------------------------------------------

std::u16string_view CMarkup::ReadTagName() const noexcept {
  return mainPos_ != 0 ? detail::tagNameOf(x_StartTag(mainPos_)) : std::u16string_view();
}

std::u16string_view CMarkup::ReadChildTagName() const noexcept {
  const int child = x_ChildElem();
  return child != 0 ? detail::tagNameOf(x_StartTag(child)) : std::u16string_view();
}

CString CMarkup::GetTagName() const {
  return Guarded("CMarkup::GetTagName"_xml, CString(), [&] { return CString(ReadTagName()); });
}

CString CMarkup::GetChildTagName() const {
  return Guarded("CMarkup::GetChildTagName"_xml, CString(),
                 [&] { return CString(ReadChildTagName()); });
}

CString CMarkup::x_ElemData(int element) const {
  const ElemPos& record = index_[element];
  const int end = record.firstChild != 0 ? index_[record.firstChild].start : record.contentEnd();
  CString data;
  detail::TokenPos token;
  token.text = doc_.view();
  token.end = record.contentStart();
  while (token.end < end) {
    const int kind = detail::nextToken(token);
    if (kind == MarkupNode::text || kind == MarkupNode::whitespace) {
      detail::unescapeInto(data.units(), token.name());
    } else if (kind == MarkupNode::cdataSection) {
      data += token.name();
    }
  }
  return data;
}

CString CMarkup::x_NodeData() const {
  if (nodeLength_ == 0) return {};
  if (nodeType_ == MarkupNode::documentType) {
    return CString(x_Text(nodeOffset_, nodeOffset_ + nodeLength_));
  }
  detail::TokenPos token;
  token.text = x_Text(0, nodeOffset_ + nodeLength_);
  token.end = nodeOffset_;
  detail::nextToken(token);
  CString data;
  if ((nodeType_ & (MarkupNode::text | MarkupNode::whitespace)) != 0) {
    detail::unescapeInto(data.units(), token.name());
  } else if (nodeType_ == MarkupNode::loneEndTag) {
    data = x_Text(nodeOffset_ + 2, nodeOffset_ + nodeLength_ - 1);
  } else {
    data = token.name();
  }
  return data;
}

CString CMarkup::GetData() const {
  return Guarded("CMarkup::GetData"_xml, CString(),
                 [&] { return mainPos_ != 0 ? x_ElemData(mainPos_) : x_NodeData(); });
}

CString CMarkup::GetChildData() const {
  return Guarded("CMarkup::GetChildData"_xml, CString(), [&] {
    const int child = x_ChildElem();
    return child != 0 ? x_ElemData(child) : CString();
  });
}

// --- attributes ----------------------------------------------------------------------------------

AttributeReader CMarkup::ReadAttribs() const {
  return mainPos_ != 0 ? AttributeReader(x_StartTag(mainPos_)) : AttributeReader();
}

AttributeReader CMarkup::ReadChildAttribs() const {
  const int child = x_ChildElem();
  return child != 0 ? AttributeReader(x_StartTag(child)) : AttributeReader();
}

CString CMarkup::GetAttrib(MCD_CSTR name) const {
  return Guarded("CMarkup::GetAttrib"_xml, CString(), [&] {
    AttributeReader attribute = ReadAttribs();
    return attribute.find(name) ? attribute.value() : CString();
  });
}

CString CMarkup::GetChildAttrib(MCD_CSTR name) const {
  return Guarded("CMarkup::GetChildAttrib"_xml, CString(), [&] {
    AttributeReader attribute = ReadChildAttribs();
    return attribute.find(name) ? attribute.value() : CString();
  });
}

bool CMarkup::HasAttrib(MCD_CSTR name) const { return ReadAttribs().find(name); }
bool CMarkup::HasChildAttrib(MCD_CSTR name) const { return ReadChildAttribs().find(name); }

bool CMarkup::x_NthAttrib(int element, int index, CString& name, CString& value) const {
  if (element == 0 || index < 0) return false;
  AttributeReader attribute(x_StartTag(element));
  do {
    if (!attribute.next()) return false;
  } while (index-- > 0);
  CString found = attribute.value();
  name = attribute.name();
  value = std::move(found);
  return true;
}

bool CMarkup::GetNthAttrib(int index, CString& name, CString& value) const {
  return Guarded("CMarkup::GetNthAttrib"_xml, false,
                 [&] { return x_NthAttrib(mainPos_, index, name, value); });
}

bool CMarkup::GetNthChildAttrib(int index, CString& name, CString& value) const {
  return Guarded("CMarkup::GetNthChildAttrib"_xml, false,
                 [&] { return x_NthAttrib(x_ChildElem(), index, name, value); });
}

bool CMarkup::x_AttribOffsets(int element, std::u16string_view name, int& begin,
                              int& end) const noexcept {
  if (element == 0) return false;
  AttributeReader attribute(x_StartTag(element));
  if (!attribute.find(name)) return false;
  begin = index_[element].start + attribute.valueBegin();
  end = index_[element].start + attribute.valueEnd();
  return true;
}

bool CMarkup::GetAttribOffsets(MCD_CSTR name, int& begin, int& end) const {
  return x_AttribOffsets(mainPos_, name, begin, end);
}

bool CMarkup::GetChildAttribOffsets(MCD_CSTR name, int& begin, int& end) const {
  return x_AttribOffsets(x_ChildElem(), name, begin, end);
}

// --- whole elements ------------------------------------------------------------------------------

bool CMarkup::GetOffsets(int& begin, int& end) const {
  if (mainPos_ != 0) {
    begin = index_[mainPos_].start;
    end = index_[mainPos_].end();
    return true;
  }
  if (nodeLength_ == 0) return false;
  begin = nodeOffset_;
  end = nodeOffset_ + nodeLength_;
  return true;
}

bool CMarkup::GetChildOffsets(int& begin, int& end) const {
  const int child = x_ChildElem();
  if (child == 0) return false;
  begin = index_[child].start;
  end = index_[child].end();
  return true;
}

CString CMarkup::GetSubDoc() const {
  return Guarded("CMarkup::GetSubDoc"_xml, CString(), [&] {
    int begin = 0;
    int end = 0;
    return GetOffsets(begin, end) ? CString(x_Text(begin, end)) : CString();
  });
}

CString CMarkup::GetChildSubDoc() const {
  return Guarded("CMarkup::GetChildSubDoc"_xml, CString(), [&] {
    int begin = 0;
    int end = 0;
    return GetChildOffsets(begin, end) ? CString(x_Text(begin, end)) : CString();
  });
}

CString CMarkup::GetElemContent() const {
  return Guarded("CMarkup::GetElemContent"_xml, CString(), [&] {
    int begin = 0;
    int end = 0;
    return GetContentOffsets(begin, end) ? CString(x_Text(begin, end)) : CString();
  });
}

bool CMarkup::GetContentOffsets(int& begin, int& end) const {
  if (mainPos_ == 0) return false;
  begin = index_[mainPos_].contentStart();
  end = index_[mainPos_].contentEnd();
  return true;
}

}  // namespace kpx
