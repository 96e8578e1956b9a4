#include "kpx/config/internal/ElementReader.h"

#include "kpx/text/NumberText.h"
#include "kpx/text/TimeValue.h"

namespace kpx::detail {
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
  read(u"ObjectID", object.ObjectID);
  read(u"UserChangedID", object.UserChangedID);
  read(u"UserCreatedID", object.UserCreatedID);
  readTime(u"changed", object.changed);
  readTime(u"created", object.created);
  read(u"TransID", object.TransID);
}

void ElementReader::read(std::u16string_view name, std::int32_t& field) {
  if (!attributes_.find(name)) return;
  const std::u16string_view text = attributes_.rawValue();
  // Most integers of a configuration are 0 or a small code.
  if (text.size() == 1 && text[0] >= u'0' && text[0] <= u'9') {
    field = text[0] - u'0';
  } else {
    field = textAsLong(attributes_.value());
  }
}

void ElementReader::readTime(std::u16string_view name, double& field) {
  if (!attributes_.find(name)) return;
  if (attributes_.rawValue() == zeroTimeText) {
    field = 0.0;
  } else {
    field = timeDoubleOf(attributes_.value());
  }
}

int readHeaderOnly(CMarkup* document, CDBObject& object) {
  ElementReader reader(document, object);
  if (!reader.matches()) return 0;
  reader.header(object);
  return reader.done();
}

}  // namespace kpx::detail
