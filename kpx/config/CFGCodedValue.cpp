#include "kpx/config/CFGCodedValue.h"

#include "kpx/config/internal/ElementReader.h"
#include "kpx/config/internal/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGCodedValue::GetElementName() const {
  return Guarded("CFGCodedValue::GetElementName"_config, CString(),
                 [] { return CString(u"CFGCodedValue"); });
}

int CFGCodedValue::serializeXML(CMarkup* document) const {
  return Guarded("CFGCodedValue::serializeXML"_config, 0,
                 [&] { return detail::addElement(document, *this); });
}

int CFGCodedValue::loadByXML(CMarkup* document) {
  return Guarded("CFGCodedValue::loadByXML"_config, 0, [&] {
    detail::ElementReader reader(document, *this);
    if (!reader.matches()) return 0;
    reader.header(*this);
    reader.read(u"ColID", ColID);
    reader.read(u"Value", Value);
    reader.read(u"Data", Data);
    return reader.done();
  });
}

void detail::appendElement(ElementWriter& writer, const CFGCodedValue& value) {
  writer.start(value);
  writer.attribute(u" ColID=\"", value.ColID);
  writer.attribute(u" Value=\"", value.Value);
  writer.attribute(u" Data=\"", value.Data);
  writer.closeEmpty();
}

}  // namespace kpx
