#include "kpx/config/CFGValue.h"

#include "kpx/config/internal/ElementReader.h"
#include "kpx/config/internal/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGValue::GetElementName() const {
  return Guarded("CFGValue::GetElementName"_config, CString(), [] { return CString(u"CFGValue"); });
}

int CFGValue::serializeXML(CMarkup* document) const {
  return Guarded("CFGValue::serializeXML"_config, 0,
                 [&] { return detail::addElement(document, *this); });
}

int CFGValue::loadByXML(CMarkup* document) {
  return Guarded("CFGValue::loadByXML"_config, 0, [&] {
    detail::ElementReader reader(document, *this);
    if (!reader.matches()) return 0;
    reader.header(*this);
    reader.read(u"Value", Value);
    reader.read(u"ColID", ColID);
    reader.read(u"RowID", RowID);
    reader.read(u"Data", Data);
    return reader.done();
  });
}

void detail::appendElement(ElementWriter& writer, const CFGValue& value) {
  writer.start(value);
  writer.attribute(u" Value=\"", value.Value);
  writer.attribute(u" ColID=\"", value.ColID);
  writer.attribute(u" RowID=\"", value.RowID);
  writer.attribute(u" Data=\"", value.Data);
  writer.closeEmpty();
}

}  // namespace kpx
