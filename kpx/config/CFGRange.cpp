#include "kpx/config/CFGRange.h"

#include "kpx/config/internal/ElementReader.h"
#include "kpx/config/internal/ElementWriter.h"
#include "kpx/config/Operations.h"
#include "kpx/report/Error.h"

namespace kpx {

CString CFGRange::GetElementName() const {
  return Guarded("CFGRange::GetElementName"_config, CString(), [] { return CString(u"CFGRange"); });
}

int CFGRange::serializeXML(CMarkup* document) const {
  return Guarded("CFGRange::serializeXML"_config, 0,
                 [&] { return detail::addElement(document, *this); });
}

int CFGRange::loadByXML(CMarkup* document) {
  return Guarded("CFGRange::loadByXML"_config, 0, [&] {
    detail::ElementReader reader(document, *this);
    if (!reader.matches()) return 0;
    reader.header(*this);
    reader.read(u"ColID", ColID);
    reader.read(u"RangeFrom", RangeFrom);
    reader.read(u"RangeTo", RangeTo);
    return reader.done();
  });
}

void detail::appendElement(ElementWriter& writer, const CFGRange& range) {
  writer.start(range);
  writer.attribute(u" ColID=\"", range.ColID);
  writer.attribute(u" RangeFrom=\"", range.RangeFrom);
  writer.attribute(u" RangeTo=\"", range.RangeTo);
  writer.closeEmpty();
}

}  // namespace kpx
