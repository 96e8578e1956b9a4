#include "kpx/xml/WrittenMarkup.h"

#include "kpx/xml/CMarkup.h"
#include "kpx/xml/internal/Escape.h"
#include "kpx/xml/internal/MarkupEditor.h"
#include "kpx/xml/internal/XmlCharacters.h"

namespace kpx {

bool WrittenMarkup::isName(std::u16string_view name) noexcept { return detail::isXmlName(name); }

void WrittenMarkup::appendValue(std::u16string& out, std::u16string_view value) {
  detail::escapeInto(out, value, MarkupFlag::attributeValue);
}

void WrittenMarkup::appendData(std::u16string& out, std::u16string_view data) {
  detail::escapeInto(out, data, 0);
}

std::u16string_view WrittenMarkup::lineBreakOf(CMarkup& document) noexcept {
  return detail::MarkupEditor(document).lineEnd();
}

bool WrittenMarkup::add(CMarkup& document, std::u16string_view markup) {
  return document.x_AddSubDoc(markup, MarkupFlag::written);
}

bool WrittenMarkup::addChild(CMarkup& document, std::u16string_view markup) {
  return document.x_AddSubDoc(markup, MarkupFlag::written | MarkupFlag::asChild);
}

}  // namespace kpx
