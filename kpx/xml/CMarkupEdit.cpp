#include "kpx/report/Error.h"
#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/MarkupEditor.h"
#include "kpx/xml/Operations.h"

namespace kpx {
// --- changing ------------------------------------------------------------------------------------

bool CMarkup::SetTagName(MCD_CSTR name) {
  return Guarded("CMarkup::SetTagName"_xml, false, [&] {
    return mainPos_ != 0 && detail::MarkupEditor(*this).setTagName(mainPos_, name);
  });
}

bool CMarkup::SetChildTagName(MCD_CSTR name) {
  return Guarded("CMarkup::SetChildTagName"_xml, false, [&] {
    const int child = x_ChildElem();
    return child != 0 && detail::MarkupEditor(*this).setTagName(child, name);
  });
}

bool CMarkup::SetData(MCD_CSTR data, int flags) {
  return Guarded("CMarkup::SetData"_xml, false, [&] {
    detail::MarkupEditor editor(*this);
    if (mainPos_ != 0) return editor.setContent(mainPos_, data, flags);
    return nodeLength_ != 0 && editor.setNode(data, flags);
  });
}

bool CMarkup::SetChildData(MCD_CSTR data, int flags) {
  return Guarded("CMarkup::SetChildData"_xml, false, [&] {
    const int child = x_ChildElem();
    return child != 0 && detail::MarkupEditor(*this).setContent(child, data, flags);
  });
}

bool CMarkup::SetAttrib(MCD_CSTR name, MCD_CSTR value) {
  return Guarded("CMarkup::SetAttrib"_xml, false, [&] {
    return mainPos_ != 0 && detail::MarkupEditor(*this).setAttribute(mainPos_, name, value);
  });
}

bool CMarkup::SetChildAttrib(MCD_CSTR name, MCD_CSTR value) {
  return Guarded("CMarkup::SetChildAttrib"_xml, false, [&] {
    const int child = x_ChildElem();
    return child != 0 && detail::MarkupEditor(*this).setAttribute(child, name, value);
  });
}

bool CMarkup::RemoveAttrib(MCD_CSTR name) {
  return Guarded("CMarkup::RemoveAttrib"_xml, false, [&] {
    return mainPos_ != 0 && detail::MarkupEditor(*this).removeAttribute(mainPos_, name);
  });
}

bool CMarkup::RemoveChildAttrib(MCD_CSTR name) {
  return Guarded("CMarkup::RemoveChildAttrib"_xml, false, [&] {
    const int child = x_ChildElem();
    return child != 0 && detail::MarkupEditor(*this).removeAttribute(child, name);
  });
}

// --- adding --------------------------------------------------------------------------------------

// Where a new element goes, by `asChild` and `insertBefore`; false if there is no parent for it.
bool CMarkup::x_PlaceFor(int flags, detail::EditPlace& place) noexcept {
  detail::MarkupEditor editor(*this);
  const bool before = (flags & MarkupFlag::insertBefore) != 0;
  const bool asChild = (flags & MarkupFlag::asChild) != 0;
  const int parent = asChild ? x_ChildParent() : parentPos_;
  if (parent < 0) return false;
  if (const int current = asChild ? childPos_ : mainPos_; current != 0) {
    place = before ? editor.before(current) : editor.behind(current);
  } else if (!asChild && nodeLength_ != 0) {
    place = before ? editor.beforeNode() : editor.behindNode();
  } else {
    place = before ? editor.asFirst(parent) : editor.asLast(parent);
  }
  return true;
}

bool CMarkup::x_SetAdded(int element, int flags) noexcept {
  if (element == 0) return false;
  if ((flags & MarkupFlag::asChild) != 0) {
    x_SetPos(parentPos_, mainPos_, element);
  } else {
    x_SetPos(parentPos_, element, 0);
  }
  return true;
}

bool CMarkup::x_AddElem(std::u16string_view name, std::u16string_view data, int flags) {
  detail::EditPlace place;
  if (!x_PlaceFor(flags, place)) return false;
  const int element = detail::MarkupEditor(*this).addElement(place, name, data, flags);
  if (!x_SetAdded(element, flags)) return false;
  attributeMemory_.begin(element);
  return true;
}

bool CMarkup::x_AddSubDoc(std::u16string_view markup, int flags) {
  detail::EditPlace place;
  if (!x_PlaceFor(flags, place)) return false;
  const bool isWritten = (flags & MarkupFlag::written) != 0;
  return x_SetAdded(detail::MarkupEditor(*this).addMarkup(place, markup, isWritten), flags);
}

bool CMarkup::AddElem(MCD_CSTR name, MCD_CSTR data, int flags) {
  return Guarded("CMarkup::AddElem"_xml, false,
                 [&] { return x_AddElem(name, data, (flags & MarkupFlag::dataFlags)); });
}

bool CMarkup::InsertElem(MCD_CSTR name, MCD_CSTR data, int flags) {
  return Guarded("CMarkup::InsertElem"_xml, false, [&] {
    return x_AddElem(name, data, (flags & MarkupFlag::dataFlags) | MarkupFlag::insertBefore);
  });
}

bool CMarkup::AddChildElem(MCD_CSTR name, MCD_CSTR data, int flags) {
  return Guarded("CMarkup::AddChildElem"_xml, false, [&] {
    return x_AddElem(name, data, (flags & MarkupFlag::dataFlags) | MarkupFlag::asChild);
  });
}

bool CMarkup::InsertChildElem(MCD_CSTR name, MCD_CSTR data, int flags) {
  return Guarded("CMarkup::InsertChildElem"_xml, false, [&] {
    return x_AddElem(
        name, data,
        (flags & MarkupFlag::dataFlags) | MarkupFlag::asChild | MarkupFlag::insertBefore);
  });
}

bool CMarkup::AddSubDoc(MCD_CSTR markup) {
  return Guarded("CMarkup::AddSubDoc"_xml, false, [&] { return x_AddSubDoc(markup, 0); });
}

bool CMarkup::InsertSubDoc(MCD_CSTR markup) {
  return Guarded("CMarkup::InsertSubDoc"_xml, false,
                 [&] { return x_AddSubDoc(markup, MarkupFlag::insertBefore); });
}

bool CMarkup::AddChildSubDoc(MCD_CSTR markup) {
  return Guarded("CMarkup::AddChildSubDoc"_xml, false,
                 [&] { return x_AddSubDoc(markup, MarkupFlag::asChild); });
}

bool CMarkup::InsertChildSubDoc(MCD_CSTR markup) {
  return Guarded("CMarkup::InsertChildSubDoc"_xml, false, [&] {
    return x_AddSubDoc(markup, MarkupFlag::asChild | MarkupFlag::insertBefore);
  });
}

bool CMarkup::AddNode(int type, MCD_CSTR text) {
  return Guarded("CMarkup::AddNode"_xml, false, [&] {
    if (type == MarkupNode::element) return x_AddElem(text, {}, 0);
    return detail::MarkupEditor(*this).addNode(type, text, false);
  });
}

bool CMarkup::InsertNode(int type, MCD_CSTR text) {
  return Guarded("CMarkup::InsertNode"_xml, false, [&] {
    if (type == MarkupNode::element) return x_AddElem(text, {}, MarkupFlag::insertBefore);
    return detail::MarkupEditor(*this).addNode(type, text, true);
  });
}

// --- removing ------------------------------------------------------------------------------------

bool CMarkup::RemoveElem() {
  if (mainPos_ == 0) return false;
  const int before = x_ElemBefore(mainPos_);
  detail::MarkupEditor(*this).removeElement(mainPos_);
  x_SetPos(parentPos_, before, 0);
  return true;
}

bool CMarkup::RemoveChildElem() {
  const int child = x_ChildElem();
  if (child == 0) return false;
  const int before = x_ElemBefore(child);
  detail::MarkupEditor(*this).removeElement(child);
  x_SetPos(parentPos_, mainPos_, before);
  return true;
}

bool CMarkup::RemoveNode() {
  if (mainPos_ != 0) return RemoveElem();
  return Guarded("CMarkup::RemoveNode"_xml, false,
                 [&] { return nodeLength_ != 0 && detail::MarkupEditor(*this).removeNode(); });
}

}  // namespace kpx
