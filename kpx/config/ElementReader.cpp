#include "kpx/config/ElementReader.h"

#include "kpx/config/PersistentFields.h"
#include "kpx/text/NumberText.h"
#include "kpx/text/TimeValue.h"

namespace kpx {
namespace {

bool isChildOfName(const CMarkup& document, const CString& name) {
  return !name.IsEmpty() && document.ReadChildTagName() == name.view();
}

}  // namespace

ElementReader::ElementReader(CMarkup* document, const CDBObject& object)
    : ElementReader(document, document ? object.GetElementName() : CString()) {}

ElementReader::ElementReader(CMarkup* document, const CString& elementName) {
  if (!document || !isChildOfName(*document, elementName)) return;
  matches_ = true;
  attributes_ = document->ReadChildAttribs();
}

void ElementReader::header(CDBObject& object) {
  forEachField<CDBObject>([&](const auto& field) { read(field.name(), object.*field.member); });
}

void ElementReader::read(std::u16string_view name, std::int32_t& value) {
  if (!attributes_.find(name)) return;
  const std::u16string_view text = attributes_.rawValue();
  // Most integers of a configuration are 0 or a small code.
  if (text.size() == 1 && text[0] >= u'0' && text[0] <= u'9') {
    value = text[0] - u'0';
  } else {
    value = detail::textAsLong(attributes_.value());
  }
}

void ElementReader::read(std::u16string_view name, double& time) {
  if (!attributes_.find(name)) return;
  if (attributes_.rawValue() == zeroTimeText) {
    time = 0.0;
  } else {
    time = detail::timeDoubleOf(attributes_.value());
  }
}

}  // namespace kpx
